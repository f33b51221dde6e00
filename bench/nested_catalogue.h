// A nested, attribute-rich catalogue for the host-walk benchmarks, made
// deterministically: records whose sections nest up to 7 levels, with
// namespaces, attributes, indentation and international text.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

// About `bytes` long.
std::string nestedCatalogue(size_t bytes);

}  // namespace bench
