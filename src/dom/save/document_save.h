// Saving a document, or one node with its subtree, as XML text to a file,
// a host stream or a block of host memory (lumDocSave, lumDocSaveW).
#pragma once

#include <cstdint>

#include "frame/error_report.h"
#include "lumxml.h"

namespace lumxml {

class XMLFileOut;

// Target kinds of a save.
constexpr int32_t kSaveToFile = LUM_SAVE_TO_FILE;
constexpr int32_t kSaveToMemory = LUM_SAVE_TO_MEMORY;
constexpr int32_t kSaveToStream = LUM_SAVE_TO_STREAM;
constexpr int32_t kSaveNodeToMemory = 6;

// A save's arguments as the host passes them, with the file already opened
// by the export (null unless the kind is 0 and a name was given).
struct SaveRequest {
    void** document;  // cell with the DOMDocument, or for kind 6 the DOMNode
    int32_t target;
    uint8_t charEscapes;
    uint8_t attributeEscapes;
    uint8_t noByteOrderMark;
    const char* encoding;
    XMLFileOut* file;
    void** memoryOut;
    uint32_t* memoryLength;
    int64_t streamHandle;
    StreamWriteFn streamWrite;
};

// The document writer: checks, sets the sticky escape flags, writes the
// start node through an XMLFormatter into the chosen target and reports
// every failure through `report`. Whatever happens, the namespace
// declarations it added are gone from the tree when it returns.
void saveDocument(const SaveRequest& request, ErrorReport& report);

// The two process-wide escape flags. A save sets a flag when its argument
// asks for it and nothing ever clears it: once any save has asked for
// character or attribute escapes, every later save in the process uses them.
bool textCharEscapesSet();
bool attrEscapesSet();

}  // namespace lumxml
