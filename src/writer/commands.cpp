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
    w.lastCommand = 23;
    completeStartTag(w, 25);
    writeCharacters(w, text(a, 1));
    // The end tag follows the text as it does after command 25: on the
    // same line, not indented.
    w.state = kStateAfterText;
    endElement(w, text(a, 0), text(a, 2));
    w.lastCommand = 24;
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
    // cmd  requires            state after          output  work
    {1,  kAny,               kSame,               false, doNothing},
    {10, kStateStartTagOpen, kStateStartTagOpen,  true,  doAddAttribute},
    {11, kStateStartTagOpen, kStateStartTagOpen,  true,  doDeclareNamespace},
    {12, kAny,               kSame,               false, doRestart},
    {22, kAny,               kStateEnded,         false, doEndDocument},
    {23, kAny,               kStateStartTagOpen,  true,  doStartElement},
    {24, kAny,               kStateAfterEndTag,   true,  doEndElement},
    {25, kAny,               kStateAfterText,     true,  doCharacters},
    {26, kAny,               kStateStartTagOpen,  true,  doStartElement},
    {27, kAny,               kStateAfterEndTag,   true,  doDataElement},
    {28, kAny,               kSame,               true,  doComment},
    {29, kAny,               kSame,               true,  doProcessingInstruction},
    {30, kAny,               kStateAfterText,     true,  doRaw},
    {31, kStateProlog,       kSame,               true,  doDoctype},
    {32, kAny,               kSame,               true,  doEntityReference},
    {33, kAny,               kSame,               true,  doCdata},
};

constexpr CommandRule kOtherCommand = {0, kAny, kSame, false, doNothing};

// The rules indexed by command number (commands run by the million).
constexpr int32_t kHighestCommand = 33;
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
    runGuarded(w, [&] { completeStartTag(w, 4); });
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
        if (command != 1 || args == nullptr) return kWriterRefused;
        args->arg0 = createWriter();
        // No memory for the writer: the host's null writer comes with the
        // code of an unexpected failure.
        return args->arg0 != nullptr ? kWriterOk : static_cast<int32_t>(kErrUnexpected);
    }
    switch (command) {
        case 3:
            return static_cast<int32_t>(writer->state);
        case 5:
            writer->state = kStateFailed;
            return kWriterOk;
        case 4:
            if (args == nullptr) return kWriterRefused;
            delete writer;
            args->arg0 = createWriter();
            return args->arg0 != nullptr ? kWriterOk : static_cast<int32_t>(kErrUnexpected);
        default:
            break;
    }
    if (writer->state == kStateFailed && command != 2) return kWriterRefused;
    if (command == 2) {
        runGuarded(*writer, [&] { completeStartTag(*writer, 2); });
        delete writer;
        return kWriterOk;
    }
    if (command == 21) return openCommand(*writer, options);
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
