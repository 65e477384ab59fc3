// Spelling.cpp - the words spelt two ways, and swapping one spelling for the other.

#include "korvane/Spelling.h"

#include <array>

namespace korvane {
namespace {

struct SpellingAlias {
    std::string_view accepted;  // read
    std::string_view chosen;    // read and written
};

// Lower-case and capitalised forms of each word.
constexpr std::array kAliases = {
    SpellingAlias{"colour", "color"},
    SpellingAlias{"Colour", "Color"},
    SpellingAlias{"gray", "grey"},
    SpellingAlias{"Gray", "Grey"},
};

// The text with one spelling of every word swapped for the other, left to right.
std::string replaced(std::string_view text, bool toChosen)
{
    std::string out;
    out.reserve(text.size() + 8);
    std::size_t at = 0;
    while (at < text.size()) {
        bool swapped = false;
        for (const SpellingAlias& alias : kAliases) {
            const std::string_view from = toChosen ? alias.accepted : alias.chosen;
            const std::string_view to = toChosen ? alias.chosen : alias.accepted;
            if (text.substr(at).starts_with(from)) {
                out += to;
                at += from.size();
                swapped = true;
                break;
            }
        }
        if (!swapped)
            out += text[at++];
    }
    return out;
}

} // namespace

std::string canonicalSpelling(std::string_view text)
{
    return replaced(text, true);
}

std::string acceptedSpelling(std::string_view text)
{
    return replaced(text, false);
}

} // namespace korvane
