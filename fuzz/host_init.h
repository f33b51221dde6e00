#pragma once

namespace fuzz {
// lumInitParser("UTF-8") once per process.
void initialiseLibrary();
}  // namespace fuzz
