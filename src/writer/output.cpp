// The output side of the writer: opening and closing the output, the XML
// declaration, restarting memory output, messages, and the commands that
// write everything other than elements.
#include <cstring>

#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "out/file_out.h"
#include "out/memio.h"
#include "out/stream_out.h"
#include "out/utf8_escaper.h"
#include "writer/writer.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

constexpr const char kCdataEndMessage[] = "The sequence ']]>' is not allowed in character data";

bool hasText(const char* text) { return text != nullptr && text[0] != '\0'; }

// Strict S1: character data belongs inside the root element.
void checkInsideRoot(SAXWriter& w) {
    if (w.strict && !w.fragment && (w.scope == nullptr || w.scope->open == nullptr))
        setError(w, kErrTextOutsideRoot);
}

bool beginsWithXmlInAnyCase(const char* name) {
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
    return lower(name[0]) == 'x' && lower(name[1]) == 'm' && lower(name[2]) == 'l';
}

XMLFormatter* makeFormatter(SAXWriter& w, const char* encoding) {
    XmlString name(encoding);
    if (w.formatterHeap.get() == nullptr) w.formatterHeap = HeapRef(OwnedHeap::create());
    return new XMLFormatter(name.get(), w.target, XMLFormatter::NoEscapes,
                            XMLFormatter::UnRep_CharRef, w.formatterHeap.get());
}

void writeDeclaration(SAXWriter& w, const WriterOptions& options) {
    const Markup& m = markup();
    put(w, m.piOpen);
    put(w, m.xml);
    if (hasText(options.version)) {
        put(w, m.blank);
        put(w, m.version);
        putHost(w, options.version);
        put(w, m.quote);
    }
    if (hasText(options.encoding)) {
        put(w, m.blank);
        put(w, m.encoding);
        putHost(w, options.encoding);
        put(w, m.quote);
    }
    if (options.standalone != LUM_WRITER_STANDALONE_OMIT) {
        put(w, m.blank);
        put(w, m.standalone);
        put(w, options.standalone == LUM_WRITER_STANDALONE_YES ? m.yes : m.no);
        put(w, m.quote);
    }
    put(w, m.piClose);
    lineFeedIfFormatted(w);
}

// Makes the target of `options.outputKind`; false (with the code set)
// when the kind or its arguments are refused or the file cannot be opened.
bool createTarget(SAXWriter& w, const WriterOptions& options, const char* encoding) {
    switch (options.outputKind) {
        case LUM_WRITER_TO_FILE: {
            // The 8-bit name must be there even when the UTF-16 name is
            // the one used: hosts rely on that check.
            if (!hasText(options.fileName)) break;
            XMLFileOut* file = (options.wideFileName != nullptr && options.wideFileName[0] != 0)
                                   ? new XMLFileOut(options.wideFileName, encoding)
                                   : new XMLFileOut(options.fileName, encoding);
            if (file->file() == nullptr) {
                delete file;
                setError(w, kErrOpenFailed);
                return false;
            }
            w.target = file;
            return true;
        }
        case LUM_WRITER_TO_MEMORY_WITH_BOM:
        case LUM_WRITER_TO_MEMORY:
            w.memory = new XMLMemOut(encoding, options.outputKind == LUM_WRITER_TO_MEMORY_WITH_BOM);
            w.target = w.memory;
            return true;
        case LUM_WRITER_TO_STREAM:
            if (options.streamWrite == nullptr) break;
            w.target = new XMLStreamOut(options.streamHandle, options.streamWrite, encoding);
            return true;
        default:
            break;
    }
    setError(w, kErrBadOutput);
    return false;
}

void attachHost(SAXWriter& w, WriterOptions* options) {
    if (w.memory != nullptr && options != nullptr)
        w.memory->attachHost(&options->memoryBuffer, &options->memoryLength);
}

}  // namespace

// ---- Writing -------------------------------------------------------------

