// Styles.h - the flare styles of a Glintwave.rsc: the 'FLAR' resources 1001
// and up, style N being 'FLAR' 1000 + N, named by the resource's name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace glintwave::cli {

struct Style {
    std::int32_t number = 0;
    std::string name;  // UTF-8
    bool operator==(const Style&) const = default;
};

// The styles in number order. Throws korvane::Error.
std::vector<Style> readStyles(const std::filesystem::path& resourceFile);

// "Classic zoom" -> "classic-zoom": lower case, runs of other characters one '-'.
std::string styleSlug(std::string_view name);

// The style given by number ("3") or by name, either as written or as its
// slug, in any case ("Sun glint", "sun-glint"). Null when none matches.
const Style* findStyle(const std::vector<Style>& styles, std::string_view numberOrName);

// The style given with --style; a UsageError listing the choices when none
// matches.
const Style& requireStyle(const std::vector<Style>& styles, const std::string& numberOrName);

// "1 classic-zoom, 2 sun-glint, ...", for messages.
std::string styleChoices(const std::vector<Style>& styles);

} // namespace glintwave::cli
