#include "sax/attr_list.h"

#include <cstdlib>
#include <cstring>

#include <xercesc/internal/MemoryManagerImpl.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

namespace lumxml {
namespace attrlist {

using xercesc::MemoryManager;
using xercesc::XMLPlatformUtils;
using xercesc::XMLString;

namespace {

// Attribute lists need no started XML engine: a host may build a list for
// the writer before lumInitParser. Xerces' own memory manager exists only
// after start-up; until then the strings come from a manager of the same
// kind (global operator new/delete), so XMLString::release frees them
// either way.
MemoryManager* stringHeap() {
    static xercesc::MemoryManagerImpl beforeStartUp;
    MemoryManager* started = XMLPlatformUtils::fgMemoryManager;
    return started != nullptr ? started : &beforeStartUp;
}

const char* localPart(const char* qName) {
    const char* colon = std::strchr(qName, ':');
    return colon != nullptr ? colon + 1 : qName;
}

// The entries array after growth: `count` entries moved (their string
// pointers, not copies) into a zero-filled array of `capacity`.
bool growEntries(SaxAttrList& list) {
    const int32_t capacity = grownCapacity(list.capacity);
    SaxAttribute* grown = allocateEntries(capacity);
    if (grown == nullptr) return false;
    if (list.count > 0) {
        std::memcpy(grown, list.entries, sizeof(SaxAttribute) * static_cast<size_t>(list.count));
    }
    freeEntries(list.entries);
    list.entries = grown;
    list.capacity = capacity;
    return true;
}

}  // namespace

int32_t grownCapacity(int32_t capacity) {
    return capacity > 2 ? static_cast<int32_t>(static_cast<int64_t>(capacity) * 3 / 2)
                        : kFirstCapacity;
}

char* copyString(const char* text) {
    if (text == nullptr) return nullptr;
    return XMLString::replicate(text, stringHeap());
}

void releaseString(char*& slot) {
    if (slot == nullptr) return;
    XMLString::release(&slot, stringHeap());
    slot = nullptr;
}

SaxAttribute* allocateEntries(int32_t capacity) {
    if (capacity <= 0) return nullptr;
    // Zero-filled even where only `count` entries are in use: a host that
    // sets an entry beyond count releases that entry's strings first.
    return static_cast<SaxAttribute*>(
        std::calloc(static_cast<size_t>(capacity), sizeof(SaxAttribute)));
}

void freeEntries(SaxAttribute* entries) { std::free(entries); }

SaxAttrList* newList(int32_t capacity) {
    auto* list = static_cast<SaxAttrList*>(std::calloc(1, sizeof(SaxAttrList)));
    if (list == nullptr) return nullptr;
    if (capacity > 0) {
        list->entries = allocateEntries(capacity);
        if (list->entries == nullptr) {
            std::free(list);
            return nullptr;
        }
        list->capacity = capacity;
    }
    return list;
}

char* insert(SaxAttrList** reference, const char* qName, const char* value, const char* uri,
             const char* type) {
    if (reference == nullptr) return nullptr;
    if (*reference == nullptr) {
        *reference = newList(0);
        if (*reference == nullptr) return nullptr;
    }
    SaxAttrList& list = **reference;
    if (list.entries == nullptr) {
        list.entries = allocateEntries(kFirstCapacity);
        if (list.entries == nullptr) return nullptr;
        list.capacity = kFirstCapacity;
        list.count = 0;  // whatever the field held: there were no entries
    }
    // A host-damaged count never makes the move overrun either array.
    if (list.count < 0) list.count = 0;
    if (list.count > list.capacity) list.count = list.capacity;
    if (list.count >= list.capacity && !growEntries(list)) return nullptr;

    SaxAttribute* entry = &list.entries[list.count];
    ++list.count;
    std::memset(entry, 0, sizeof *entry);
    return set(entry, qName, value, uri, type);
}

char* set(SaxAttribute* entry, const char* qName, const char* value, const char* uri,
          const char* type) {
    if (entry == nullptr) return nullptr;
    clear(entry);
    entry->qName = copyString(qName);
    entry->value = copyString(value);
    entry->uri = copyString(uri);
    entry->localName = qName != nullptr ? copyString(localPart(qName)) : nullptr;
    entry->type = copyString(type);
    return entry->type;
}

char* setValue(SaxAttribute* entry, const char* value) {
    if (entry == nullptr) return nullptr;
    releaseString(entry->value);
    entry->value = copyString(value);
    return entry->value;
}

void clear(SaxAttribute* entry) {
    if (entry == nullptr) return;
    releaseString(entry->localName);
    releaseString(entry->qName);
    releaseString(entry->uri);
    releaseString(entry->type);
    releaseString(entry->value);
}

void releaseEntries(SaxAttrList& list) {
    if (list.entries != nullptr) {
        for (int32_t i = 0; i < list.count; ++i) {
            SaxAttribute& entry = list.entries[i];
            releaseString(entry.localName);
            releaseString(entry.type);
            releaseString(entry.value);
            releaseString(entry.uri);
            releaseString(entry.qName);
        }
        freeEntries(list.entries);
    }
    list.entries = nullptr;
    list.capacity = 0;
    list.count = 0;
}

void deleteList(SaxAttrList* list) {
    if (list == nullptr) return;
    releaseEntries(*list);
    std::free(list);
}

void fixString(char** slot, const char* text) {
    if (slot == nullptr || text == nullptr) return;
    releaseString(*slot);
    *slot = copyString(text);
}

}  // namespace attrlist
}  // namespace lumxml
