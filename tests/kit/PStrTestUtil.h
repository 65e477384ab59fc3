// Small helpers shared by the string tests: Pascal strings to and from
// std::string.
#ifndef KIT_TESTS_PSTR_TEST_UTIL_H
#define KIT_TESTS_PSTR_TEST_UTIL_H

#include <string.h>

#include <string>

#include "KVPluginAPI.h"

namespace kittest {

inline std::string Str(const unsigned char* p)
{
    return std::string(reinterpret_cast<const char*>(p) + 1, p[0]);
}

// A Pascal string in a 256-byte buffer; text longer than 255 is cut.
struct PBuf {
    PStr255 s;
    explicit PBuf(const std::string& text = std::string())
    {
        memset(s, 0xEE, sizeof s);  // a visible pattern past the text
        const size_t n = text.size() > 255 ? 255 : text.size();
        s[0] = static_cast<unsigned char>(n);
        memcpy(s + 1, text.data(), n);
    }
    std::string str() const { return Str(s); }
};

}  // namespace kittest

#endif
