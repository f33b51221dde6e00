#include "documents.h"

namespace bench {

std::string catalogue(size_t bytes) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<catalogue xmlns=\"urn:example:catalogue\" xmlns:p=\"urn:example:price\">\n";
    size_t i = 0;
    while (out.size() < bytes) {
        std::string n = std::to_string(i++);
        out += "  <book id=\"b" + n + "\" lang=\"en\" p:currency=\"EUR\">\n"
               "    <title>Title number " + n + " &amp; friends</title>\n"
               "    <author>Author " + n + "</author>\n"
               "    <!-- note " + n + " -->\n"
               "    <p:price>" + std::to_string(i % 97) + ".50</p:price>\n"
               "    <summary>Some text with &lt;markup&gt; and caf\xC3\xA9 and plain words "
               "repeated to make the record longer than a line.</summary>\n"
               "  </book>\n";
    }
    out += "</catalogue>\n";
    return out;
}

namespace {

// One generated document, kept for the size it was last made for.
struct Cached {
    std::string text;
    int64_t megabytes = -1;
};

const std::string& cachedOf(Cached& cached, int64_t megabytes,
                            std::string (*make)(size_t bytes)) {
    if (cached.megabytes != megabytes) {
        cached.text = make(static_cast<size_t>(megabytes) << 20);
        cached.megabytes = megabytes;
    }
    return cached.text;
}

}  // namespace

const std::string& cachedCatalogue(int64_t megabytes) {
    static Cached cached;
    return cachedOf(cached, megabytes, catalogue);
}

namespace {

// A small deterministic generator (the same document on every run).
class Draw {
public:
    uint32_t next() {
        seed_ = seed_ * 1103515245u + 12345u;
        return (seed_ >> 16) & 0x7fff;
    }
    uint32_t below(uint32_t count) { return next() % count; }
    template <size_t N>
    const char* pick(const char* const (&items)[N]) {
        return items[below(static_cast<uint32_t>(N))];
    }

private:
    uint32_t seed_ = 20240611u;
};

const char* const kPhrases[] = {
    "caf\xC3\xA9 cr\xC3\xA8me and cr\xC3\xAApes",
    "Stra\xC3\x9F" "e \xC3\xBC" "ber die Fl\xC3\xBCsse",
    "\xCE\x95\xCE\xBB\xCE\xBB\xCE\xB7\xCE\xBD\xCE\xB9\xCE\xBA\xCE\xAC \xCE\xBA\xCE\xB5\xCE\xAF"
    "\xCE\xBC\xCE\xB5\xCE\xBD\xCE\xB1",
    "\xD1\x80\xD1\x83\xD1\x81\xD1\x81\xD0\xBA\xD0\xB8\xD0\xB9 \xD1\x82\xD0\xB5\xD0\xBA\xD1\x81"
    "\xD1\x82",
    "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE3\x83\x86\xE3\x82\xAD\xE3\x82\xB9\xE3"
    "\x83\x88",
    "\xE4\xB8\xAD\xE6\x96\x87\xE6\x96\x87\xE6\x9C\xAC",
    "\xD7\xA2\xD7\x91\xD7\xA8\xD7\x99\xD7\xAA",
    "music \xF0\x9D\x84\x9E and \xF0\x9F\x8E\xB5 notes",
    "plain words about the subject at hand",
    "more plain words, numbers 12 345 and 6.78",
};
const char* const kKinds[] = {"chapter", "part", "note", "appendix", "summary"};
const char* const kStatus[] = {"draft", "final", "review"};
const char* const kLanguages[] = {"en", "de", "fr", "el", "ru", "ja", "zh", "he"};

void indent(std::string& out, int level) { out.append(static_cast<size_t>(2 * level), ' '); }

// A paragraph of mixed content: text, inline elements, references.
void paragraph(std::string& out, Draw& draw, const std::string& where, int level) {
    indent(out, level);
    out += "<para class=\"body\" meta:words=\"" + std::to_string(20 + draw.below(200)) + "\">";
    out += draw.pick(kPhrases);
    out += " with <em>emphasis</em>, a <ref target=\"#" + where + "\" cat:type=\"see\">";
    out += draw.pick(kPhrases);
    out += "</ref> &amp; ";
    out += draw.pick(kPhrases);
    out += ", &lt;escaped&gt; \"quoted\" text and ";
    out += draw.pick(kPhrases);
    out += ".</para>\n";
}

// A section with a heading, paragraphs and sections below it down to
// `depth` (level 1 is the outermost).
void section(std::string& out, Draw& draw, const std::string& where, int level, int depth) {
    indent(out, level + 1);
    out += "<section n=\"" + where + "\" level=\"" + std::to_string(level) + "\" kind=\"" +
           draw.pick(kKinds) + "\" meta:status=\"" + draw.pick(kStatus) + "\">\n";
    indent(out, level + 2);
    out += "<heading xml:lang=\"";
    out += draw.pick(kLanguages);
    out += "\">Section " + where + ": ";
    out += draw.pick(kPhrases);
    out += "</heading>\n";
    for (uint32_t p = 1 + draw.below(2); p > 0; --p) paragraph(out, draw, where, level + 2);
    if (level < depth) {
        const uint32_t children = 1 + draw.below(2);
        for (uint32_t c = 1; c <= children; ++c)
            section(out, draw, where + "." + std::to_string(c), level + 1, depth);
    }
    indent(out, level + 1);
    out += "</section>\n";
}

}  // namespace

