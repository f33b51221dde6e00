#include "host_methods.h"

#include <vector>

#include <gtest/gtest.h>

#include "lumxml.h"

namespace lumtest {

namespace {

Answer call(void (*execute)(void*, int32_t, void**, void*, char*, int32_t*), void* target,
            int32_t method, std::initializer_list<void*> args, void* result) {
    std::vector<void*> slots(args);
    slots.resize(4, nullptr);
    ErrorSlot error;
    execute(target, method, slots.data(), result, error.buffer, &error.code);
    return Answer{error.code, error.text()};
}

}  // namespace

Answer nodeCall(void* node, int32_t method, std::initializer_list<void*> args, void* result) {
    return call(lumNodeExecute, node, method, args, result);
}

Answer docCall(void* document, int32_t method, std::initializer_list<void*> args, void* result) {
    return call(lumDocExecute, document, method, args, result);
}

void* childOf(void* node, int32_t index) {
    void* child = nullptr;
    Answer answer = nodeCall(node, LUM_NODE_CHILD_AT, {&index}, &child);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return child;
}

int32_t childCountOf(void* node) {
    int32_t count = -7;
    Answer answer = nodeCall(node, LUM_NODE_CHILD_COUNT, {}, &count);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return count;
}

std::string nameOf(void* node) {
    char name[1024];
    int32_t limit = sizeof name;
    Answer answer = nodeCall(node, LUM_NODE_NAME, {&limit}, name);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return name;
}

std::string valueOf(void* node) {
    char value[4096];
    int32_t limit = sizeof value;
    Answer answer = nodeCall(node, LUM_NODE_VALUE, {&limit}, value);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return value;
}

int32_t typeOf(void* node) {
    int32_t type = 0;
    Answer answer = nodeCall(node, LUM_NODE_TYPE_CODE, {}, &type);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return type;
}

void* documentElementOf(void* document) {
    void* element = nullptr;
    Answer answer = docCall(document, LUM_DOC_DOCUMENT_ELEMENT, {}, &element);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    return element;
}

void* createNode(void* document, const char* name, int32_t type) {
    void* node = nullptr;
    docCall(document, LUM_DOC_CREATE_NODE, {const_cast<char*>(name), &type}, &node);
    return node;
}

void appendChild(void* parent, void* child) {
    Answer answer = nodeCall(parent, LUM_NODE_INSERT_BEFORE, {child, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
}

}  // namespace lumtest
