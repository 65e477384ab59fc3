// DialogSource.cpp - dialogs and other resources: JSON source <-> model.

#include "SourceModel.h"

#include "korvane/MacRoman.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <span>
#include <utility>

namespace korvane::rsc {
namespace {

constexpr std::int64_t kS16Min = std::numeric_limits<std::int16_t>::min();
constexpr std::int64_t kS16Max = std::numeric_limits<std::int16_t>::max();

// Names of KV_ControlType 1..16, in order.
constexpr std::array<const char*, 16> kKindNames = {
    "push button", "check box",   "radio group", "divider line", "group box", "tab group",
    "color slider", "scroller",   "static text", "edit text",    "color button", "list box",
    "popup menu",  "picture",     "user control", "opengl control"};
// Names of KV_EditFilterType 1..5.
constexpr std::array<const char*, 5> kFilterNames = {"unsigned integer", "signed integer", "unsigned real",
                                                      "signed real", "custom"};
// Names of DialogIcon 1..4.
constexpr std::array<const char*, 4> kIconNames = {"stop", "warning", "message", "caution"};

constexpr std::uint16_t kPushButton = 1;
constexpr std::uint16_t kEditText = 10;
constexpr std::uint16_t kListBox = 12;
constexpr std::uint16_t kPopupMenu = 13;

template <std::size_t N>
int indexOf(const std::array<const char*, N>& names, const std::string& name)
{
    for (std::size_t i = 0; i < N; ++i) {
        if (name == names[i])
            return static_cast<int>(i);
    }
    return -1;
}

template <std::size_t N>
std::string listOf(const std::array<const char*, N>& names)
{
    std::string text;
    for (std::size_t i = 0; i < N; ++i)
        text += (i ? ", " : "") + std::string(names[i]);
    return text;
}

std::vector<std::int64_t> integerArray(ObjectReader& r, const char* key, std::size_t size, std::int64_t min,
                                       std::int64_t max)
{
    const Json& value = r.required(key);
    if (!value.is_array() || value.size() != size)
        r.fail(std::string("\"") + key + "\" must be an array of " + std::to_string(size) + " integers");
    std::vector<std::int64_t> result;
    for (const Json& v : value)
        result.push_back(integerValue(v, min, max, r.context(), std::string("\"") + key + "\" value"));
    return result;
}

DialogItem itemFromJson(const Json& value, std::size_t index, const std::string& dialogCtx, std::int16_t width,
                        std::int16_t height)
{
    ObjectReader r(value, dialogCtx + ": item #" + std::to_string(index + 1));
    DialogItem item;
    item.id = static_cast<std::int16_t>(r.integer("id", kS16Min, kS16Max));
    r.setContext(dialogCtx + ": item " + std::to_string(item.id));
    const std::string kind = r.string("kind");
    const int kindIndex = indexOf(kKindNames, kind);
    if (kindIndex < 0)
        r.fail("unknown kind \"" + kind + "\" (" + listOf(kKindNames) + ")");
    item.kind = static_cast<std::uint16_t>(kindIndex + 1);
    item.label = macRomanText(r.optionalString("label").value_or(""), 255, r.context(), "label");

    const auto bounds = integerArray(r, "bounds", 4, kS16Min, kS16Max);
    item.left = static_cast<std::int16_t>(bounds[0]);
    item.top = static_cast<std::int16_t>(bounds[1]);
    item.right = static_cast<std::int16_t>(bounds[2]);
    item.bottom = static_cast<std::int16_t>(bounds[3]);
    if (item.left >= item.right || item.top >= item.bottom)
        r.fail("bounds [left, top, right, bottom] must have left < right and top < bottom");
    if (item.left < 0 || item.top < 0 || item.right > width || item.bottom > height)
        r.fail("bounds lie outside the dialog (" + std::to_string(width) + " x " + std::to_string(height) + ")");

    if (const auto role = r.optionalString("role")) {
        if (*role == "default")
            item.role = DialogRole::accept;
        else if (*role == "cancel")
            item.role = DialogRole::cancel;
        else
            r.fail("unknown role \"" + *role + "\" (default or cancel)");
        if (item.kind != kPushButton)
            r.fail("only push buttons have a role");
    }
    if (const auto filter = r.optionalString("filter")) {
        const int filterIndex = indexOf(kFilterNames, *filter);
        if (filterIndex < 0)
            r.fail("unknown filter \"" + *filter + "\" (" + listOf(kFilterNames) + ")");
        if (item.kind != kEditText)
            r.fail("only edit texts have a filter");
        item.editFilter = static_cast<std::uint8_t>(filterIndex + 1);
    }
    if (const Json* menu = r.optional("menu")) {
        if (item.kind != kPopupMenu && item.kind != kListBox)
            r.fail("only popup menus and list boxes have menu items");
        if (menu->is_string() && menu->get<std::string>() == "styles") {
            item.menuFromStyles = true;
        } else if (menu->is_array()) {
            for (const Json& entry : *menu) {
                if (!entry.is_string())
                    r.fail("menu items must be strings");
                item.menu.push_back(macRomanText(entry.get<std::string>(), 255, r.context(), "menu item"));
            }
        } else {
            r.fail("\"menu\" must be \"styles\" or an array of strings");
        }
    }
    r.finish();
    return item;
}

std::string hexText(std::span<const std::uint8_t> bytes)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t b : bytes) {
        text += digits[b >> 4];
        text += digits[b & 15];
    }
    return text;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Hex lines of this many bytes keep the dump readable.
constexpr std::size_t kHexBytesPerLine = 32;

} // namespace

