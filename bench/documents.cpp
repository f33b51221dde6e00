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
