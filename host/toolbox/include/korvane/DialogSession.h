// DialogSession.h - the host's dialogs as a runner sees them.
//
// Plug-ins build dialogs from 'KDLG' resources (KV_MakeDialog) and run them
// with KV_ExecuteDialog. The host has one dialog model and pluggable
// runners that play the user: a headless one applying a script of edits
// (HeadlessRunner.h) and a page in a web browser (BrowserRunner.h).
// KV_ExecuteDialog hands the dialog to the installed runner as a
// DialogSession and returns when the runner is done, on the plug-in's
// thread: every user action goes through the session and runs the
// plug-in's routines right there.
//
// A user action is done the way a user does it: the control's state
// changes, the control's hit routine runs (then the dialog's), and the
// controls that were invalidated are redrawn. A user control's click runs
// its click routine while a PointerSource plays the pointer for
// KV_TrackMouseDown.
//
// Coordinates are the dialog's pixels from its top left corner; controls'
// bounds and click positions are both in them. Images are KV_32BitPixel
// (alpha 24-31, red 16-23, green 8-15, blue 0-7), stored as the plug-in
// drew them: the alpha byte is carried, never blended.
//
// Texts are UTF-8 here; the dialog holds them in Mac OS Roman.
#pragma once

#include "KVToolboxTypes.h"
#include "korvane/DialogTemplate.h"
#include "korvane/Error.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

struct Point {
    int x = 0;
    int y = 0;
    bool operator==(const Point&) const = default;
};

// The pointer while the button is down: each call stores the next position
// and answers true while the button is still down; false (with the last
// position) once it is released.
using PointerSource = std::function<bool(Point&)>;

struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> argb;  // KV_32BitPixel, row by row

    std::uint32_t at(int x, int y) const { return argb[static_cast<std::size_t>(y) * width + x]; }
};

struct ControlState {
    int id = 0;
    KV_ControlType kind = cKV_NoControlType;
    KV_Rect bounds{};
    std::string label;
    int value = 0;
    int maximum = 0;
    bool enabled = true;
    bool visible = true;
    std::string text;  // of an edit text
    int red = 0, green = 0, blue = 0, alpha = 255;  // of a colour button
    std::vector<std::string> menu;
    DialogRole role = DialogRole::none;
};

class DialogSession {
public:
    explicit DialogSession(KV_Dialog& dialog) : dialog_(&dialog) {}

    std::string title() const;
    int width() const;
    int height() const;
    std::vector<ControlState> controls() const;
    // Throws Error for an unknown id.
    ControlState control(int id) const;
    // The id of the control named by `item`: its id as a number, or its
    // label. Labels are matched among the controls a user can operate (not
    // static texts, group boxes, pictures and divider lines), exactly first,
    // then ignoring case. Throws Error when none or several match.
    int findControl(std::string_view item) const;

    // User actions. Each throws Error when the control is missing,
    // disabled, hidden or of another kind, or when the dialog has ended.
    // A check box, radio group, pop-up menu, slider or scroller takes a new
    // value (0..maximum where the kind has one).
    void setValue(int id, int value);
    // An edit text is given the whole text, as the user types it; its edit
    // filter refuses what the user could not type.
    void typeText(int id, std::string_view text);
    // A colour button takes a picked colour (components 0-255).
    void pickColor(int id, int red, int green, int blue);
    // A push button is clicked: accept and cancel buttons end the dialog,
    // others run their hit routine.
    void click(int id);
    // A user control is pressed at `at` and tracked while `pointer` says the
    // button is down.
    void press(int id, Point at, PointerSource pointer);
    void accept();
    void cancel();

    bool ended() const;
    // What KV_ExecuteDialog answers: 1 accepted, 0 cancelled, or what the
    // plug-in gave KV_StopDialog.
    int result() const;

    // The dialog's pixels under a control, as last drawn.
    Pixels snapshot(int id) const;

    // Redraws the controls that were invalidated (the runner calls it after
    // anything it does besides the actions above).
    void redrawInvalid();

private:
    KV_Control& usable(int id, KV_ControlType kind) const;
    void hit(KV_Control& control);

    KV_Dialog* dialog_;
};

// Plays the user of a dialog. run() returns when the user is done; a
// session that has not ended by then is cancelled.
class DialogRunner {
public:
    virtual ~DialogRunner() = default;
    virtual void run(DialogSession& session) = 0;
};

// KV_ExecuteDialog can only find its runner here: the toolbox interface
// gives it nothing but the dialog. Without a runner every dialog is
// cancelled at once. The scope installs a runner and puts the previous one
// back.
class DialogRunnerScope {
public:
    explicit DialogRunnerScope(DialogRunner& runner);
    ~DialogRunnerScope();
    DialogRunnerScope(const DialogRunnerScope&) = delete;
    DialogRunnerScope& operator=(const DialogRunnerScope&) = delete;

private:
    DialogRunner* previous_;
};

DialogRunner* currentDialogRunner();

} // namespace korvane
