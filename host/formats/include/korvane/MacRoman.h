// MacRoman.h - texts of resource files (Mac OS Roman) and UTF-8.
//
// Names and labels inside resource files and plug-in records are Mac OS Roman;
// the host and the text sources are UTF-8. The 256 Mac OS Roman bytes map to
// 256 distinct code points, so a text converted one way converts back unchanged.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// Every byte has a code point: the conversion cannot fail.
std::string macRomanToUtf8(std::string_view macRoman);

// nullopt when the text is not valid UTF-8 or holds a character that Mac OS
// Roman cannot represent; `badCharacter` then receives the offending
// character (or the invalid bytes) as written, for messages.
std::optional<std::string> utf8ToMacRoman(std::string_view utf8, std::string* badCharacter = nullptr);

} // namespace korvane
