// The fixed markup strings of the writer, in UTF-16.
//
// They belong to the process: made once, on the first creation of any
// writer (a function-local static, so writers may be created on several
// threads), and kept for the life of the process.
#pragma once

#include <xercesc/util/XercesDefs.hpp>

namespace lumxml {

struct MarkupPiece {
    const XMLCh* text = nullptr;
    XMLSize_t length = 0;
    const char* ascii = nullptr;  // the same text in ASCII (printable and line feed only)
};

struct Markup {
    MarkupPiece open;           // <
    MarkupPiece openEnd;        // </
    MarkupPiece close;          // >
    MarkupPiece closeEmpty;     // />
    MarkupPiece piOpen;         // <?
    MarkupPiece piClose;        // ?>
    MarkupPiece xml;            // xml
    MarkupPiece version;        // version="
    MarkupPiece encoding;       // encoding="
    MarkupPiece standalone;     // standalone="
    MarkupPiece quote;          // "
    MarkupPiece lineFeed;       // LF
    MarkupPiece indentStep;     // two blanks
    MarkupPiece blank;          // one blank
    MarkupPiece commentOpen;    // <!--  (and a blank)
    MarkupPiece commentClose;   //  --> (a blank first)
    MarkupPiece ampersand;      // &
    MarkupPiece semicolon;      // ;
    MarkupPiece doctype;        // <!DOCTYPE  (and a blank)
    MarkupPiece system;         //  SYSTEM  (blanks around)
    MarkupPiece publicId;       //  PUBLIC  (blanks around)
    MarkupPiece cdataOpen;      // <![CDATA[
    MarkupPiece cdataClose;     // ]]>
    MarkupPiece yes;            // yes
    MarkupPiece no;             // no
    // Pieces the element writer composes names and declarations from.
    MarkupPiece colon;          // :
    MarkupPiece xmlns;          // xmlns
    MarkupPiece equalsQuote;    // ="
};

// The strings, made on first use.
const Markup& markup();

}  // namespace lumxml
