// DialogToolbox.cpp - dialogs and controls for plug-ins.
//
// A dialog is built from a 'KDLG' resource of the plug-in's resource file:
// one control per item, with the item's id, kind, bounds, label, menu and
// role. The plug-in then loads values and installs its routines; the
// dialog runs modally in KV_ExecuteDialog, which hands it to the installed
// runner (DialogSession.h).
//
// Drawing: KV_InvalControl marks a control; marked controls are redrawn
// (their draw routine runs into the dialog's canvas, clipped to the control)
// when the dialog appears and after every user action, or at once for a
// control set to draw immediately. Values set by the plug-in are stored as
// given; the runner checks what a user may do.

#include "DialogObjects.h"
#include "ToolboxGuard.h"
#include "korvane/MacRoman.h"
#include "korvane/ResourceFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace korvane::toolbox {
namespace {

// What a dialog's canvas shows where no control draws.
constexpr std::uint32_t kDialogBackground = 0xFFECECECu;

int maximumOf(const DialogItem& item)
{
    switch (item.kind) {
    case cKV_CheckBox:
        return 1;
    case cKV_PopupMenu:
    case cKV_RadioGroup:
        return item.menu.empty() ? 0 : static_cast<int>(item.menu.size()) - 1;
    default:
        return 0;
    }
}

std::unique_ptr<KV_Dialog> buildDialog(const DialogTemplate& source)
{
    if (source.width <= 0 || source.height <= 0)
        throw Error("the dialog has no area (" + std::to_string(source.width) + " x " +
                    std::to_string(source.height) + ")");
    auto dialog = std::make_unique<KV_Dialog>();
    dialog->title = source.title;
    shapeImage(dialog->canvas, KV_Rect{0, 0, source.width, source.height});
    std::fill(dialog->canvas.pixels.begin(), dialog->canvas.pixels.end(), kDialogBackground);
    for (const DialogItem& item : source.items) {
        auto control = std::make_unique<KV_Control>();
        control->dialog = dialog.get();
        control->id = item.id;
        control->kind = static_cast<KV_ControlType>(item.kind);
        control->bounds = KV_Rect{item.left, item.top, item.right, item.bottom};
        control->title = item.label;
        control->maximum = maximumOf(item);
        control->filter = static_cast<KV_EditFilterType>(item.editFilter);
        control->menu = item.menu;
        control->role = item.role;
        dialog->controls.push_back(std::move(control));
    }
    return dialog;
}

// The text getters' convention: room for *ioNumChars bytes including the
// terminating zero; the count written goes back.
void copyText(const std::string& text, char* oBuffer, int* ioNumChars)
{
    if (!oBuffer || !ioNumChars)
        return;
    if (*ioNumChars <= 0) {
        *ioNumChars = 0;
        return;
    }
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(*ioNumChars - 1));
    std::memcpy(oBuffer, text.data(), count);
    oBuffer[count] = '\0';
    *ioNumChars = static_cast<int>(count);
}

int textRoom(const std::string& text)
{
    return static_cast<int>(std::min<std::size_t>(text.size() + 1, std::numeric_limits<int>::max()));
}

int component(int value)
{
    return std::clamp(value, 0, 255);
}

// Sets the dialog running for one KV_ExecuteDialog and clears it after,
// whatever happens.
class RunningMark {
public:
    explicit RunningMark(KV_Dialog& dialog) : dialog_(dialog)
    {
        dialog_.running = true;
        dialog_.ended = false;
        dialog_.result = 0;
    }
    ~RunningMark()
    {
        dialog_.running = false;
        dialog_.pointer = nullptr;
    }
    RunningMark(const RunningMark&) = delete;
    RunningMark& operator=(const RunningMark&) = delete;

private:
    KV_Dialog& dialog_;
};

} // namespace

void drawControl(KV_Control& control)
{
    control.invalid = false;
    if (!control.draw || !control.visible)
        return;
    KV_DrawContext context = contextFor(control.dialog->canvas, control.bounds);
    control.draw(&control, &context);
}

