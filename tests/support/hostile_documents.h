// Documents that attack a parser, shared by the hostile-input tests.
#pragma once

#include <cstddef>
#include <string>

namespace lumtest {

// Ten levels of entities, each referring ten times to the one below:
// 10^9 expansions of "ha" unless a limit stops them.
inline std::string billionLaughs() {
    std::string text = "<!DOCTYPE l [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 10; ++i) {
        text += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) text += "&a" + std::to_string(i - 1) + ";";
        text += "\">";
    }
    return text + "]><l>&a9;</l>";
}

// `depth` nested elements e around the text x.
inline std::string nestedElements(size_t depth) {
    std::string text;
    text.reserve(depth * 7 + 8);
    for (size_t i = 0; i < depth; ++i) text += "<e>";
    text += "x";
    for (size_t i = 0; i < depth; ++i) text += "</e>";
    return text;
}

}  // namespace lumtest