namespace {

// The bytes the direct way makes (`encode(out)` fills room for `maxBytes`
// and answers the end, or null when the text is not its case) go out:
// straight into the memory block when it has room for them without
// growing, which is exactly what a writeChars of them would do; else
// through directBytes and one writeChars. A text the direct way does not
// take writes nothing and answers false.
template <class Encode>
bool emitDirect(SAXWriter& w, size_t maxBytes, Encode&& encode) {
    if (w.memoryDirect) {
        if (uint8_t* room = w.memory->room(maxBytes)) {
            char* const begin = reinterpret_cast<char*>(room);
            char* const end = encode(begin);
            if (end == nullptr) return false;
            w.memory->commit(static_cast<XMLSize_t>(end - begin));
            return true;
        }
    }
    // Only grown, never shrunk: the room is reused by every later write.
    if (w.directBytes.size() < maxBytes) w.directBytes.resize(maxBytes);
    char* const begin = &w.directBytes[0];
    char* const end = encode(begin);
    if (end == nullptr) return false;
    if (end != begin)
        w.target->writeChars(reinterpret_cast<const XMLByte*>(begin),
                             static_cast<XMLSize_t>(end - begin), w.formatter);
    return true;
}

// Every write of UTF-16 units goes through here. For UTF-8 output the bytes
// are made without the formatter (same bytes, much faster); a text the
// direct way does not take (one with a surrogate) still goes to the
// formatter.
void format(SAXWriter& w, const XMLCh* text, XMLSize_t length, XMLFormatter::EscapeFlags flags) {
    if (w.utf8Direct != nullptr) {
        const Utf8Escaper& escaper = *w.utf8Direct;
        if (emitDirect(w, escaper.maxBytes(length),
                       [&](char* out) { return escaper.encode(text, length, flags, out); }))
            return;
    }
    w.formatter->formatBuf(text, length, flags);
}

void chooseDirectUtf8(SAXWriter& w, const char* encoding) {
    w.utf8Direct = Utf8Escaper::isUtf8(encoding) ? &Utf8Escaper::instance() : nullptr;
    // UTF-8 host texts become UTF-8 output without UTF-16 in between, and
    // memory output is encoded in place.
    w.hostBytesDirect = w.utf8Direct != nullptr && codec::hostIsUtf8();
    w.memoryDirect = w.utf8Direct != nullptr && w.memory != nullptr;
}

}  // namespace

void put(SAXWriter& w, const MarkupPiece& piece) {
    // Markup is ASCII written as itself: copied straight into the block.
    if (w.memoryDirect && w.utf8Direct->plainMarkup()) {
        if (uint8_t* room = w.memory->room(piece.length)) {
            std::memcpy(room, piece.ascii, piece.length);
            w.memory->commit(piece.length);
            return;
        }
    }
    if (w.formatter != nullptr) format(w, piece.text, piece.length, XMLFormatter::NoEscapes);
}

void putUnits(SAXWriter& w, const XMLCh* text, XMLFormatter::EscapeFlags flags) {
    if (w.formatter == nullptr || text == nullptr) return;
    XMLSize_t length = XMLString::stringLen(text);
    if (length != 0) format(w, text, length, flags);
}

namespace {

// A host text of `length` bytes (no zero byte among them).
void putHostBytes(SAXWriter& w, const char* text, size_t length, XMLFormatter::EscapeFlags flags) {
    if (text == nullptr || length == 0 || w.formatter == nullptr) return;
    if (w.hostBytesDirect) {
        const Utf8Escaper& escaper = *w.utf8Direct;
        if (emitDirect(w, escaper.maxBytes(length),
                       [&](char* out) { return escaper.encodeUtf8(text, length, flags, out); }))
            return;
    }
    // One transcoded argument per writer, in the writer's reused scratch.
    putUnits(w, codec::toXml(text, length, w.scratch), flags);
}

}  // namespace

void putHost(SAXWriter& w, const char* text, XMLFormatter::EscapeFlags flags) {
    if (text == nullptr || text[0] == '\0' || w.formatter == nullptr) return;
    putHostBytes(w, text, std::strlen(text), flags);
}

// The writer's texts are copies of host texts or of their parts: never a
// zero byte inside, so the size is the length the host text has.
void putHost(SAXWriter& w, const std::string& text, XMLFormatter::EscapeFlags flags) {
    putHostBytes(w, text.data(), text.size(), flags);
}

