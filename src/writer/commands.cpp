// lumSAXWriterExecute: the writer record's life, its states and the one
// command table.
//
// States:  1 created  -> 21 ->  2 prolog  -> 23/26 -> 3 start tag open
//          3 -> 24/27 -> 4 after an end tag;  25/30 -> 5 after text
//          22 -> 6 ended;  any failure or command 5 -> 7 failed/stopped
// In state 7 only 2 (free), 3 (state), 4 (reset) and 5 (stop) are taken.
#include <cstdlib>
#include <new>

#include "out/memio.h"
#include "writer/writer.h"

namespace lumxml {

namespace {

void* slot(WriterArgs* args, int index) {
    if (args == nullptr) return nullptr;
    switch (index) {
        case 0: return args->arg0;
        case 1: return args->arg1;
        case 2: return args->arg2;
        default: return args->arg3;
    }
}
const char* text(WriterArgs* args, int index) { return textArgument(slot(args, index)); }

// ---- The work of each command ------------------------------------------

using Work = void (*)(SAXWriter&, WriterOptions*, WriterArgs*);

void doNothing(SAXWriter&, WriterOptions*, WriterArgs*) {}
void doAddAttribute(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    addAttribute(w, text(a, 0), text(a, 1), text(a, 2));
}
void doDeclareNamespace(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    declareNamespace(w, text(a, 0), text(a, 1));
}
void doRestart(SAXWriter& w, WriterOptions* o, WriterArgs*) { restartMemoryOutput(w, o); }
void doEndDocument(SAXWriter& w, WriterOptions* o, WriterArgs*) { endDocument(w, o); }
void doStartElement(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    startElement(w, text(a, 0), text(a, 1), static_cast<const SaxAttrList*>(slot(a, 2)));
}
void doEndElement(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    endElement(w, text(a, 0), text(a, 1));
}
void doCharacters(SAXWriter& w, WriterOptions*, WriterArgs* a) { writeCharacters(w, text(a, 0)); }
void doDataElement(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    startElement(w, text(a, 0), text(a, 2), static_cast<const SaxAttrList*>(slot(a, 3)));
    w.lastCommand = LUM_WRITER_START_ELEMENT;
    completeStartTag(w, LUM_WRITER_CHARACTERS);
    writeCharacters(w, text(a, 1));
    // The end tag follows the text as it does after command 25: on the
    // same line, not indented.
    w.state = kStateAfterText;
    endElement(w, text(a, 0), text(a, 2));
    w.lastCommand = LUM_WRITER_END_ELEMENT;
}
void doComment(SAXWriter& w, WriterOptions*, WriterArgs* a) { writeComment(w, text(a, 0)); }
void doProcessingInstruction(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    writeProcessingInstruction(w, text(a, 0), text(a, 1));
}
void doRaw(SAXWriter& w, WriterOptions*, WriterArgs* a) { writeRaw(w, text(a, 0)); }
void doDoctype(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    writeDoctype(w, text(a, 0), text(a, 1), text(a, 2));
}
void doEntityReference(SAXWriter& w, WriterOptions*, WriterArgs* a) {
    writeEntityReference(w, text(a, 0));
}
void doCdata(SAXWriter& w, WriterOptions*, WriterArgs* a) { writeCdata(w, text(a, 0)); }

// ---- The command table ---------------------------------------------------
//
// Commands 1 (with no writer), 2, 3, 4, 5 and 21 are taken before the
// table (executeWriterCommand). Every command of the table but 10, 11 and
// 12 first completes a pending start tag. A command whose state
// requirement fails answers 1; so does one that writes while no output is
// open (after command 22, say), so that nothing is ever written then.

constexpr uint32_t kAny = 0;        // required state: any (but 7)
constexpr uint32_t kSame = 0;       // state after: unchanged

struct CommandRule {
    int32_t command;
    uint32_t requiredState;
    uint32_t stateAfter;
    bool needsOutput;
    Work work;
};

constexpr CommandRule kCommands[] = {
    // command                         requires            state after          output work
    {LUM_WRITER_CREATE,                  kAny,               kSame,               false, doNothing},
    {LUM_WRITER_ADD_ATTRIBUTE,           kStateStartTagOpen, kStateStartTagOpen,  true,  doAddAttribute},
    {LUM_WRITER_DECLARE_NAMESPACE,       kStateStartTagOpen, kStateStartTagOpen,  true,  doDeclareNamespace},
    {LUM_WRITER_RESTART_MEMORY,          kAny,               kSame,               false, doRestart},
    {LUM_WRITER_END_DOCUMENT,            kAny,               kStateEnded,         false, doEndDocument},
    {LUM_WRITER_START_ELEMENT,           kAny,               kStateStartTagOpen,  true,  doStartElement},
    {LUM_WRITER_END_ELEMENT,             kAny,               kStateAfterEndTag,   true,  doEndElement},
    {LUM_WRITER_CHARACTERS,              kAny,               kStateAfterText,     true,  doCharacters},
    {LUM_WRITER_EMPTY_ELEMENT,           kAny,               kStateStartTagOpen,  true,  doStartElement},
    {LUM_WRITER_DATA_ELEMENT,            kAny,               kStateAfterEndTag,   true,  doDataElement},
    {LUM_WRITER_COMMENT,                 kAny,               kSame,               true,  doComment},
    {LUM_WRITER_PROCESSING_INSTRUCTION,  kAny,               kSame,               true,  doProcessingInstruction},
    {LUM_WRITER_RAW_TEXT,                kAny,               kStateAfterText,     true,  doRaw},
    {LUM_WRITER_DOCTYPE,                 kStateProlog,       kSame,               true,  doDoctype},
    {LUM_WRITER_ENTITY_REFERENCE,        kAny,               kSame,               true,  doEntityReference},
    {LUM_WRITER_CDATA,                   kAny,               kSame,               true,  doCdata},
};

constexpr CommandRule kOtherCommand = {0, kAny, kSame, false, doNothing};

// The rules indexed by command number (commands run by the million).
constexpr int32_t kHighestCommand = LUM_WRITER_CDATA;
struct RuleIndex {
    const CommandRule* rules[kHighestCommand + 1];
    constexpr RuleIndex() : rules() {
        for (const CommandRule*& rule : rules) rule = &kOtherCommand;
        for (const CommandRule& rule : kCommands) rules[rule.command] = &rule;
    }
};
constexpr RuleIndex kRuleIndex;

const CommandRule& ruleFor(int32_t command) {
    if (command < 0 || command > kHighestCommand) return kOtherCommand;
    return *kRuleIndex.rules[command];
}

// ---- Running a command -----------------------------------------------------

// Every command's work runs under two handlers: an integer (the memory
// target's 80) and anything else (99).
template <class Body>
void runGuarded(SAXWriter& w, Body&& body) {
    try {
        body();
    } catch (int) {
        setError(w, kErrMemory);
    } catch (...) {
        setError(w, kErrUnexpected);
    }
}

// A message that outgrew its block is published again.
void publishMessage(SAXWriter& w, WriterOptions* options) {
    if (w.publishedMessage == nullptr || w.publishedMessage == w.message.text()) return;
    WriterOptions* record = options != nullptr ? options : w.openOptions;
    if (record != nullptr) record->message = w.message.data();
    w.publishedMessage = w.message.text();
}

// After a failed command: state 7, the pending tag written, the output
// closed as by command 22, the host's memory fields cleared. The answer is
// the code found before the close (which may itself set 9).
int32_t failureStep(SAXWriter& w, WriterOptions* options) {
    const int32_t found = static_cast<int32_t>(w.errorCode);
    w.state = kStateFailed;
    // (as for command 4: any number but 10, 11, 12 and 25 writes the tag the same)
    runGuarded(w, [&] { completeStartTag(w, LUM_WRITER_RESET); });
    // The host's block variable is cleared below: a block of the runtime
    // allocator could then be freed by nobody, so it goes now.
    discardUnreachableMemory(w);
    runGuarded(w, [&] { endDocument(w, options); });
    // The failing command may have closed the output itself (command 22
    // finding an open element): its block is just as unreachable now.
    if (options != nullptr && w.closedBlock != nullptr && options->memoryBuffer == w.closedBlock)
        std::free(w.closedBlock);
    w.closedBlock = nullptr;
    if (options != nullptr) {
        options->memoryBuffer = nullptr;
        options->memoryLength = nullptr;
    }
    publishMessage(w, options);
    return found;
}

SAXWriter* createWriter() {
    markup();  // the process's fixed strings, made once
    return new (std::nothrow) SAXWriter;
}

int32_t openCommand(SAXWriter& w, WriterOptions* options) {
    runGuarded(w, [&] { openOutput(w, options); });
    publishMessage(w, options);
    if (w.errorCode != 0) {
        // Nothing is closed: the output is dropped with the writer.
        w.state = kStateFailed;
        return static_cast<int32_t>(w.errorCode);
    }
    w.state = kStateProlog;
    return kWriterOk;
}

int32_t tableCommand(SAXWriter& w, int32_t command, WriterOptions* options, WriterArgs* args) {
    const CommandRule& rule = ruleFor(command);
    bool refused = false;
    w.closedBlock = nullptr;  // only a block closed by this very command counts
    runGuarded(w, [&] {
        completeStartTag(w, static_cast<uint32_t>(command));
        if ((rule.requiredState != kAny && w.state != rule.requiredState) ||
            (rule.needsOutput && w.formatter == nullptr)) {
            refused = true;
            return;
        }
        rule.work(w, options, args);
    });
    if (!refused && rule.stateAfter != kSame) w.state = rule.stateAfter;
    if (w.errorCode == 0) {
        publishMessage(w, options);
        return refused ? kWriterRefused : kWriterOk;
    }
    return failureStep(w, options);
}

}  // namespace

int32_t executeWriterCommand(SAXWriter* writer, int32_t command, WriterOptions* options,
                             WriterArgs* args) {
    if (writer == nullptr) {
        if (command != LUM_WRITER_CREATE || args == nullptr) return kWriterRefused;
        args->arg0 = createWriter();
        // No memory for the writer: the host's null writer comes with the
        // code of an unexpected failure.
        return args->arg0 != nullptr ? kWriterOk : static_cast<int32_t>(kErrUnexpected);
    }
    switch (command) {
        case LUM_WRITER_GET_STATE:
            return static_cast<int32_t>(writer->state);
        case LUM_WRITER_STOP:
            writer->state = kStateFailed;
            return kWriterOk;
        case LUM_WRITER_RESET:
            if (args == nullptr) return kWriterRefused;
            delete writer;
            args->arg0 = createWriter();
            return args->arg0 != nullptr ? kWriterOk : static_cast<int32_t>(kErrUnexpected);
        default:
            break;
    }
    if (writer->state == kStateFailed && command != LUM_WRITER_FREE) return kWriterRefused;
    if (command == LUM_WRITER_FREE) {
        runGuarded(*writer, [&] { completeStartTag(*writer, LUM_WRITER_FREE); });
        delete writer;
        return kWriterOk;
    }
    if (command == LUM_WRITER_OPEN) return openCommand(*writer, options);
    return tableCommand(*writer, command, options, args);
}

}  // namespace lumxml

// Frees everything the writer holds: bindings, pending list, scope, then
// the formatter and the target.
SAXWriter::~SAXWriter() {
    lumxml::clearPending(*this);
    lumxml::freeBindings(*this);
    delete scope;
    lumxml::freeSpareRecords(*this);
    lumxml::deleteOutput(*this);
    for (char* old : retiredMessages) delete[] old;
}
