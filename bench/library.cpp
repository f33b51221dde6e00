#include <cstdlib>

#include "documents.h"
#include "lumxml.h"

namespace bench {

void startLibrary() {
    static bool started = [] {
        char error[257] = {0};
        int32_t code = 0;
        lumInitParser("UTF-8", error, &code);
        return code == LUM_OK;
    }();
    if (!started) std::abort();
}

}  // namespace bench
