// LibraryText.h - the image library's messages as one line of ours.
#pragma once

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <string>

namespace korvane {

inline std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

// OpenImageIO keeps its last error per thread; take it, one line.
inline std::string lastOiioError(const std::string& fallback)
{
    const std::string text = OIIO::geterror();
    return oneLine(text.empty() ? fallback : text);
}

} // namespace korvane
