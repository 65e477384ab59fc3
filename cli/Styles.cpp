// Styles.cpp - style numbers and names from the flare table's resources.

#include "Styles.h"

#include "CommandLine.h"

#include "korvane/MacRoman.h"
#include "korvane/ResourceFile.h"

#include <cctype>

namespace glintwave::cli {
namespace {

constexpr std::uint32_t kFlareTableType = 0x464C4152;  // 'FLAR'
constexpr std::int32_t kStyleIdBase = 1000;

} // namespace

std::vector<Style> readStyles(const std::filesystem::path& resourceFile)
{
    const korvane::ResourceFile file = korvane::ResourceFile::load(resourceFile);
    std::vector<Style> styles;
    for (const std::int16_t id : file.ids(kFlareTableType)) {
        if (id <= kStyleIdBase)
            continue;
        styles.push_back(Style{id - kStyleIdBase,
                               korvane::macRomanToUtf8(file.name(kFlareTableType, id).value_or(""))});
    }
    return styles;
}

std::string styleSlug(std::string_view name)
{
    std::string slug;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) || byte >= 0x80)
            slug += static_cast<char>(std::tolower(byte));
        else if (!slug.empty() && slug.back() != '-')
            slug += '-';
    }
    while (!slug.empty() && slug.back() == '-')
        slug.pop_back();
    return slug;
}

const Style* findStyle(const std::vector<Style>& styles, std::string_view numberOrName)
{
    const std::string wanted = styleSlug(numberOrName);
    for (const Style& style : styles) {
        if (std::to_string(style.number) == numberOrName || (!wanted.empty() && styleSlug(style.name) == wanted))
            return &style;
    }
    return nullptr;
}

std::string styleChoices(const std::vector<Style>& styles)
{
    std::string text;
    for (const Style& style : styles) {
        if (!text.empty())
            text += ", ";
        text += std::to_string(style.number) + " " + styleSlug(style.name);
    }
    return text;
}

const Style& requireStyle(const std::vector<Style>& styles, const std::string& numberOrName)
{
    if (const Style* style = findStyle(styles, numberOrName))
        return *style;
    throw UsageError("--style " + numberOrName + ": no such style; choose one of " + styleChoices(styles));
}

} // namespace glintwave::cli
