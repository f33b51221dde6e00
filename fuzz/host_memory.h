// Host memory functions for fuzz targets: every block is tracked so that
// whatever the library hands over (or loses after a refused growth) is
// freed at the end of each input, and a realloc can be told to fail.
#pragma once

#include <cstdint>

namespace fuzz {

// Registers the tracking functions with lumMemioInit (once).
void installHostMemory();
// The n-th reallocation from now fails (0: none fails).
void failReallocAfter(uint32_t n);
// Frees every block still tracked.
void releaseHostMemory();

}  // namespace fuzz
