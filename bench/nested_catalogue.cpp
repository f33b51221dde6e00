#include "nested_catalogue.h"

#include <cstdint>
#include <random>

namespace bench {

namespace {

const char* const kWords[] = {"Résumé", "naïve", "Ωmega", "日本語", "Straße", "données",
                              "κόσμε", "fiancée", "ünder", "plain", "text", "Ελληνικά",
                              "mañana", "coöperate", "déjà", "vu"};

std::string phrase(std::mt19937& random, int words) {
    std::string text;
    for (int i = 0; i < words; ++i) {
        if (i > 0) text += ' ';
        text += kWords[random() % (sizeof kWords / sizeof kWords[0])];
    }
    if (random() % 5 == 0) text += " &amp; more";
    return text;
}

void section(std::string& out, std::mt19937& random, int level, int maxLevel) {
    std::string indent(static_cast<size_t>(level) * 2 + 2, ' ');
    out += indent + "<section level=\"" + std::to_string(level) + "\" cat:kind=\"" +
           (level % 2 ? "body" : "note") + "\">\n";
    out += indent + "  <heading lang=\"fr\">" + phrase(random, 3) + "</heading>\n";
    int paragraphs = 1 + static_cast<int>(random() % 3);
    for (int p = 0; p < paragraphs; ++p)
        out += indent + "  <para n=\"" + std::to_string(p) + "\">" + phrase(random, 8) +
               " <em>" + phrase(random, 1) + "</em> " + phrase(random, 4) + "</para>\n";
    if (level < maxLevel) {
        int children = level < 3 ? 1 + static_cast<int>(random() % 2) : 1;
        for (int c = 0; c < children; ++c) section(out, random, level + 1, maxLevel);
    }
    out += indent + "</section>\n";
}

}  // namespace

std::string nestedCatalogue(size_t bytes) {
    std::mt19937 random(20261123);
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<catalogue xmlns=\"urn:example:catalogue\" xmlns:cat=\"urn:example:kinds\" "
        "version=\"2\">\n";
    for (uint64_t record = 1; out.size() < bytes; ++record) {
        out += " <record id=\"r" + std::to_string(record) + "\" cat:status=\"" +
               (record % 3 ? "active" : "retired") + "\" price=\"" +
               std::to_string(record % 997) + ".50\">\n";
        out += "  <title>" + phrase(random, 5) + "</title>\n";
        out += "  <!-- record " + std::to_string(record) + " -->\n";
        section(out, random, 1, 1 + static_cast<int>(random() % 7));
        out += " </record>\n";
    }
    return out + "</catalogue>\n";
}

}  // namespace bench
