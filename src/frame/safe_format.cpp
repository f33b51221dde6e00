#include "frame/safe_format.h"

#include <cstring>

namespace lumxml {

namespace {

// Length of the conversion starting at format[0] == '%' that we implement,
// with `kind` set to 's' or 'd'; 0 when it is not one of ours.
size_t recogniseConversion(const char* format, char& kind) {
    if (format[1] == 's' || format[1] == 'd') {
        kind = format[1];
        return 2;
    }
    if (format[1] == 'l' && format[2] == 'd') {
        kind = 'd';
        return 3;
    }
    return 0;
}

}  // namespace

void safeFormat(std::string& out, const char* format, FormatArgs args) {
    if (format == nullptr) return;
    const FormatArg* next = args.begin();
    const char* p = format;
    while (*p != '\0') {
        const char* percent = std::strchr(p, '%');
        if (percent == nullptr) {
            out.append(p);
            return;
        }
        out.append(p, static_cast<size_t>(percent - p));
        if (percent[1] == '%') {
            out.push_back('%');
            p = percent + 2;
            continue;
        }
        char kind = 0;
        size_t length = recogniseConversion(percent, kind);
        bool fits = length != 0 && next != args.end() && next->isText() == (kind == 's');
        if (!fits) {
            // Unknown conversion, or no argument of its kind left: copied literally.
            out.push_back('%');
            p = percent + 1;
            continue;
        }
        if (kind == 's')
            out.append(next->text());
        else
            out.append(std::to_string(next->number()));
        ++next;
        p = percent + length;
    }
}

}  // namespace lumxml
