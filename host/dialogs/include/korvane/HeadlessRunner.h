// HeadlessRunner.h - a dialog run by a script instead of a user.
//
// The script is a list of control edits, "ITEM=VALUE", applied in order as
// a user would make them (the control's value set, its hit routine run),
// then OK or Cancel. ITEM is a control's id or its label (DialogSession::
// findControl). VALUE is read by the control's kind:
//
//   check box          1, 0, on, off, true, false, yes, no
//   pop-up menu        a menu item's text, or its index from 0
//   radio group, slider, scroller   a whole number
//   edit text          the text, as typed
//   colour button      R,G,B (0-255 each) or #RRGGBB
//   user control       X,Y or X1,Y1;X2,Y2;... a press at the first point,
//                      dragged through the others and released at the last;
//                      points in pixels from the control's top left corner
//   push button        anything: the button is clicked
//
// The image of the first user control (the plug-in's preview) is kept as it
// was drawn once the edits were made, before the dialog closed.
#pragma once

#include "korvane/DialogSession.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

struct ControlEdit {
    std::string item;
    std::string value;
    bool operator==(const ControlEdit&) const = default;
};

// Splits "ITEM=VALUE" at the first '='. Throws Error when there is no
// '=' or no item.
ControlEdit parseControlEdit(std::string_view text);

// Makes one edit on the running dialog. Throws Error when the item is
// unknown or the value does not suit it.
void applyControlEdit(DialogSession& session, const ControlEdit& edit);

enum class DialogEnding { accept, cancel };

class HeadlessRunner : public DialogRunner {
public:
    HeadlessRunner(std::vector<ControlEdit> edits, DialogEnding ending);

    // Applies the edits, keeps the preview, then accepts or cancels. A
    // failing edit cancels the dialog and is kept in error().
    void run(DialogSession& session) override;

    bool ran() const { return ran_; }
    // Why the script failed, "" when it did not.
    const std::string& error() const { return error_; }
    // The first user control as drawn after the edits; empty when the
    // dialog has none or did not run.
    const Pixels& preview() const { return preview_; }

private:
    std::vector<ControlEdit> edits_;
    DialogEnding ending_;
    bool ran_ = false;
    std::string error_;
    Pixels preview_;
};

} // namespace korvane
