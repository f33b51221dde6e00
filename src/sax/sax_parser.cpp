// The pull reader's exports: each checks the record and the library's
// start-up, runs its flow and turns any exception into the record's
// "Unexpected exception". lumSAXParseFirst sets up a reader and runs the
// first pass (reader_setup, parse_passes), lumSAXParseNext is one pull
// step (pull_step), lumSAXParse the one-shot validation
// (one_shot_validation); the pieces they share are in parser_parts.h.
#include "sax/sax_parser.h"
#include "lumxml.h"

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "sax/parser_parts.h"

namespace lumxml {
namespace sax {

using namespace pull;

// ---- Exported operations -------------------------------------------------------

int32_t parseFirst(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    if (!isInitialised()) {
        reportOf(*instance).fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return 0;
    }
    try {
        return setUp(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

int32_t parseNext(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    try {
        return next(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

void deleteParserInstance(SaxParserInstance* instance) {
    if (instance == nullptr) return;
    try {
        resetParserInstance(*instance);
        codec::release(instance->publicId);
        instance->publicId = nullptr;
        codec::release(instance->systemId);
        instance->systemId = nullptr;
    } catch (...) {
        // Deletion never reports.
    }
}

int32_t validateFile(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    if (!isInitialised()) {
        // Deliberately 1: the call "ran" and the reason is in the record.
        reportOf(*instance).fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return 1;
    }
    try {
        return validate(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

}  // namespace sax
}  // namespace lumxml
