// DialogSession.cpp - user actions on a running dialog, and the installed
// runner.

#include "korvane/DialogSession.h"

#include "DialogObjects.h"
#include "korvane/MacRoman.h"
#include "korvane/Spelling.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace korvane {
namespace {

DialogRunner* installedRunner = nullptr;

const char* kindName(KV_ControlType kind)
{
    switch (kind) {
    case cKV_PushButton:    return "push button";
    case cKV_CheckBox:      return "check box";
    case cKV_RadioGroup:    return "radio group";
    case cKV_DividerLine:   return "divider line";
    case cKV_GroupBox:      return "group box";
    case cKV_TabGroup:      return "tab group";
    case cKV_ColorSlider:   return "color slider";
    case cKV_Scroller:      return "scroller";
    case cKV_StaticText:    return "static text";
    case cKV_EditText:      return "edit text";
    case cKV_ColorButton:   return "color button";
    case cKV_ListBox:       return "list box";
    case cKV_PopupMenu:     return "pop-up menu";
    case cKV_Picture:       return "picture";
    case cKV_UserControl:   return "user control";
    case cKV_OpenGLControl: return "OpenGL control";
    default:                return "control of no kind";
    }
}

// Controls a user can operate; the others only label or group.
bool operable(KV_ControlType kind)
{
    return kind != cKV_NoControlType && kind != cKV_StaticText && kind != cKV_GroupBox && kind != cKV_Picture &&
           kind != cKV_DividerLine;
}

std::string nameOf(const KV_Control& control)
{
    return "item " + std::to_string(control.id) + " (" + macRomanToUtf8(control.title) + ")";
}

std::string lowered(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

// Whether a user could type every character of `text` into the control.
bool typeable(const KV_Control& control, const std::string& text)
{
    std::string_view allowed;
    switch (control.filter) {
    case cKV_UnsignedInt:   allowed = "0123456789"; break;
    case cKV_SignedInt:     allowed = "0123456789+-"; break;
    case cKV_UnsignedFloat: allowed = "0123456789.eE"; break;
    case cKV_SignedFloat:   allowed = "0123456789.eE+-"; break;
    case cKV_Custom:
        if (!control.filterFunction)
            return true;
        return std::all_of(text.begin(), text.end(), [&](char c) {
            return control.filterFunction(const_cast<KV_Control*>(&control), static_cast<unsigned char>(c)) != 0;
        });
    default:
        return true;
    }
    return text.find_first_not_of(allowed) == std::string::npos;
}

ControlState stateOf(const KV_Control& control)
{
    ControlState state;
    state.id = control.id;
    state.kind = control.kind;
    state.bounds = control.bounds;
    state.label = macRomanToUtf8(control.title);
    state.value = control.value;
    state.maximum = control.maximum;
    state.enabled = control.enabled;
    state.visible = control.visible;
    state.text = macRomanToUtf8(control.editText);
    state.red = control.red;
    state.green = control.green;
    state.blue = control.blue;
    state.alpha = control.alpha;
    for (const std::string& item : control.menu)
        state.menu.push_back(macRomanToUtf8(item));
    state.role = control.role;
    return state;
}

KV_Control* findById(const KV_Dialog& dialog, int id)
{
    for (const auto& control : dialog.controls)
        if (control->id == id)
            return control.get();
    return nullptr;
}

} // namespace

std::string DialogSession::title() const
{
    return macRomanToUtf8(dialog_->title);
}

int DialogSession::width() const
{
    return dialog_->canvas.width();
}

int DialogSession::height() const
{
    return dialog_->canvas.height();
}

std::vector<ControlState> DialogSession::controls() const
{
    std::vector<ControlState> states;
    for (const auto& control : dialog_->controls)
        states.push_back(stateOf(*control));
    return states;
}

ControlState DialogSession::control(int id) const
{
    const KV_Control* found = findById(*dialog_, id);
    if (!found)
        throw Error("the dialog has no item " + std::to_string(id));
    return stateOf(*found);
}

int DialogSession::findControl(std::string_view item) const
{
    int id = 0;
    const auto [end, error] = std::from_chars(item.data(), item.data() + item.size(), id);
    if (error == std::errc() && end == item.data() + item.size() && !item.empty())
        return control(id).id;

    // Exact labels first; only when none matches, labels ignoring case,
    // then also in either spelling ("Halo color" for "Halo colour").
    for (const int loose : {0, 1, 2}) {
        const auto looseForm = [loose](std::string_view text) {
            return loose == 2 ? canonicalSpelling(lowered(text)) : lowered(text);
        };
        std::vector<const KV_Control*> matches;
        for (const auto& control : dialog_->controls) {
            if (!operable(control->kind))
                continue;
            const std::string label = macRomanToUtf8(control->title);
            if (loose > 0 ? looseForm(label) == looseForm(item) : label == item)
                matches.push_back(control.get());
        }
        if (matches.size() == 1)
            return matches.front()->id;
        if (matches.size() > 1) {
            std::string ids;
            for (const KV_Control* match : matches)
                ids += (ids.empty() ? "" : ", ") + std::to_string(match->id);
            throw Error("\"" + std::string(item) + "\" names several items (" + ids + "); give the id");
        }
    }
    throw Error("the dialog \"" + title() + "\" has no item \"" + std::string(item) + "\"");
}

KV_Control& DialogSession::usable(int id, KV_ControlType kind) const
{
    if (dialog_->ended)
        throw Error("the dialog has already ended");
    KV_Control* control = findById(*dialog_, id);
    if (!control)
        throw Error("the dialog has no item " + std::to_string(id));
    if (kind != cKV_NoControlType && control->kind != kind)
        throw Error(nameOf(*control) + " is a " + kindName(control->kind) + ", not a " + kindName(kind));
    if (!control->enabled || !control->visible)
        throw Error(nameOf(*control) + " is " + (control->visible ? "disabled" : "hidden"));
    return *control;
}

void DialogSession::hit(KV_Control& control)
{
    KV_DrawContext context = toolbox::contextFor(dialog_->canvas, dialog_->canvas.bounds);
    if (control.hit)
        control.hit(&control, &context);
    if (dialog_->hit)
        dialog_->hit(dialog_, &control);
    redrawInvalid();
}

void DialogSession::setValue(int id, int value)
{
    KV_Control& control = usable(id, cKV_NoControlType);
    switch (control.kind) {
    case cKV_CheckBox:
    case cKV_RadioGroup:
    case cKV_PopupMenu:
        if (value < 0 || value > control.maximum)
            throw Error(nameOf(control) + " takes a value from 0 to " + std::to_string(control.maximum) +
                        ", not " + std::to_string(value));
        break;
    case cKV_ColorSlider:
    case cKV_Scroller:
        break;
    default:
        throw Error(nameOf(control) + " is a " + kindName(control.kind) + " and has no value to set");
    }
    control.value = value;
    hit(control);
}

void DialogSession::typeText(int id, std::string_view text)
{
    KV_Control& control = usable(id, cKV_EditText);
    std::string bad;
    const std::optional<std::string> typed = utf8ToMacRoman(text, &bad);
    if (!typed)
        throw Error(nameOf(control) + " cannot hold the character " + bad);
    if (!typeable(control, *typed))
        throw Error(nameOf(control) + " does not accept the text \"" + std::string(text) + "\"");
    control.editText = *typed;
    control.selectionStart = control.selectionEnd = static_cast<int>(typed->size());
    dialog_->keyControl = &control;
    hit(control);
}

void DialogSession::pickColor(int id, int red, int green, int blue)
{
    KV_Control& control = usable(id, cKV_ColorButton);
    for (const int c : {red, green, blue})
        if (c < 0 || c > 255)
            throw Error(nameOf(control) + " takes color components from 0 to 255, not " + std::to_string(c));
    control.red = red;
    control.green = green;
    control.blue = blue;
    hit(control);
}

void DialogSession::click(int id)
{
    KV_Control& control = usable(id, cKV_NoControlType);
    if (control.kind == cKV_CheckBox) {
        control.value = control.value != 0 ? 0 : 1;
        hit(control);
        return;
    }
    if (control.kind != cKV_PushButton)
        throw Error(nameOf(control) + " is a " + kindName(control.kind) + ", not a button");
    if (control.role == DialogRole::accept)
        accept();
    else if (control.role == DialogRole::cancel)
        cancel();
    else
        hit(control);
}

void DialogSession::press(int id, Point at, PointerSource pointer)
{
    KV_Control& control = usable(id, cKV_UserControl);
    if (control.click) {
        KV_DrawContext context = toolbox::contextFor(dialog_->canvas, control.bounds);
        dialog_->pointer = std::move(pointer);
        struct Release {
            KV_Dialog* dialog;
            ~Release() { dialog->pointer = nullptr; }
        } release{dialog_};
        control.click(&control, &context, 0, at.x, at.y);
    }
    if (dialog_->hit)
        dialog_->hit(dialog_, &control);
    redrawInvalid();
}

void DialogSession::accept()
{
    if (dialog_->ended)
        throw Error("the dialog has already ended");
    dialog_->ended = true;
    dialog_->result = 1;
}

void DialogSession::cancel()
{
    if (dialog_->ended)
        throw Error("the dialog has already ended");
    dialog_->ended = true;
    dialog_->result = 0;
}

bool DialogSession::ended() const
{
    return dialog_->ended;
}

int DialogSession::result() const
{
    return dialog_->result;
}

Pixels DialogSession::snapshot(int id) const
{
    const KV_Control* control = findById(*dialog_, id);
    if (!control)
        throw Error("the dialog has no item " + std::to_string(id));
    const KV_ImageBuffer& canvas = dialog_->canvas;
    const KV_Rect area{std::max(control->bounds.left, canvas.bounds.left),
                       std::max(control->bounds.top, canvas.bounds.top),
                       std::min(control->bounds.right, canvas.bounds.right),
                       std::min(control->bounds.bottom, canvas.bounds.bottom)};
    Pixels pixels;
    if (area.right <= area.left || area.bottom <= area.top)
        return pixels;
    pixels.width = area.right - area.left;
    pixels.height = area.bottom - area.top;
    pixels.argb.reserve(static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height));
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            pixels.argb.push_back(canvas.at(x, y));
    return pixels;
}

void DialogSession::redrawInvalid()
{
    toolbox::redrawInvalid(*dialog_);
}

DialogRunnerScope::DialogRunnerScope(DialogRunner& runner) : previous_(installedRunner)
{
    installedRunner = &runner;
}

DialogRunnerScope::~DialogRunnerScope()
{
    installedRunner = previous_;
}

DialogRunner* currentDialogRunner()
{
    return installedRunner;
}

} // namespace korvane
