#include "dom/load/back_slash_path.h"

#include <cstring>

namespace lumxml {

bool isNetworkPath(const char* name) {
    return name != nullptr && name[0] == '/' && name[1] == '/';
}

void toBackslashPath(char* out, const char* in) {
    size_t i = 0;
    for (; in[i] != '\0'; ++i) out[i] = in[i] == '/' ? '\\' : in[i];
    out[i] = '\0';
}

std::string toBackslashPath(const char* in) {
    std::string out(std::strlen(in), '\0');
    toBackslashPath(out.data(), in);
    return out;
}

std::string pathForXerces(const char* name) {
    if (name == nullptr) return std::string();
    return isNetworkPath(name) ? toBackslashPath(name) : std::string(name);
}

}  // namespace lumxml
