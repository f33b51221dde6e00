// Host-side helpers for node and document method tests: calls with an
// argument block of 64-bit slots, a result memory and the error slot, as a
// host makes them.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "host_test.h"

namespace lumtest {

struct Answer {
    int32_t code = 0;
    std::string message;
};

Answer nodeCall(void* node, int32_t method, std::initializer_list<void*> args, void* result);
Answer docCall(void* document, int32_t method, std::initializer_list<void*> args, void* result);

// Convenience reads that expect no error.
void* childOf(void* node, int32_t index);
int32_t childCountOf(void* node);
std::string nameOf(void* node);
std::string valueOf(void* node);
int32_t typeOf(void* node);
void* documentElementOf(void* document);
// Document method 1 with a name and a type code; null when it failed.
void* createNode(void* document, const char* name, int32_t type);
// Appends `child` to `parent` (node method 2 with a null reference).
void appendChild(void* parent, void* child);

}  // namespace lumtest
