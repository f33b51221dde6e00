// Host sessions that run from nothing back to nothing through the exports,
// used by the allocation-failure and soak tests. They allocate nothing on
// the test's side while they run (fixed buffers only), so that every
// allocation counted or refused is the library's or Xerces'.
#pragma once

#include <cstdint>
#include <string>

#include "lumxml.h"

namespace lumtest {

// What a session saw: a digest of every answer and output, and whether a
// call reported a failure code without a message.
struct SessionTrace {
    uint64_t digest = 1469598103934665603ull;   // every answer and output
    uint64_t answers = 1469598103934665603ull;  // the codes and messages alone
    int failures = 0;          // calls that answered a failure code
    int silentFailures = 0;    // of them, the ones with no message text
    int32_t lastCode = 0;
    char lastMessage[257] = "";

    void mix(const void* bytes, size_t length);
    void mixText(const char* text);
    void mixNumber(int64_t value);
    // A call's code and message; a non-zero code counts as a failure.
    void answer(int32_t code, const char* message);
};

// Files the sessions read: a document with an external DTD next to it.
struct SessionFiles {
    SessionFiles();
    ~SessionFiles();
    std::string directory;
    std::string documentFile;
    std::string dtdFile;
};

// The small document of the sessions: an internal and an external DTD
// subset, entities, default attributes, namespaces, comments, processing
// instructions, CDATA and character references.
extern const char kRichDocument[];

// lumInitDocument, lumDocLoad from memory (the external subset found
// through the system id), a walk over every node, lumDocSave to memory and
// lumDocDelete.
void domSession(const SessionFiles& files, SessionTrace& trace);
// lumSAXParseFirst and lumSAXParseNext to the end over the file, then
// lumSAXDeleteParserInstance.
void pullSession(const SessionFiles& files, SessionTrace& trace);
// lumSAXParse validating the file (the DTD does not declare every element:
// the first validity error is the answer), then lumSAXDeleteParserInstance.
void validationSession(const SessionFiles& files, SessionTrace& trace);

// One writer command as a host runs it: the writer pointer follows
// commands 1, 2 and 4.
int32_t writerCommand(SAXWriter*& writer, WriterOptions& options, int32_t command,
                      const void* a0 = nullptr, const void* a1 = nullptr,
                      const void* a2 = nullptr, const void* a3 = nullptr);

// A writer made, a document written to memory with `attributes`,
// namespaces, text, comment, processing instruction, CDATA and DOCTYPE,
// and the writer freed.
void writerSession(SaxAttrList* attributes, SessionTrace& trace);
// An attribute list made, filled past its first growth, its entries set,
// fixed and cleared, and deleted. These exports report nothing: a refused
// allocation shows only as an attribute not stored.
void attributeListSession(SessionTrace& trace);

}  // namespace lumtest
