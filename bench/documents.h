// Synthetic documents for the benchmarks, generated deterministically.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

// A catalogue of records with attributes, text with some escaped
// characters, comments and a namespace, about `bytes` long.
std::string catalogue(size_t bytes);

// catalogue(megabytes << 20), made once per size and kept.
const std::string& cachedCatalogue(int64_t megabytes);

// A catalogue of records whose sections nest up to seven levels deep, each
// with attributes from three namespaces, indentation, mixed content (text
// with inline elements and references) and international text (Latin,
// Greek, Cyrillic, Hebrew, CJK, and characters beyond the basic plane),
// about `bytes` long: the shape of real documents.
std::string nestedCatalogue(size_t bytes);

// nestedCatalogue(megabytes << 20), made once per size and kept.
const std::string& cachedNestedCatalogue(int64_t megabytes);

// Paragraphs of `words` words of prose in which 8% of the words are entity
// or character references, about `bytes` long: text dense with references.
std::string referenceDense(size_t bytes, int words = 150);

// referenceDense(megabytes << 20), made once per size and kept.
const std::string& cachedReferenceDense(int64_t megabytes);

// One root holding `children` children, elements and texts in turn.
std::string wide(int64_t children);

// lumInitParser("UTF-8") once per process (this also starts Xerces);
// in library.cpp, so that programs without the exports can use the rest.
void startLibrary();

}  // namespace bench