std::string nestedCatalogue(size_t bytes) {
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<cat:catalogue xmlns:cat=\"urn:example:catalogue\" xmlns=\"urn:example:text\" "
        "xmlns:meta=\"urn:example:meta\" xml:lang=\"en\">\n";
    out.reserve(bytes + 65536);
    Draw draw;
    size_t i = 0;
    while (out.size() < bytes) {
        const std::string id = "r" + std::to_string(i++);
        out += "  <cat:record id=\"" + id + "\" meta:created=\"2024-0" +
               std::to_string(1 + draw.below(9)) + "-1" + std::to_string(draw.below(10)) +
               "\" status=\"" + draw.pick(kStatus) + "\" cat:rev=\"" +
               std::to_string(draw.below(40)) + "\">\n";
        out += "    <title>";
        out += draw.pick(kPhrases);
        out += " &amp; ";
        out += draw.pick(kPhrases);
        out += "</title>\n";
        // Records cycle through every depth from 1 to 7.
        const int depth = 1 + static_cast<int>(i % 7);
        for (uint32_t s = 1 + draw.below(2); s > 0; --s)
            section(out, draw, id + "." + std::to_string(s), 1, depth);
        out += "    <!-- end of " + id + " -->\n  </cat:record>\n";
    }
    out += "</cat:catalogue>\n";
    return out;
}

const std::string& cachedNestedCatalogue(int64_t megabytes) {
    static Cached cached;
    return cachedOf(cached, megabytes, nestedCatalogue);
}

std::string referenceDense(size_t bytes, int words) {
    static const char* const kWords[] = {"the",   "quick", "brown",  "fox",    "jumps",
                                         "over",  "lazy",  "dog",    "while",  "seven",
                                         "tired", "owls",  "watch",  "nearby", "rivers"};
    static const char* const kReferences[] = {"&amp;", "&lt;", "&#233;", "&#x20AC;", "&gt;",
                                              "&quot;", "&#169;"};
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<book>\n";
    uint32_t seed = 12345;
    auto next = [&seed] {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 16) & 0x7fff;
    };
    while (out.size() < bytes) {
        out += "<p>";
        for (int word = 0; word < words; ++word) {
            if (word > 0) out += ' ';
            if (next() % 100 < 8)
                out += kReferences[next() % (sizeof kReferences / sizeof *kReferences)];
            else
                out += kWords[next() % (sizeof kWords / sizeof *kWords)];
        }
        out += "</p>\n";
    }
    out += "</book>\n";
    return out;
}

const std::string& cachedReferenceDense(int64_t megabytes) {
    static Cached cached;
    return cachedOf(cached, megabytes, [](size_t bytes) { return referenceDense(bytes); });
}

std::string wide(int64_t children) {
    std::string xml = "<root>";
    xml.reserve(static_cast<size_t>(children) * 12 + 16);
    for (int64_t i = 0; i < children; ++i) xml += i % 2 == 0 ? "<item/>" : "value";
    xml += "</root>";
    return xml;
}

}  // namespace bench
