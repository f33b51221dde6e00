// The named constants of lumxml.h are the numbers the library itself uses:
// each internal name that stands for a public number is checked against the
// public constant at compile time, and the test below only reports it.
#include <gtest/gtest.h>

#include "dom/methods/document_methods.h"
#include "dom/save/document_save.h"
#include "dom/load/documents.h"
#include "dom/load/dom_tree_error_reporter.h"
#include "dom/methods/method_call.h"
#include "dom/methods/node_methods.h"
#include "lumxml.h"
#include "out/memio.h"
#include "sax/sax_events.h"
#include "sax/sax_parser.h"
#include "writer/writer.h"

namespace {

using namespace lumxml;

static_assert(kHighestDocumentMethod == LUM_DOC_METHOD_LAST, "document methods");
static_assert(kHighestNodeMethod == LUM_NODE_METHOD_LAST, "node methods");
static_assert(kStringTooLongCode == LUM_ERR_STRING_LENGTH, "string limit code");

static_assert(kSaveToFile == LUM_SAVE_TO_FILE && kSaveToMemory == LUM_SAVE_TO_MEMORY &&
                  kSaveToStream == LUM_SAVE_TO_STREAM &&
                  kSaveNodeToMemory == LUM_SAVE_NODE_TO_MEMORY,
              "save targets");
static_assert(kLoadValidate == LUM_LOAD_VALIDATE && kLoadNamespacesOff == LUM_LOAD_NO_NAMESPACES &&
                  kLoadNoDefaultEntityResolution == LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION,
              "load flags");
static_assert(kSourceFile == LUM_LOAD_FROM_FILE && kSourceMemory == LUM_LOAD_FROM_MEMORY,
              "load sources");
static_assert(DOMTreeErrorReporter::kWarning == LUM_ERR_PARSE_WARNING &&
                  DOMTreeErrorReporter::kError == LUM_ERR_PARSE_ERROR &&
                  DOMTreeErrorReporter::kFatalError == LUM_ERR_PARSE_FATAL,
              "parse problem codes");
static_assert(XMLMemOut::kGrowthFailed == LUM_ERR_MEMORY_GROWTH, "memory growth code");

static_assert(sax::kStateFirstPass == LUM_SAX_STATE_FIRST_PASS &&
                  sax::kStateRestarting == LUM_SAX_STATE_RESTARTING &&
                  sax::kStateRunning == LUM_SAX_STATE_RUNNING &&
                  sax::kStateEnded == LUM_SAX_STATE_ENDED,
              "reader states");

static_assert(sax::kNoEvent == LUM_SAX_EVENT_EMPTY &&
                  sax::kStartDocument == LUM_SAX_EVENT_START_DOCUMENT &&
                  sax::kEndDocument == LUM_SAX_EVENT_END_DOCUMENT &&
                  sax::kStartPrefixMapping == LUM_SAX_EVENT_START_PREFIX_MAPPING &&
                  sax::kEndPrefixMapping == LUM_SAX_EVENT_END_PREFIX_MAPPING &&
                  sax::kStartElement == LUM_SAX_EVENT_START_ELEMENT &&
                  sax::kEndElement == LUM_SAX_EVENT_END_ELEMENT &&
                  sax::kCharacters == LUM_SAX_EVENT_CHARACTERS &&
                  sax::kIgnorableWhitespace == LUM_SAX_EVENT_IGNORABLE_WHITESPACE &&
                  sax::kProcessingInstruction == LUM_SAX_EVENT_PROCESSING_INSTRUCTION &&
                  sax::kSkippedEntity == LUM_SAX_EVENT_SKIPPED_ENTITY &&
                  sax::kSetDocLocator == LUM_SAX_EVENT_SET_DOC_LOCATOR &&
                  sax::kUnparsedEntityDecl == LUM_SAX_EVENT_UNPARSED_ENTITY_DECL &&
                  sax::kNotationDecl == LUM_SAX_EVENT_NOTATION_DECL &&
                  sax::kResolveEntity == LUM_SAX_EVENT_RESOLVE_ENTITY &&
                  sax::kWarning == LUM_SAX_EVENT_WARNING && sax::kError == LUM_SAX_EVENT_ERROR &&
                  sax::kFatalError == LUM_SAX_EVENT_FATAL_ERROR,
              "event kinds");

}  // namespace

TEST(PublicConstants, MatchTheLibrarysOwnNumbers) {
    // Everything is checked by the static_asserts above; reaching here means
    // the header and the library agree.
    SUCCEED();
}