Dialog dialogFromJson(const Json& value)
{
    ObjectReader r(value, "dialog");
    Dialog dialog;
    dialog.id = static_cast<std::int16_t>(r.integer("dialog", kS16Min, kS16Max));
    r.setContext("dialog " + std::to_string(dialog.id));
    DialogTemplate& layout = dialog.layout;
    layout.title = macRomanText(r.optionalString("title").value_or(""), 255, r.context(), "title");
    if (const auto icon = r.optionalString("icon")) {
        const int iconIndex = indexOf(kIconNames, *icon);
        if (iconIndex < 0)
            r.fail("unknown icon \"" + *icon + "\" (" + listOf(kIconNames) + ")");
        layout.icon = static_cast<DialogIcon>(iconIndex + 1);
    }
    const auto size = integerArray(r, "size", 2, 1, kS16Max);
    layout.width = static_cast<std::int16_t>(size[0]);
    layout.height = static_cast<std::int16_t>(size[1]);

    const Json& items = r.required("items");
    if (!items.is_array())
        r.fail("\"items\" must be an array");
    std::set<std::int16_t> ids;
    bool hasDefault = false;
    bool hasCancel = false;
    for (std::size_t i = 0; i < items.size(); ++i) {
        DialogItem item = itemFromJson(items[i], i, r.context(), layout.width, layout.height);
        const std::string where = r.context() + ": item " + std::to_string(item.id);
        if (!ids.insert(item.id).second)
            throw CompileError(where + ": id " + std::to_string(item.id) + " is used twice");
        if (item.role == DialogRole::accept && std::exchange(hasDefault, true))
            throw CompileError(where + ": a second \"default\" button");
        if (item.role == DialogRole::cancel && std::exchange(hasCancel, true))
            throw CompileError(where + ": a second \"cancel\" button");
        layout.items.push_back(std::move(item));
    }
    r.finish();
    return dialog;
}

Json dialogToJson(const Dialog& dialog)
{
    const DialogTemplate& layout = dialog.layout;
    Json j;
    j["dialog"] = dialog.id;
    j["title"] = macRomanToUtf8(layout.title);
    if (layout.icon != DialogIcon::none)
        j["icon"] = kIconNames[static_cast<std::size_t>(layout.icon) - 1];
    j["size"] = Json::array({layout.width, layout.height});
    Json items = Json::array();
    for (const DialogItem& item : layout.items) {
        if (item.kind == 0 || item.kind > kKindNames.size())
            throw CompileError("dialog " + std::to_string(dialog.id) + ": item " + std::to_string(item.id) +
                               " has no kind name");
        Json o;
        o["id"] = item.id;
        o["kind"] = kKindNames[item.kind - 1u];
        o["label"] = macRomanToUtf8(item.label);
        o["bounds"] = Json::array({item.left, item.top, item.right, item.bottom});
        if (item.role == DialogRole::accept)
            o["role"] = "default";
        else if (item.role == DialogRole::cancel)
            o["role"] = "cancel";
        if (item.editFilter != 0 && item.editFilter <= kFilterNames.size())
            o["filter"] = kFilterNames[item.editFilter - 1u];
        if (item.menuFromStyles) {
            o["menu"] = "styles";
        } else if (!item.menu.empty()) {
            Json menu = Json::array();
            for (const std::string& entry : item.menu)
                menu.push_back(macRomanToUtf8(entry));
            o["menu"] = std::move(menu);
        }
        items.push_back(std::move(o));
    }
    j["items"] = std::move(items);
    return j;
}

RawResource rawFromJson(const Json& value)
{
    ObjectReader r(value, "resource");
    RawResource raw;
    const std::string type = r.string("type");
    try {
        raw.type = fourCCFromText(type);
    } catch (const Error& e) {
        r.fail(e.what());
    }
    raw.id = static_cast<std::int16_t>(r.integer("id", kS16Min, kS16Max));
    r.setContext("resource '" + fourCCText(raw.type) + "' " + std::to_string(raw.id));
    raw.name = macRomanText(r.optionalString("name").value_or(""), 255, r.context(), "name");
    const Json& hex = r.required("hex");
    if (!hex.is_array())
        r.fail("\"hex\" must be an array of strings of hex digits");
    for (const Json& line : hex) {
        if (!line.is_string())
            r.fail("\"hex\" must be an array of strings of hex digits");
        const std::string text = line.get<std::string>();
        if (text.size() % 2 != 0)
            r.fail("a \"hex\" line has an odd number of digits");
        for (std::size_t i = 0; i < text.size(); i += 2) {
            const int high = hexValue(text[i]);
            const int low = hexValue(text[i + 1]);
            if (high < 0 || low < 0)
                r.fail("a \"hex\" line holds a character that is not a hex digit");
            raw.data.push_back(static_cast<std::uint8_t>(high * 16 + low));
        }
    }
    r.finish();
    return raw;
}

Json rawToJson(const RawResource& raw)
{
    Json j;
    j["type"] = fourCCText(raw.type);
    j["id"] = raw.id;
    if (!raw.name.empty())
        j["name"] = macRomanToUtf8(raw.name);
    Json lines = Json::array();
    const std::span<const std::uint8_t> data(raw.data);
    for (std::size_t at = 0; at < data.size(); at += kHexBytesPerLine)
        lines.push_back(hexText(data.subspan(at, std::min(kHexBytesPerLine, data.size() - at))));
    j["hex"] = std::move(lines);
    return j;
}

} // namespace korvane::rsc
