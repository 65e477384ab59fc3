// RscCompiler.cpp - compiling sources into a resource file and dumping files
// back to sources.

#include "RscCompiler.h"

#include "SourceModel.h"

#include "glintwave/GlintwaveRecords.h"
#include "korvane/MacRoman.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace korvane::rsc {
namespace {

template <typename T>
struct Located {
    T item;
    std::string file;
};

// Everything the sources hold, each piece with the file it came from.
struct Collection {
    std::vector<Located<Style>> styles;
    std::vector<Located<Dialog>> dialogs;
    std::vector<Located<RawResource>> raws;
};

[[noreturn]] void failIn(const std::string& file, const std::string& message)
{
    throw CompileError(file + ": " + message);
}

const Json& arrayField(const Json& bundle, const char* key)
{
    const Json& value = bundle.at(key);
    if (!value.is_array())
        throw CompileError(std::string("\"") + key + "\" must be an array");
    return value;
}

// Reads one source into `into`; messages are prefixed with the file name.
void parseSource(const SourceText& source, Collection& into)
{
    Json document;
    try {
        document = Json::parse(source.text);
    } catch (const Json::exception& e) {
        // Not only syntax: a number too large for any type fails here too.
        failIn(source.fileName, std::string("not valid JSON: ") + e.what());
    }
    try {
        if (!document.is_object())
            throw CompileError("a source must be a JSON object");
        if (document.contains("style")) {
            into.styles.push_back({styleFromJson(document), source.fileName});
        } else if (document.contains("dialog")) {
            into.dialogs.push_back({dialogFromJson(document), source.fileName});
        } else {
            for (auto it = document.begin(); it != document.end(); ++it) {
                if (it.key() != "styles" && it.key() != "dialogs" && it.key() != "resources")
                    throw CompileError("unknown field \"" + it.key() +
                                       "\" (a source holds \"style\", \"dialog\", or the bundle fields \"styles\", "
                                       "\"dialogs\" and \"resources\")");
            }
            if (document.contains("styles")) {
                for (const Json& s : arrayField(document, "styles"))
                    into.styles.push_back({styleFromJson(s), source.fileName});
            }
            if (document.contains("dialogs")) {
                for (const Json& d : arrayField(document, "dialogs"))
                    into.dialogs.push_back({dialogFromJson(d), source.fileName});
            }
            if (document.contains("resources")) {
                for (const Json& r : arrayField(document, "resources"))
                    into.raws.push_back({rawFromJson(r), source.fileName});
            }
        }
    } catch (const CompileError& e) {
        failIn(source.fileName, e.what());
    } catch (const Json::exception& e) {
        failIn(source.fileName, e.what());
    }
}

// Styles must be numbered 1, 2, 3 ... once each, and no element id may serve
// two elements.
void checkStyles(std::vector<Located<Style>>& styles)
{
    std::stable_sort(styles.begin(), styles.end(),
                     [](const auto& a, const auto& b) { return a.item.number < b.item.number; });
    for (std::size_t i = 0; i < styles.size(); ++i) {
        const Located<Style>& s = styles[i];
        const int expected = static_cast<int>(i) + 1;
        if (i > 0 && s.item.number == styles[i - 1].item.number)
            failIn(s.file, styleContext(s.item) + ": style number " + std::to_string(s.item.number) +
                               " is already used by " + styleContext(styles[i - 1].item) + " in " +
                               styles[i - 1].file);
        if (s.item.number != expected)
            failIn(s.file, styleContext(s.item) + ": styles must be numbered 1, 2, 3 ... without gaps; style " +
                               std::to_string(expected) + " is missing");
    }

    struct Owner {
        const Located<Style>* style;
        const Element* element;
    };
    std::map<std::int16_t, Owner> owners;
    for (const Located<Style>& s : styles) {
        for (const Element& e : s.item.elements) {
            const auto [it, fresh] = owners.emplace(e.id, Owner{&s, &e});
            if (!fresh)
                failIn(s.file, styleContext(s.item) + ": " + elementContext(e) + ": id " + std::to_string(e.id) +
                                   " is already used by " + elementContext(*it->second.element) + " of " +
                                   styleContext(it->second.style->item) + " in " + it->second.style->file);
        }
    }
}

void addResource(ResourceFileWriter& writer, const std::string& file, std::uint32_t type, std::int16_t id,
                 std::string name, std::vector<std::uint8_t> data)
{
    try {
        writer.add(type, id, std::move(name), std::move(data));
    } catch (const Error& e) {
        failIn(file, e.what());
    }
}

std::vector<std::uint8_t> compileCollection(Collection collection)
{
    checkStyles(collection.styles);

    ResourceFileWriter writer;
    std::map<std::int16_t, std::string> styleNamesById;  // of every 'FLAR' resource
    for (const Located<Style>& s : collection.styles) {
        for (EncodedResource& r : encodeStyle(s.item)) {
            if (r.type == kFlareResType)
                styleNamesById[r.id] = r.name;
            addResource(writer, s.file, r.type, r.id, std::move(r.name), std::move(r.data));
        }
    }
    for (Located<RawResource>& r : collection.raws) {
        if (r.item.type == kFlareResType)
            styleNamesById[r.item.id] = r.item.name;
        addResource(writer, r.file, r.item.type, r.item.id, std::move(r.item.name), std::move(r.item.data));
    }

    // The style menu lists the styles in number order, as far as they run
    // without a gap.
    std::vector<std::string> styleNames;
    for (int id = kFlareResBaseID + 1; styleNamesById.contains(static_cast<std::int16_t>(id)); ++id)
        styleNames.push_back(styleNamesById[static_cast<std::int16_t>(id)]);

    for (Located<Dialog>& d : collection.dialogs) {
        for (DialogItem& item : d.item.layout.items) {
            if (!item.menuFromStyles)
                continue;
            if (styleNames.empty())
                failIn(d.file, "dialog " + std::to_string(d.item.id) + ": item " + std::to_string(item.id) +
                                   ": the menu lists the styles, but no style is compiled with it");
            item.menu = styleNames;
        }
        std::vector<std::uint8_t> bytes;
        try {
            bytes = encodeDialogTemplate(d.item.layout);
        } catch (const Error& e) {
            failIn(d.file, "dialog " + std::to_string(d.item.id) + ": " + e.what());
        }
        addResource(writer, d.file, kDialogResType, d.item.id, std::string(), std::move(bytes));
    }

    try {
        return writer.bytes();
    } catch (const Error& e) {
        throw CompileError(std::string("the resources do not fit one file: ") + e.what());
    }
}

// ---------------------------------------------------------------------------
// Dumping

// The sources that reproduce a file: styles and dialogs where their readable
// form compiles back to the very same bytes, everything else as hex.
struct Analysis {
    std::vector<Style> styles;
    std::vector<Dialog> dialogs;
    std::vector<RawResource> raws;
};

bool sameName(const ResourceFile& file, std::uint32_t type, std::int16_t id, const std::string& name)
{
    const auto stored = file.name(type, id);
    return name.empty() ? !stored.has_value() : stored == name;
}

// The style as the dumper would print it, if printing and compiling that
// text gives exactly the stored resources.
std::optional<Style> readableStyle(const ResourceFile& file, int number)
{
    try {
        const Style decoded = decodeStyle(file, number);
        const Style reread = styleFromJson(Json::parse(printJson(styleToJson(decoded))));
        for (const EncodedResource& r : encodeStyle(reread)) {
            if (file.get(r.type, r.id) != r.data || !sameName(file, r.type, r.id, r.name))
                return std::nullopt;
        }
        return decoded;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<Dialog> readableDialog(const ResourceFile& file, std::int16_t id,
                                     const std::vector<std::string>& styleNames)
{
    try {
        const auto bytes = file.get(kDialogResType, id);
        if (!bytes || file.name(kDialogResType, id))
            return std::nullopt;
        const Dialog decoded{id, decodeDialogTemplate(*bytes)};
        Dialog reread = dialogFromJson(Json::parse(printJson(dialogToJson(decoded))));
        for (DialogItem& item : reread.layout.items) {
            if (item.menuFromStyles)
                item.menu = styleNames;
        }
        if (encodeDialogTemplate(reread.layout) != *bytes)
            return std::nullopt;
        return decoded;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

Analysis analyse(const ResourceFile& file)
{
    Analysis result;
    std::set<std::pair<std::uint32_t, std::int16_t>> claimed;

    std::vector<std::string> styleNames;
    for (int id = kFlareResBaseID + 1; id <= 0x7FFF && file.get(kFlareResType, static_cast<std::int16_t>(id)); ++id)
        styleNames.push_back(file.name(kFlareResType, static_cast<std::int16_t>(id)).value_or(std::string()));

    // Styles are readable from 1 up to the first that is not: the compiler
    // accepts style sources only as a run without gaps, and element ids only
    // once across all styles.
    std::set<std::int16_t> elementIds;
    for (int number = 1; number <= static_cast<int>(styleNames.size()); ++number) {
        std::optional<Style> style = readableStyle(file, number);
        if (!style)
            break;
        const bool shared = std::any_of(style->elements.begin(), style->elements.end(),
                                        [&](const Element& e) { return elementIds.contains(e.id); });
        if (shared)
            break;
        claimed.insert({kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + number)});
        for (const Element& e : style->elements) {
            elementIds.insert(e.id);
            claimed.insert({isStreak(e) ? kStreakResType : kRingResType, e.id});
        }
        result.styles.push_back(std::move(*style));
    }

    for (const std::int16_t id : file.ids(kDialogResType)) {
        if (std::optional<Dialog> dialog = readableDialog(file, id, styleNames)) {
            claimed.insert({kDialogResType, id});
            result.dialogs.push_back(std::move(*dialog));
        }
    }

    for (const std::uint32_t type : file.types()) {
        for (const std::int16_t id : file.ids(type)) {
            if (claimed.contains({type, id}))
                continue;
            RawResource raw;
            raw.type = type;
            raw.id = id;
            raw.name = file.name(type, id).value_or(std::string());
            raw.data = *file.get(type, id);
            result.raws.push_back(std::move(raw));
        }
    }
    return result;
}

std::string styleFileName(const Style& style)
{
    std::string slug;
    for (const char c : macRomanToUtf8(style.name)) {
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            slug += c;
        else if (c >= 'A' && c <= 'Z')
            slug += static_cast<char>(c - 'A' + 'a');
        else if (!slug.empty() && slug.back() != '-')
            slug += '-';
    }
    while (!slug.empty() && slug.back() == '-')
        slug.pop_back();
    char number[16];
    std::snprintf(number, sizeof number, "%02d", style.number);
    return std::string(number) + (slug.empty() ? "" : "-" + slug) + ".json";
}

Json rawBundle(const std::vector<RawResource>& raws)
{
    Json list = Json::array();
    for (const RawResource& raw : raws)
        list.push_back(rawToJson(raw));
    Json bundle;
    bundle["resources"] = std::move(list);
    return bundle;
}

// A bundle document; empty sections are left out.
Json bundleJson(const Analysis& parts)
{
    Json document = Json::object();
    if (!parts.styles.empty()) {
        Json list = Json::array();
        for (const Style& s : parts.styles)
            list.push_back(styleToJson(s));
        document["styles"] = std::move(list);
    }
    if (!parts.dialogs.empty()) {
        Json list = Json::array();
        for (const Dialog& d : parts.dialogs)
            list.push_back(dialogToJson(d));
        document["dialogs"] = std::move(list);
    }
    if (!parts.raws.empty())
        document["resources"] = rawBundle(parts.raws)["resources"];
    return document;
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw CompileError(path.string() + ": cannot open");
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad())
        throw CompileError(path.string() + ": read error");
    return text.str();
}

} // namespace

std::vector<std::uint8_t> compileSources(const std::vector<SourceText>& sources)
{
    Collection collection;
    for (const SourceText& source : sources)
        parseSource(source, collection);
    return compileCollection(std::move(collection));
}

std::vector<std::uint8_t> compileFiles(const std::vector<std::filesystem::path>& paths)
{
    std::vector<SourceText> sources;
    for (const auto& path : paths)
        sources.push_back({path.string(), readFile(path)});
    return compileSources(sources);
}

std::string canonicalText(const SourceText& source)
{
    Collection collection;
    parseSource(source, collection);
    // A single style or dialog prints as itself; anything else as a bundle.
    const std::size_t pieces = collection.styles.size() + collection.dialogs.size() + collection.raws.size();
    if (pieces == 1 && collection.styles.size() == 1)
        return printJson(styleToJson(collection.styles.front().item));
    if (pieces == 1 && collection.dialogs.size() == 1)
        return printJson(dialogToJson(collection.dialogs.front().item));
    Analysis parts;
    for (auto& s : collection.styles)
        parts.styles.push_back(std::move(s.item));
    for (auto& d : collection.dialogs)
        parts.dialogs.push_back(std::move(d.item));
    for (auto& r : collection.raws)
        parts.raws.push_back(std::move(r.item));
    return printJson(bundleJson(parts));
}

std::string dumpText(const ResourceFile& file)
{
    return printJson(bundleJson(analyse(file)));
}

std::vector<DumpedSource> dumpSources(const ResourceFile& file)
{
    const Analysis parts = analyse(file);
    std::vector<DumpedSource> result;
    for (const Style& s : parts.styles)
        result.push_back({styleFileName(s), printJson(styleToJson(s))});
    for (const Dialog& d : parts.dialogs)
        result.push_back({"dialog-" + std::to_string(d.id) + ".json", printJson(dialogToJson(d))});
    if (!parts.raws.empty())
        result.push_back({"resources.json", printJson(rawBundle(parts.raws))});
    return result;
}

} // namespace korvane::rsc
