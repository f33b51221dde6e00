// Synthetic documents for the benchmarks.
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

// lumInitParser("UTF-8") once per process.
void startLibrary();

// `depth` nested elements.
std::string nested(size_t depth);

}  // namespace bench
