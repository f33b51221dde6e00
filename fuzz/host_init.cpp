#include "host_init.h"

#include <cstdint>

#include "lumxml.h"

namespace fuzz {

void initialiseLibrary() {
    static bool done = [] {
        char buffer[257] = {0};
        int32_t code = 0;
        lumInitParser("UTF-8", buffer, &code);
        return true;
    }();
    (void)done;
}

}  // namespace fuzz