void indent(SAXWriter& w) {
    if (!w.formatted) return;
    for (int32_t i = 0; i < w.depth; ++i) put(w, markup().indentStep);
}

void lineFeedIfFormatted(SAXWriter& w) {
    if (w.formatted) put(w, markup().lineFeed);
}

const char* textArgument(void* slot) {
    const char* text = static_cast<const char*>(slot);
    return hasText(text) ? text : nullptr;
}

bool isValidQName(SAXWriter& w, const char* name) {
    if (!hasText(name)) return false;
    const size_t length = std::strlen(name);
    // A UTF-8 host text always converts alike: its answer can be kept.
    const bool keep = codec::hostIsUtf8();
    if (keep) {
        if (const bool* known = w.checkedQNames.find(name, length)) return *known;
    }
    const XMLCh* units = codec::toXml(name, length, w.scratch);
    const bool valid = XMLChar1_0::isValidQName(units, XMLString::stringLen(units));
    if (keep) w.checkedQNames.remember(name, length, valid);
    return valid;
}

bool isValidName(SAXWriter& w, const char* name) {
    if (!hasText(name)) return false;
    const XMLCh* units = codec::toXml(name, std::strlen(name), w.scratch);
    return XMLChar1_0::isValidName(units, XMLString::stringLen(units));
}

// ---- Messages and codes --------------------------------------------------

void setError(SAXWriter& w, int32_t code) { w.errorCode = static_cast<uint32_t>(code); }

void setMessage(SAXWriter& w, const char* text) {
    size_t size = text != nullptr ? std::strlen(text) : 0;
    // The host may hold the address published at open: an outgrown block
    // is kept (not freed) until the writer goes, and the new address is
    // published again at the end of the command.
    if (char* old = w.message.reserveRetaining(size + 1)) w.retiredMessages.push_back(old);
    w.message.set(text);
}

void setMessage(SAXWriter& w, const std::string& text) { setMessage(w, text.c_str()); }

// ---- Opening, closing and restarting the output --------------------------

void deleteOutput(SAXWriter& w) {
    delete w.formatter;
    w.formatter = nullptr;
    w.utf8Direct = nullptr;
    w.hostBytesDirect = false;
    w.memoryDirect = false;
    delete w.target;
    w.target = nullptr;
    w.memory = nullptr;
}

void discardUnreachableMemory(SAXWriter& w) {
    if (w.memory != nullptr) w.memory->discard();
}

void openOutput(SAXWriter& w, WriterOptions* options) {
    // A reopened writer starts a fresh document.
    deleteOutput(w);
    delete w.scope;
    w.scope = new WriterScope;
    freeBindings(w);
    clearPending(w);
    w.depth = 0;
    w.lastCommand = 0;
    w.finalLength = 0;
    if (options == nullptr) {
        setError(w, kErrBadOutput);
        return;
    }
    const char* encoding = hasText(options->encoding) ? options->encoding : "UTF-8";
    w.formatted = options->formatted != 0;
    w.fragment = options->fragment != 0;
    w.strict = options->strict != 0;
    options->message = w.message.data();
    w.openOptions = options;
    w.publishedMessage = w.message.text();
    try {
        if (!createTarget(w, *options, encoding)) return;
        w.formatter = makeFormatter(w, encoding);
        chooseDirectUtf8(w, encoding);
        if (!w.fragment) writeDeclaration(w, *options);
    } catch (const XMLException&) {
        setError(w, kErrOpenFailed);
        return;
    }
    attachHost(w, options);
}

void endDocument(SAXWriter& w, WriterOptions* options) {
    if (w.strict && (w.scope == nullptr || w.scope->open != nullptr))
        setError(w, kErrElementStillOpen);
    attachHost(w, options);
    // The live length goes with the target: the host's pointer is moved
    // to a cell of the writer holding the final count, so that reading
    // it after the end of the document stays safe.
    if (w.memory != nullptr) {
        w.closedBlock = w.memory->fromHostAllocator() ? nullptr : w.memory->buffer();
    }
    if (w.memory != nullptr && options != nullptr) {
        w.finalLength = w.memory->length();
        options->memoryLength = &w.finalLength;
    }
    delete w.scope;
    w.scope = nullptr;
    deleteOutput(w);
}

