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

// Parameter entities whose replacement texts name the level below ten
// times (through "&#37;", a percent sign once declared), `levels` deep, the
// last one referenced once in the internal subset: 10^levels expansions of
// `leaf`.
inline std::string parameterEntityBomb(int levels, const std::string& leaf) {
    std::string text = "<!DOCTYPE r [<!ENTITY % p0 \"" + leaf + "\">";
    for (int i = 1; i <= levels; ++i) {
        text += "<!ENTITY % p" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) text += "&#37;p" + std::to_string(i - 1) + ";";
        text += "\">";
    }
    return text + "%p" + std::to_string(levels) + ";]><r/>";
}

// `uses` references in content to one entity of `size` characters.
inline std::string quadraticBlowup(size_t size, size_t uses) {
    std::string text = "<!DOCTYPE r [<!ENTITY e \"" + std::string(size, 'x') + "\">]><r>";
    for (size_t i = 0; i < uses; ++i) text += "&e;";
    return text + "</r>";
}

// Entities nested `levels` deep, ten references a level, over a leaf of
// `leaf` characters, expanded into an attribute value.
inline std::string attributeBlowup(int levels, size_t leaf) {
    std::string text = "<!DOCTYPE r [<!ENTITY a0 \"" + std::string(leaf, 'x') + "\">";
    for (int i = 1; i <= levels; ++i) {
        text += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) text += "&a" + std::to_string(i - 1) + ";";
        text += "\">";
    }
    return text + "]><r a=\"&a" + std::to_string(levels) + ";\"/>";
}

// `depth` nested elements e in a default namespace.
inline std::string nestedNamespacedElements(size_t depth) {
    return "<e xmlns=\"urn:x\">" + nestedElements(depth - 1) + "</e>";
}

// One element r with `count` attributes of distinct names.
inline std::string wideElement(int count) {
    std::string text = "<r";
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "='v'";
    return text + "/>";
}

// An element type r declaring `count` attributes with defaults.
inline std::string declaredAttributes(int count) {
    std::string text = "<!DOCTYPE r [<!ATTLIST r";
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + " CDATA 'v'";
    return text + ">]><r/>";
}

// `count` empty siblings of distinct names a0, a1, ... in r.
inline std::string distinctElementNames(int count) {
    std::string text = "<r>";
    for (int i = 0; i < count; ++i) text += "<a" + std::to_string(i) + "/>";
    return text + "</r>";
}

}  // namespace lumtest
