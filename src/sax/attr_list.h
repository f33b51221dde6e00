// Attribute lists shared with the host: a SaxAttrList record with an array
// of SaxAttribute entries, each holding five 8-bit strings owned by the
// library's string heap. The "StartElement" event builds them, the host
// edits them through the attribute-list exports, and the SAX writer reads
// them with an element start. These functions are the whole set of list
// operations; the exports are thin wrappers over them, and library code
// (the writer, the event handlers) calls them directly.
#pragma once

#include <cstdint>

#include "lumxml.h"

namespace lumxml {
namespace attrlist {

// Capacity the first insert gives a list without an entries array.
constexpr int32_t kFirstCapacity = 10;

// The capacity a full list grows to: capacity * 3 / 2 above 2, else 10.
int32_t grownCapacity(int32_t capacity);

// Library-owned copy of a host 8-bit string (null stays null), released
// with releaseString (XMLString::release semantics).
char* copyString(const char* text);
// Releases the string in `slot` and sets the slot to null.
void releaseString(char*& slot);

// A new list record with `capacity` zero-filled entries and count 0;
// capacity 0 (or less) gives no entries array. Null when memory runs out.
SaxAttrList* newList(int32_t capacity);
// Appends one attribute, creating or growing the list as needed. Answers
// the last string stored (the type copy); null when memory runs out.
char* insert(SaxAttrList** list, const char* qName, const char* value, const char* uri,
             const char* type);
// Fills one entry from copies of the arguments (after releasing the
// entry's strings). The local name is the part of qName after its first
// colon, or the whole qName.
char* set(SaxAttribute* entry, const char* qName, const char* value, const char* uri,
          const char* type);
// Replaces the entry's value with a copy; answers the copy.
char* setValue(SaxAttribute* entry, const char* value);
// Releases localName, qName, uri, type and value, in that order.
void clear(SaxAttribute* entry);
// Releases the strings of entries 0..count-1 and the entries array; the
// record's fields become 0/null, the record itself stays.
void releaseEntries(SaxAttrList& list);
// releaseEntries, then frees the record. Null does nothing.
void deleteList(SaxAttrList* list);
// Replaces the string in `slot` with a copy of `text`; nothing when either
// is null.
void fixString(char** slot, const char* text);

// Raw entries array of `capacity` zero-filled entries (null for 0 or less,
// or when memory runs out), freed with freeEntries. Used by the
// "StartElement" event, which keeps its list in place in the event.
SaxAttribute* allocateEntries(int32_t capacity);
void freeEntries(SaxAttribute* entries);

}  // namespace attrlist
}  // namespace lumxml