void restartMemoryOutput(SAXWriter& w, WriterOptions* options) {
    deleteOutput(w);
    // An empty encoding name is passed on as it is here.
    const char* encoding =
        (options != nullptr && options->encoding != nullptr) ? options->encoding : "UTF-8";
    bool writeBom = options == nullptr || options->outputKind != LUM_WRITER_TO_MEMORY;
    w.memory = new XMLMemOut(encoding, writeBom);
    w.target = w.memory;
    w.formatter = makeFormatter(w, encoding);
    chooseDirectUtf8(w, encoding);
    // The earlier block stays the host's; its text becomes the first
    // content of the new one.
    if (options != nullptr && options->memoryLength != nullptr)
        putHost(w, static_cast<const char*>(options->memoryBuffer));
    attachHost(w, options);
}

// ---- Text commands ---------------------------------------------------------

void writeCharacters(SAXWriter& w, const char* text) {
    checkInsideRoot(w);
    putHost(w, text, XMLFormatter::StdEscapes);
}

void writeRaw(SAXWriter& w, const char* text) { putHost(w, text); }

void writeComment(SAXWriter& w, const char* text) {
    // Comment texts are not examined: "--" inside is written as it is.
    indent(w);
    put(w, markup().commentOpen);
    putHost(w, text);
    put(w, markup().commentClose);
    lineFeedIfFormatted(w);
}

void writeProcessingInstruction(SAXWriter& w, const char* target, const char* data) {
    indent(w);
    // Strict S2: a valid name that does not begin with x, m, l in any
    // case, so xml-stylesheet is refused too, by design.
    if (w.strict && (!isValidName(w, target) || beginsWithXmlInAnyCase(target))) {
        setError(w, kErrInvalidName);
        setMessage(w, target);
        return;
    }
    const Markup& m = markup();
    put(w, m.piOpen);
    putHost(w, target);
    put(w, m.blank);  // also when there is no data
    putHost(w, data);
    put(w, m.piClose);
    lineFeedIfFormatted(w);
}

void writeDoctype(SAXWriter& w, const char* name, const char* first, const char* second) {
    const Markup& m = markup();
    put(w, m.doctype);
    putHost(w, name);
    // With two identifiers the first is the public one; alone it is the
    // system identifier. Callers rely on that order.
    if (second != nullptr) {
        put(w, m.publicId);
        put(w, m.quote);
        putHost(w, first);
        put(w, m.quote);
        put(w, m.blank);
        put(w, m.quote);
        putHost(w, second);
        put(w, m.quote);
    } else {
        put(w, m.system);
        put(w, m.quote);
        putHost(w, first);
        put(w, m.quote);
    }
    put(w, m.close);
    lineFeedIfFormatted(w);
    // Strict S3: the root element must carry the DOCTYPE's name.
    if (!w.strict) return;
    if (w.fragment) {
        setError(w, kErrDoctypeInFragment);
        return;
    }
    w.depth = -1;
    w.nameBuffer.set(name);
}

void writeEntityReference(SAXWriter& w, const char* name) {
    // Strict S4: the reference is written even when its name is refused.
    if (w.strict && !isValidName(w, name)) {
        setError(w, kErrInvalidName);
        setMessage(w, name);
    }
    put(w, markup().ampersand);
    putHost(w, name);
    put(w, markup().semicolon);
}

void writeCdata(SAXWriter& w, const char* text) {
    checkInsideRoot(w);
    indent(w);
    if (text != nullptr && std::strstr(text, "]]>") != nullptr) {
        setError(w, kErrCdataEnd);
        setMessage(w, kCdataEndMessage);
        return;
    }
    put(w, markup().cdataOpen);
    putHost(w, text);
    put(w, markup().cdataClose);
    lineFeedIfFormatted(w);
}

}  // namespace lumxml
