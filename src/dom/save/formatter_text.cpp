#include "dom/save/formatter_text.h"

#include <xercesc/util/XMLString.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

bool isHighSurrogate(XMLCh unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(XMLCh unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void referenceText(XMLCh unit, XMLCh reference[8]) {
    static const char digits[] = "0123456789ABCDEF";
    reference[0] = u'&';
    reference[1] = u'#';
    reference[2] = u'x';
    for (int i = 0; i < 4; ++i) reference[3 + i] = digits[(unit >> (12 - 4 * i)) & 0xF];
    reference[7] = u';';
}

// "&#xD800;": the form the formatter itself gives an unrepresentable unit
// (upper-case hexadecimal digits).
void writeUnitReference(XMLFormatter& formatter, XMLCh unit) {
    XMLCh reference[8];
    referenceText(unit, reference);
    formatter.formatBuf(reference, 8, XMLFormatter::NoEscapes, XMLFormatter::UnRep_Fail);
}

}  // namespace

void writeFormatted(XMLFormatter& formatter, const XMLCh* text, XMLSize_t count,
                    XMLFormatter::EscapeFlags escapes) {
    XMLSize_t start = 0;
    for (XMLSize_t i = 0; i < count; ++i) {
        if (!isHighSurrogate(text[i])) continue;
        if (i + 1 < count && isLowSurrogate(text[i + 1])) {
            ++i;
            continue;
        }
        if (i > start) formatter.formatBuf(text + start, i - start, escapes);
        writeUnitReference(formatter, text[i]);
        start = i + 1;
    }
    if (count > start) formatter.formatBuf(text + start, count - start, escapes);
}

void appendMarkup(std::u16string& out, const XMLCh* text, XMLSize_t count) {
    XMLSize_t start = 0;
    for (XMLSize_t i = 0; i < count; ++i) {
        if (!isHighSurrogate(text[i])) continue;
        if (i + 1 < count && isLowSurrogate(text[i + 1])) {
            ++i;
            continue;
        }
        out.append(text + start, i - start);
        XMLCh reference[8];
        referenceText(text[i], reference);
        out.append(reference, 8);
        start = i + 1;
    }
    out.append(text + start, count - start);
}

void writeFormatted(XMLFormatter& formatter, const XMLCh* text,
                    XMLFormatter::EscapeFlags escapes) {
    if (text == nullptr) return;
    writeFormatted(formatter, text, XMLString::stringLen(text), escapes);
}

}  // namespace lumxml
