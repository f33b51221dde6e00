// One pull step (lumSAXParseNext), read top to bottom: the pieces below
// in the order the step runs them, then the step itself.
//
// The host has handled the event at eventHead: it leaves the queue, and
// when others of the same Xerces step are still queued the next one is the
// answer. Otherwise the first step after lumSAXParseFirst restarts the
// parse (parse_passes); then the queue and the error text start empty and
// Xerces reads on until its handlers queue something or the input ends.
// The answer's line and column are those of the event it leaves at
// eventHead.
#include "sax/parser_parts.h"
#include "sax/sax_parser.h"

#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>

#include "sax/sax_events.h"
#include "sax/sax_handlers.h"

namespace lumxml {
namespace sax {
namespace pull {

using namespace xercesc;

namespace {

// The event the host has handled leaves eventHead (its block to the spare
// events); true when others of the same Xerces step are still queued.
bool dropHandledEvent(SaxParserInstance& instance) {
    SaxEvent* handled = instance.eventHead;
    if (handled == nullptr) return false;
    const int32_t countBefore = instance.eventCount;
    instance.eventHead = handled->next;
    if (instance.eventTail == handled) instance.eventTail = nullptr;
    freeEvent(handled, eventPoolOf(instance));
    --instance.eventCount;
    return countBefore != 1;
}

// The queue and the error text start empty for the Xerces step.
void clearForXercesStep(SaxParserInstance& instance) {
    instance.eventHead = nullptr;
    instance.eventTail = nullptr;
    instance.eventCount = 0;
    instance.errorText[0] = '\0';
    instance.errorCode = 0;
}

bool canReadOn(const SaxParserInstance& instance) {
    return instance.scanToken != nullptr && instance.reader != nullptr;
}

// One or more Xerces steps until something is queued or the input ends.
int32_t readOn(SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    try {
        // A step that raises no event (a comment, say) is followed by the
        // next, so that an answer of 1 always has an event at eventHead.
        while (reader->parseNext(*tokenOf(instance))) {
            if (instance.eventHead != nullptr) return 1;
        }
        deleteToken(instance);
        return instance.eventCount != 0 ? 1 : 0;
    } catch (const EntityExpansionLimitStop&) {
        deleteToken(instance);
        return instance.eventCount != 0 ? 1 : 0;
    } catch (const LumSAXException& stop) {
        deleteToken(instance);
        if (hasText(stop.getMessage())) appendMessage(instance, stop.getMessage(), 1);
        return 0;
    } catch (...) {
        deleteToken(instance);
        if (instance.eventCount != 0) return 1;
        reportOf(instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception in SAXParseNext");
        return 0;
    }
}

bool endedAtExpansionLimit(const SaxParserInstance& instance) {
    const LumSAXErrorHandler* handler = errorHandlerOf(instance);
    return handler != nullptr && handler->endedAtExpansionLimit();
}

// Nothing left to read on with: the end of a parse that ended, else
// "Unexpected error".
int32_t answerAtEnd(SaxParserInstance& instance) {
    if (instance.state == kStateEnded || endedAtExpansionLimit(instance)) return 0;
    reportOf(instance).fixed("Unexpected error", LUM_ERR_PARSE);
    return 0;
}

int32_t step(SaxParserInstance& instance) {
    if (dropHandledEvent(instance)) return 1;
    if (instance.state == kStateFirstPass) {
        const int32_t restarted = restartParse(instance);
        if (restarted != kGoOn) return restarted;
    }
    clearForXercesStep(instance);
    if (canReadOn(instance)) return readOn(instance);
    return answerAtEnd(instance);
}

}  // namespace

int32_t next(SaxParserInstance& instance) {
    const int32_t result = step(instance);
    if (result == 1) showLocationOf(instance, instance.eventHead);
    return result;
}

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
