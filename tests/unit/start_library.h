// Unit tests start lumxml's internals the way lumInitParser does.
#pragma once

#include <cstdint>

#include <gtest/gtest.h>

#include "frame/library_state.h"
#include "lumxml.h"

namespace lumtest {

// lumxml::initParser with `codePage`; a failure fails the calling test.
inline void startInternals(const char* codePage = "UTF-8") {
    char buffer[257] = {0};
    int32_t code = 0;
    lumxml::initParser(codePage, buffer, &code);
    EXPECT_EQ(code, LUM_OK) << buffer;
}

}  // namespace lumtest
