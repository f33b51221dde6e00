#include "writer/markup.h"

#include <cstring>

namespace lumxml {

namespace {

// The texts are ASCII: each byte is its own UTF-16 unit. The units are
// never freed (the process keeps them).
MarkupPiece make(const char* ascii) {
    XMLSize_t length = std::strlen(ascii);
    XMLCh* units = new XMLCh[length + 1];
    for (XMLSize_t i = 0; i <= length; ++i) units[i] = static_cast<XMLCh>(ascii[i]);
    return MarkupPiece{units, length, ascii};
}

Markup* build() {
    Markup* m = new Markup;
    m->open = make("<");
    m->openEnd = make("</");
    m->close = make(">");
    m->closeEmpty = make("/>");
    m->piOpen = make("<?");
    m->piClose = make("?>");
    m->xml = make("xml");
    m->version = make("version=\"");
    m->encoding = make("encoding=\"");
    m->standalone = make("standalone=\"");
    m->quote = make("\"");
    m->lineFeed = make("\n");
    m->indentStep = make("  ");
    m->blank = make(" ");
    m->commentOpen = make("<!-- ");
    m->commentClose = make(" -->");
    m->ampersand = make("&");
    m->semicolon = make(";");
    m->doctype = make("<!DOCTYPE ");
    m->system = make(" SYSTEM ");
    m->publicId = make(" PUBLIC ");
    m->cdataOpen = make("<![CDATA[");
    m->cdataClose = make("]]>");
    m->yes = make("yes");
    m->no = make("no");
    m->colon = make(":");
    m->xmlns = make("xmlns");
    m->equalsQuote = make("=\"");
    return m;
}

}  // namespace

const Markup& markup() {
    // A function-local static is made once even when writers start on
    // several threads, and costs only a test of its guard afterwards (every
    // piece of markup written asks for it).
    static const Markup* const made = build();
    return *made;
}

}  // namespace lumxml
