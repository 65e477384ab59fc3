// ProjectJson.h - JSON text with the place of every field, so that a
// refused project can name the line it stumbled on.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace korvane {

struct LocatedJson {
    nlohmann::json document;
    // Byte offset just past each field's key or value, by field name as
    // messages write it: "scene.width", "scene.light.x[0]",
    // "channels[\"Halo/Color\"].keys".
    std::map<std::string, std::size_t> offsets;
};

// Parses text; a syntax error throws Error "<source>:<line>: <reason>".
LocatedJson parseLocated(std::string_view text, const std::string& sourceName);

// A child's name in messages: "scene" + "width" -> "scene.width"; keys that
// are not plain words are quoted: channels["Halo/Color"].
std::string fieldName(const std::string& parent, const std::string& key);
std::string elementName(const std::string& parent, std::size_t index);

// 1-based line of a byte offset.
std::size_t lineAt(std::string_view text, std::size_t offset);

} // namespace korvane
