// Synthetic documents for the benchmarks.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

// A catalogue of records with attributes, text with some escaped
// characters, comments and a namespace, about `bytes` long.
std::string catalogue(size_t bytes);

// `depth` nested elements.
std::string nested(size_t depth);

}  // namespace bench
