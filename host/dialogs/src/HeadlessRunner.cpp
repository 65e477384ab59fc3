// HeadlessRunner.cpp - control edits from a script, applied as a user would.

#include "korvane/HeadlessRunner.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>

namespace korvane {
namespace {

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    return text;
}

std::optional<int> wholeNumber(std::string_view text, int base = 10)
{
    text = trimmed(text);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t at = text.find(separator);
        parts.push_back(text.substr(0, at));
        if (at == std::string_view::npos)
            return parts;
        text.remove_prefix(at + 1);
    }
}

std::string lowered(std::string_view text)
{
    std::string out(trimmed(text));
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

[[noreturn]] void refuse(const ControlState& control, const std::string& expected, std::string_view value)
{
    throw Error("item " + std::to_string(control.id) + " (" + control.label + ") takes " + expected +
                ", not \"" + std::string(value) + "\"");
}

int checkBoxValue(const ControlState& control, std::string_view value)
{
    const std::string word = lowered(value);
    for (const char* on : {"1", "on", "true", "yes"})
        if (word == on)
            return 1;
    for (const char* off : {"0", "off", "false", "no"})
        if (word == off)
            return 0;
    refuse(control, "on or off (1 or 0)", value);
}

int menuValue(const ControlState& control, std::string_view value)
{
    for (std::size_t i = 0; i < control.menu.size(); ++i)
        if (control.menu[i] == value)
            return static_cast<int>(i);
    const std::string wanted = lowered(value);
    for (std::size_t i = 0; i < control.menu.size(); ++i)
        if (lowered(control.menu[i]) == wanted)
            return static_cast<int>(i);
    if (const auto index = wholeNumber(value))
        return *index;
    std::string items;
    for (const std::string& item : control.menu)
        items += (items.empty() ? "\"" : ", \"") + item + "\"";
    refuse(control, "one of " + items + " or its index from 0", value);
}

void pickColor(DialogSession& session, const ControlState& control, std::string_view value)
{
    const std::string_view text = trimmed(value);
    const char* expected = "a colour R,G,B (0-255 each) or #RRGGBB";
    if (!text.empty() && text.front() == '#') {
        const std::string_view hex = text.substr(1);
        const auto rgb = hex.size() == 6 && hex.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos
                             ? wholeNumber(hex, 16)
                             : std::nullopt;
        if (!rgb)
            refuse(control, expected, value);
        session.pickColor(control.id, (*rgb >> 16) & 0xFF, (*rgb >> 8) & 0xFF, *rgb & 0xFF);
        return;
    }
    const std::vector<std::string_view> parts = split(text, ',');
    if (parts.size() != 3)
        refuse(control, expected, value);
    int rgb[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const auto component = wholeNumber(parts[i]);
        if (!component || *component < 0 || *component > 255)
            refuse(control, expected, value);
        rgb[i] = *component;
    }
    session.pickColor(control.id, rgb[0], rgb[1], rgb[2]);
}

// The points of a drag, in the dialog's coordinates.
std::vector<Point> dragPath(const ControlState& control, std::string_view value)
{
    const char* expected = "points X,Y or X1,Y1;X2,Y2;... inside it";
    std::vector<Point> path;
    for (const std::string_view point : split(trimmed(value), ';')) {
        const std::vector<std::string_view> xy = split(point, ',');
        const auto x = xy.size() == 2 ? wholeNumber(xy[0]) : std::nullopt;
        const auto y = xy.size() == 2 ? wholeNumber(xy[1]) : std::nullopt;
        const int width = control.bounds.right - control.bounds.left;
        const int height = control.bounds.bottom - control.bounds.top;
        if (!x || !y || *x < 0 || *y < 0 || *x >= width || *y >= height)
            refuse(control, expected, value);
        path.push_back(Point{control.bounds.left + *x, control.bounds.top + *y});
    }
    return path;
}

void drag(DialogSession& session, const ControlState& control, std::string_view value)
{
    const std::vector<Point> path = dragPath(control, value);
    // The button is down at every point of the path, released at its end.
    std::size_t next = 0;
    session.press(control.id, path.front(), [&path, &next](Point& at) {
        if (next < path.size()) {
            at = path[next++];
            return true;
        }
        at = path.back();
        return false;
    });
}

} // namespace

ControlEdit parseControlEdit(std::string_view text)
{
    const std::size_t at = text.find('=');
    if (at == std::string_view::npos || trimmed(text.substr(0, at)).empty())
        throw Error("a control edit is ITEM=VALUE, not \"" + std::string(text) + "\"");
    return ControlEdit{std::string(trimmed(text.substr(0, at))), std::string(text.substr(at + 1))};
}

void applyControlEdit(DialogSession& session, const ControlEdit& edit)
{
    const ControlState control = session.control(session.findControl(edit.item));
    switch (control.kind) {
    case cKV_CheckBox:
        session.setValue(control.id, checkBoxValue(control, edit.value));
        break;
    case cKV_PopupMenu:
        session.setValue(control.id, menuValue(control, edit.value));
        break;
    case cKV_RadioGroup:
    case cKV_ColorSlider:
    case cKV_Scroller:
        if (const auto number = wholeNumber(edit.value))
            session.setValue(control.id, *number);
        else
            refuse(control, "a whole number", edit.value);
        break;
    case cKV_EditText:
        session.typeText(control.id, edit.value);
        break;
    case cKV_ColorButton:
        pickColor(session, control, edit.value);
        break;
    case cKV_UserControl:
        drag(session, control, edit.value);
        break;
    case cKV_PushButton:
        session.click(control.id);
        break;
    default:
        throw Error("item " + std::to_string(control.id) + " (" + control.label +
                    ") cannot be edited from a script");
    }
}

HeadlessRunner::HeadlessRunner(std::vector<ControlEdit> edits, DialogEnding ending)
    : edits_(std::move(edits)), ending_(ending)
{
}

void HeadlessRunner::run(DialogSession& session)
{
    ran_ = true;
    error_.clear();
    preview_ = {};
    try {
        for (const ControlEdit& edit : edits_) {
            if (session.ended())
                throw Error("the dialog ended before the edit " + edit.item + "=" + edit.value);
            applyControlEdit(session, edit);
        }
        for (const ControlState& control : session.controls())
            if (control.kind == cKV_UserControl) {
                preview_ = session.snapshot(control.id);
                break;
            }
    } catch (const std::exception& e) {
        error_ = e.what();
        if (!session.ended())
            session.cancel();
        return;
    }
    if (session.ended())
        return;
    if (ending_ == DialogEnding::accept)
        session.accept();
    else
        session.cancel();
}

} // namespace korvane
