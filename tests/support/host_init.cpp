#include "host_test.h"

#include <mutex>

#include <gtest/gtest.h>

namespace lumtest {

void initLibraryOnce(const char* codePage) {
    static std::once_flag once;
    std::call_once(once, [codePage] {
        ErrorSlot error;
        lumInitParser(codePage, error.buffer, &error.code);
        ASSERT_EQ(error.code, LUM_OK) << error.text();
    });
}

}  // namespace lumtest
