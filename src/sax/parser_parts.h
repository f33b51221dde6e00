// The pieces of the pull reader behind sax_parser.h, shared by its files
// and by nothing else: one section per file, in the order a parse meets
// them. A host's lumSAXParseFirst sets the record's reader up
// (reader_setup) and runs the first pass (parse_passes); each
// lumSAXParseNext is one pull step (pull_step), whose first step restarts
// the parse (parse_passes); lumSAXParse validates a file in one go
// (one_shot_validation). All of them leave their texts in the record
// through parser_messages, and hold the reader through parser_record.
#pragma once

#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

#include "frame/error_report.h"
#include "frame/owned_heap.h"
#include "lumxml.h"
#include "sax/hardened_reader.h"

XERCES_CPP_NAMESPACE_BEGIN
class SAX2XMLReaderImpl;
class XMLPScanToken;
XERCES_CPP_NAMESPACE_END

namespace lumxml {

class DOMTreeErrorReporter;
class LumSAXErrorHandler;

namespace sax {

class EventPool;

namespace pull {

// ---- parser_record.cpp: record fields that hold library objects ----------

xercesc::SAX2XMLReaderImpl* readerOf(const SaxParserInstance& instance);
xercesc::XMLPScanToken* tokenOf(const SaxParserInstance& instance);
void deleteToken(SaxParserInstance& instance);
void newToken(SaxParserInstance& instance);
void deleteInputSource(SaxParserInstance& instance);
LumSAXErrorHandler* errorHandlerOf(const SaxParserInstance& instance);
// The reader goes with its security manager. The locator it handed to the
// content handler goes with it, so the record stops pointing at it.
void deleteReader(SaxParserInstance& instance);
// The spare event blocks of the instance's handlers (null without a reader).
EventPool* eventPoolOf(const SaxParserInstance& instance);

// ---- reader_setup.cpp: a reader, the record's options and the handlers ---

constexpr uint32_t kFlagNoNamespaces = 1;
constexpr uint32_t kFlagValidate = 2;
constexpr uint32_t kFlagNoDefaultEntityResolution = 4;

// A reader on a heap of lumxml's own, which it holds in a base made before
// the reader and destroyed after it: what Xerces leaves in the heap goes
// with the reader.
struct HeapHolder {
    HeapRef heap{OwnedHeap::create()};
};

class OwnedHeapReader final : private HeapHolder, public HardenedReader {
public:
    OwnedHeapReader() : HardenedReader(heap.get()) {}
    OwnedHeap* ownHeap() const { return heap.get(); }
};

bool isMemoryInput(int32_t kind);
xercesc::SAX2XMLReaderImpl* newReader();
// The options of the record, read as they stand now, onto the reader.
void applyOptions(xercesc::SAX2XMLReaderImpl& reader, const SaxParserInstance& instance);
void installNewHandlers(xercesc::SAX2XMLReaderImpl& reader, SaxParserInstance& instance);
void moveHandlers(xercesc::SAX2XMLReaderImpl& from, xercesc::SAX2XMLReaderImpl& to);
void deleteHandlers(xercesc::SAX2XMLReaderImpl& reader);

// ---- parser_messages.cpp: the error text of the record -------------------

ErrorReport reportOf(SaxParserInstance& instance);
// `prefix` then the Xerces message, cut to the record's 255 characters.
void writePrefixed(SaxParserInstance& instance, const char* prefix, const XMLCh* message,
                   int32_t code);
void appendMessage(SaxParserInstance& instance, const XMLCh* message, int32_t code);
// The reporter's text (budgeted for 256 characters) into the record's 255.
void copyReporterText(SaxParserInstance& instance, const DOMTreeErrorReporter& reporter);
bool hasText(const XMLCh* text);
bool hasText(const char* text);

// ---- parse_passes.cpp: the first pass and the restart --------------------

// The first pass: a new reader on the record, cut short once
// "StartDocument" is queued. Answers 0 or 1 for the host.
int32_t setUp(SaxParserInstance& instance);

// What restartParse answers when the step goes on to read.
constexpr int32_t kGoOn = 2;
// The second, real pass: a new reader with the same handlers and the
// options of the record as the host left them while "StartDocument" was
// at eventHead. Answers 0 or 1 for the host, or kGoOn.
int32_t restartParse(SaxParserInstance& instance);

// ---- pull_step.cpp: one lumSAXParseNext -------------------------------------

// One step for the host. One Xerces step may queue several events; the
// record's line and column are those of the event left at eventHead.
int32_t next(SaxParserInstance& instance);

// ---- one_shot_validation.cpp: lumSAXParse ---------------------------------

int32_t validate(SaxParserInstance& instance);

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
