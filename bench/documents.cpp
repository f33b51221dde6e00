#include "documents.h"

#include "lumxml.h"

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

const std::string& cachedCatalogue(int64_t megabytes) {
    static std::string cached;
    static int64_t cachedSize = -1;
    if (cachedSize != megabytes) {
        cached = catalogue(static_cast<size_t>(megabytes) << 20);
        cachedSize = megabytes;
    }
    return cached;
}

void startLibrary() {
    static bool started = [] {
        char error[257] = {0};
        int32_t code = 0;
        lumInitParser("UTF-8", error, &code);
        return true;
    }();
    (void)started;
}

std::string nested(size_t depth) {
    std::string out;
    out.reserve(depth * 8 + 16);
    for (size_t i = 0; i < depth; ++i) out += "<e>";
    out += "x";
    for (size_t i = 0; i < depth; ++i) out += "</e>";
    return out;
}

}  // namespace bench