void redrawInvalid(KV_Dialog& dialog)
{
    for (std::size_t i = 0; i < dialog.controls.size(); ++i) {
        KV_Control& control = *dialog.controls[i];
        if (control.invalid)
            drawControl(control);
    }
}

} // namespace korvane::toolbox

using korvane::toolbox::guarded;
using korvane::toolbox::guardedVoid;
using korvane::toolbox::reportError;

extern "C" {

// ---- Dialogs -----------------------------------------------------------------

KORVANE_TOOLBOX_EXPORT KV_Dialog* KV_MakeDialog(KV_ResourceFile* iResourceFile, int iDialogID)
{
    return guarded("KV_MakeDialog", static_cast<KV_Dialog*>(nullptr), [&]() -> KV_Dialog* {
        const korvane::ResourceFile* file = korvane::toolbox::resourceFileOf(iResourceFile);
        if (!file)
            return nullptr;
        const std::string where = file->displayName() + ": dialog " + std::to_string(iDialogID);
        if (iDialogID < std::numeric_limits<std::int16_t>::min() ||
            iDialogID > std::numeric_limits<std::int16_t>::max()) {
            reportError("KV_MakeDialog: " + where + " cannot exist");
            return nullptr;
        }
        const auto bytes = file->get(korvane::kDialogResType, static_cast<std::int16_t>(iDialogID));
        if (!bytes) {
            reportError("KV_MakeDialog: " + where + " is missing");
            return nullptr;
        }
        try {
            return korvane::toolbox::buildDialog(korvane::decodeDialogTemplate(*bytes)).release();
        } catch (const std::exception& e) {
            reportError("KV_MakeDialog: " + where + ": " + e.what());
            return nullptr;
        }
    });
}

KORVANE_TOOLBOX_EXPORT void KV_DestroyDialog(KV_Dialog* iDialog)
{
    // A dialog destroyed from inside its own run would pull the controls out
    // from under the runner; it goes when the run is over.
    if (iDialog && !iDialog->running)
        delete iDialog;
}

KORVANE_TOOLBOX_EXPORT int KV_ExecuteDialog(KV_Dialog* iDialog)
{
    return guarded("KV_ExecuteDialog", 0, [&]() -> int {
        if (!iDialog || iDialog->running)
            return 0;
        korvane::DialogRunner* runner = korvane::currentDialogRunner();
        if (!runner) {
            reportError("KV_ExecuteDialog: this host shows no dialogs; \"" + korvane::macRomanToUtf8(iDialog->title) +
                        "\" was cancelled");
            return 0;
        }
        korvane::toolbox::RunningMark mark(*iDialog);
        // The dialog appears: every user control draws.
        for (auto& control : iDialog->controls)
            if (control->kind == cKV_UserControl)
                control->invalid = true;
        korvane::DialogSession session(*iDialog);
        session.redrawInvalid();
        runner->run(session);
        return iDialog->ended ? iDialog->result : 0;
    });
}

KORVANE_TOOLBOX_EXPORT void KV_StopDialog(KV_Dialog* ioDialog, int iResult)
{
    if (ioDialog && ioDialog->running) {
        ioDialog->ended = true;
        ioDialog->result = iResult;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_SetDialogTitle(KV_Dialog* ioDialog, const char* iTitle)
{
    guardedVoid("KV_SetDialogTitle", [&] {
        if (ioDialog && iTitle)
            ioDialog->title = iTitle;
    });
}

KORVANE_TOOLBOX_EXPORT void KV_MoveDialog(KV_Dialog* ioDialog, int iLeft, int iTop)
{
    if (ioDialog) {
        ioDialog->left = iLeft;
        ioDialog->top = iTop;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_GetDialogPosition(const KV_Dialog* iDialog, int* oLeft, int* oTop)
{
    if (!iDialog)
        return;
    if (oLeft)
        *oLeft = iDialog->left;
    if (oTop)
        *oTop = iDialog->top;
}

KORVANE_TOOLBOX_EXPORT void* KV_GetDialogExtraData(const KV_Dialog* iDialog)
{
    return iDialog ? iDialog->extraData : nullptr;
}

KORVANE_TOOLBOX_EXPORT void KV_SetDialogExtraData(KV_Dialog* ioDialog, void* iExtraData)
{
    if (ioDialog)
        ioDialog->extraData = iExtraData;
}

KORVANE_TOOLBOX_EXPORT void KV_SetDialogHitFunction(KV_Dialog* ioDialog, KV_DialogHitFunction iFunction)
{
    if (ioDialog)
        ioDialog->hit = iFunction;
}

KORVANE_TOOLBOX_EXPORT void KV_SetDialogKeyFilterFunction(KV_Dialog* ioDialog, KV_DialogKeyFilter iFunction)
{
    if (ioDialog)
        ioDialog->keyFilter = iFunction;
}

KORVANE_TOOLBOX_EXPORT void KV_GetDialogSize(const KV_Dialog* iDialog, int* oWidth, int* oHeight)
{
    if (!iDialog)
        return;
    if (oWidth)
        *oWidth = iDialog->canvas.width();
    if (oHeight)
        *oHeight = iDialog->canvas.height();
}

KORVANE_TOOLBOX_EXPORT void KV_SetDialogSize(KV_Dialog* ioDialog, int iWidth, int iHeight)
{
    guardedVoid("KV_SetDialogSize", [&] {
        if (!ioDialog)
            return;
        // The canvas is drawn anew at the new size.
        korvane::toolbox::shapeImage(ioDialog->canvas, KV_Rect{0, 0, iWidth, iHeight});
        std::fill(ioDialog->canvas.pixels.begin(), ioDialog->canvas.pixels.end(),
                  korvane::toolbox::kDialogBackground);
        for (auto& control : ioDialog->controls)
            control->invalid = true;
    });
}

// ---- Controls ----------------------------------------------------------------

KORVANE_TOOLBOX_EXPORT KV_Control* KV_FindControlByID(const KV_Dialog* iDialog, int iControlID)
{
    if (!iDialog)
        return nullptr;
    for (const auto& control : iDialog->controls)
        if (control->id == iControlID)
            return control.get();
    return nullptr;
}

KORVANE_TOOLBOX_EXPORT int KV_CountControls(const KV_Dialog* iDialog)
{
    return iDialog ? static_cast<int>(iDialog->controls.size()) : 0;
}

KORVANE_TOOLBOX_EXPORT KV_Control* KV_FindControlByIndex(const KV_Dialog* iDialog, int iIndex)
{
    if (!iDialog || iIndex < 0 || static_cast<std::size_t>(iIndex) >= iDialog->controls.size())
        return nullptr;
    return iDialog->controls[static_cast<std::size_t>(iIndex)].get();
}

KORVANE_TOOLBOX_EXPORT KV_Dialog* KV_GetControlDialog(const KV_Control* iControl)
{
    return iControl ? iControl->dialog : nullptr;
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlID(const KV_Control* iControl)
{
    return iControl ? iControl->id : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlID(KV_Control* ioControl, int iControlID)
{
    if (ioControl)
        ioControl->id = iControlID;
}

KORVANE_TOOLBOX_EXPORT KV_ControlType KV_GetControlType(const KV_Control* iControl)
{
    return iControl ? iControl->kind : cKV_NoControlType;
}

KORVANE_TOOLBOX_EXPORT void KV_InvalControl(const KV_Control* iControl)
{
    if (!iControl)
        return;
    // The host's own object: only the const of the interface is shed.
    auto& control = const_cast<KV_Control&>(*iControl);
    control.invalid = true;
    if (control.drawImmediate && control.dialog->running)
        korvane::toolbox::drawControl(control);
}

KORVANE_TOOLBOX_EXPORT void KV_GetControlBounds(const KV_Control* iControl, KV_Rect* oBounds)
{
    if (iControl && oBounds)
        *oBounds = iControl->bounds;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlBounds(KV_Control* ioControl, const KV_Rect* iBounds)
{
    if (ioControl && iBounds) {
        ioControl->bounds = *iBounds;
        ioControl->invalid = true;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlDrawImmediate(KV_Control* ioControl, int iDrawImmediate)
{
    if (ioControl)
        ioControl->drawImmediate = iDrawImmediate != 0;
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlDrawImmediate(const KV_Control* iControl)
{
    return iControl && iControl->drawImmediate;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlVisible(KV_Control* ioControl, int iVisible)
{
    if (ioControl) {
        ioControl->visible = iVisible != 0;
        ioControl->invalid = true;
    }
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlVisible(const KV_Control* iControl)
{
    return iControl && iControl->visible;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlEnable(KV_Control* ioControl, int iEnable)
{
    if (ioControl)
        ioControl->enabled = iEnable != 0;
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlEnable(const KV_Control* iControl)
{
    return iControl && iControl->enabled;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlTitle(KV_Control* ioControl, const char* iTitle)
{
    guardedVoid("KV_SetControlTitle", [&] {
        if (ioControl && iTitle)
            ioControl->title = iTitle;
    });
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlTitleSize(const KV_Control* iControl)
{
    return iControl ? korvane::toolbox::textRoom(iControl->title) : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_GetControlTitle(const KV_Control* iControl, char* oBuffer, int* ioNumChars)
{
    if (iControl)
        korvane::toolbox::copyText(iControl->title, oBuffer, ioNumChars);
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlValue(const KV_Control* iControl)
{
    return iControl ? iControl->value : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlValue(KV_Control* ioControl, int iNewValue)
{
    if (ioControl)
        ioControl->value = iNewValue;
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlMax(const KV_Control* iControl)
{
    return iControl ? iControl->maximum : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlMax(KV_Control* ioControl, int iNewMax)
{
    if (ioControl)
        ioControl->maximum = iNewMax;
}

KORVANE_TOOLBOX_EXPORT void* KV_GetControlExtraData(const KV_Control* iControl)
{
    return iControl ? iControl->extraData : nullptr;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlExtraData(KV_Control* ioControl, void* iExtraData)
{
    if (ioControl)
        ioControl->extraData = iExtraData;
}

KORVANE_TOOLBOX_EXPORT void KV_SetKeyControl(KV_Control* iControl)
{
    if (iControl)
        iControl->dialog->keyControl = iControl;
}

KORVANE_TOOLBOX_EXPORT KV_Control* KV_GetKeyControl(const KV_Dialog* iDialog)
{
    return iDialog ? iDialog->keyControl : nullptr;
}

KORVANE_TOOLBOX_EXPORT int KV_TrackMouseDown(const KV_Control* iControl, int* oMouseX, int* oMouseY)
{
    return guarded("KV_TrackMouseDown", 0, [&]() -> int {
        if (!iControl || !iControl->dialog->pointer)
            return 0;
        korvane::Point at{oMouseX ? *oMouseX : 0, oMouseY ? *oMouseY : 0};
        const bool down = iControl->dialog->pointer(at);
        if (oMouseX)
            *oMouseX = at.x;
        if (oMouseY)
            *oMouseY = at.y;
        return down ? 1 : 0;
    });
}

KORVANE_TOOLBOX_EXPORT int KV_GetControlImageID(const KV_Control* iControl)
{
    return iControl ? iControl->imageID : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlImageID(KV_Control* ioControl, int iImageID)
{
    if (ioControl)
        ioControl->imageID = iImageID;
}

KORVANE_TOOLBOX_EXPORT void KV_GetPushButtonLayout(const KV_Control* iControl, int* oLabelPosition,
                                                   int* oIconPosition)
{
    if (!iControl)
        return;
    if (oLabelPosition)
        *oLabelPosition = iControl->labelPosition;
    if (oIconPosition)
        *oIconPosition = iControl->iconPosition;
}

KORVANE_TOOLBOX_EXPORT void KV_SetPushButtonLayout(KV_Control* ioControl, int iLabelPosition, int iIconPosition)
{
    if (ioControl) {
        ioControl->labelPosition = iLabelPosition;
        ioControl->iconPosition = iIconPosition;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_SetControlHitFunction(KV_Control* ioControl, KV_ControlHitFunction iFunction)
{
    if (ioControl)
        ioControl->hit = iFunction;
}

KORVANE_TOOLBOX_EXPORT void KV_SetUserControlDraw(KV_Control* ioControl, KV_UserDrawFunction iFunction)
{
    if (ioControl) {
        ioControl->draw = iFunction;
        ioControl->invalid = true;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_SetUserControlClick(KV_Control* ioControl, KV_UserClickFunction iFunction)
{
    if (ioControl)
        ioControl->click = iFunction;
}

KORVANE_TOOLBOX_EXPORT void KV_SetUserControlMouseMoved(KV_Control* ioControl, KV_UserMouseMovedFunction iFunction)
{
    if (ioControl)
        ioControl->mouseMoved = iFunction;
}

// ---- Edit texts --------------------------------------------------------------

KORVANE_TOOLBOX_EXPORT void KV_SetEditTextString(KV_Control* ioControl, const char* iEditString)
{
    guardedVoid("KV_SetEditTextString", [&] {
        if (!ioControl || !iEditString)
            return;
        ioControl->editText = iEditString;
        const int length = static_cast<int>(std::min<std::size_t>(ioControl->editText.size(), INT32_MAX));
        ioControl->selectionStart = std::min(ioControl->selectionStart, length);
        ioControl->selectionEnd = std::min(ioControl->selectionEnd, length);
    });
}

KORVANE_TOOLBOX_EXPORT int KV_GetEditTextStringSize(const KV_Control* iControl)
{
    return iControl ? korvane::toolbox::textRoom(iControl->editText) : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_GetEditTextString(const KV_Control* iControl, char* oBuffer, int* ioNumChars)
{
    if (iControl)
        korvane::toolbox::copyText(iControl->editText, oBuffer, ioNumChars);
}

KORVANE_TOOLBOX_EXPORT void KV_SetEditTextSelection(KV_Control* ioControl, int iSelectionStart, int iSelectionEnd)
{
    if (!ioControl)
        return;
    // Clamped to the text: "0 to 10000" selects all of a short text.
    const int length = static_cast<int>(std::min<std::size_t>(ioControl->editText.size(), INT32_MAX));
    const int start = std::clamp(iSelectionStart, 0, length);
    ioControl->selectionStart = start;
    ioControl->selectionEnd = std::clamp(iSelectionEnd, start, length);
}

KORVANE_TOOLBOX_EXPORT void KV_GetEditTextSelection(const KV_Control* iControl, int* oSelectionStart,
                                                    int* oSelectionEnd)
{
    if (!iControl)
        return;
    if (oSelectionStart)
        *oSelectionStart = iControl->selectionStart;
    if (oSelectionEnd)
        *oSelectionEnd = iControl->selectionEnd;
}

KORVANE_TOOLBOX_EXPORT void KV_SetEditTextFilter(KV_Control* ioControl, KV_EditFilterType iFilterType,
                                                 KV_EditFilterFunction iFunction)
{
    if (!ioControl || iFilterType < cKV_NoFilter || iFilterType > cKV_Custom)
        return;
    ioControl->filter = iFilterType;
    ioControl->filterFunction = iFunction;
}

// ---- Colour buttons ----------------------------------------------------------

KORVANE_TOOLBOX_EXPORT void KV_SetColorButtonColor(KV_Control* ioControl, int iRed, int iGreen, int iBlue,
                                                   int iAlpha)
{
    if (!ioControl)
        return;
    ioControl->red = korvane::toolbox::component(iRed);
    ioControl->green = korvane::toolbox::component(iGreen);
    ioControl->blue = korvane::toolbox::component(iBlue);
    ioControl->alpha = korvane::toolbox::component(iAlpha);
}

KORVANE_TOOLBOX_EXPORT void KV_GetColorButtonColor(const KV_Control* iControl, int* oRed, int* oGreen, int* oBlue,
                                                   int* oAlpha)
{
    if (!iControl)
        return;
    if (oRed)
        *oRed = iControl->red;
    if (oGreen)
        *oGreen = iControl->green;
    if (oBlue)
        *oBlue = iControl->blue;
    if (oAlpha)
        *oAlpha = iControl->alpha;
}

} // extern "C"
