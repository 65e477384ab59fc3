// A small fake host: dialogs of controls held in memory, a home folder and a
// resource file, exported as KV_ functions. The dialog helpers run inside
// kit_probe as they would inside a plug-in and find these functions by name.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "KitProbe.h"

struct KV_Control {
    int id = 0;
    KV_ControlType type = cKV_NoControlType;
    int value = 0;
    std::string title;
    std::string text;
    int color[4] = {0, 0, 0, 0};  // red, green, blue, alpha
};

struct KV_Dialog {
    int resourceID = 0;
    std::vector<KV_Control> controls;
};

struct KV_DirectoryRef {
    int tag;
};
struct KV_FileRef {
    int tag;
};
struct KV_ResourceFile {
    int tag;
};

namespace {

// What the host saw, in order.
std::vector<std::string> gEvents;
std::vector<int> gVisitedIndexes;
// The alert the host shows, and what it answers.
KV_Dialog gAlert;
bool gMakeDialogFails = false;
int gExecuteAnswer = 1;
std::vector<std::string> gShownAlerts;  // "id:text of the static text"
// Files.
KV_DirectoryRef gHome{1};
KV_FileRef gFileRef{2};
KV_ResourceFile gResourceFile{3};
bool gMakeFileRefFails = false;
struct FileRefRequest {
    const KV_DirectoryRef* directory;
    std::string name;
    uint32_t type;
    std::string extension;
} gFileRefRequest;
// KV_SetRect's arguments.
struct SetRectCall {
    KV_Rect* rect;
    int left, top, right, bottom;
} gSetRect;

// Text out through (oBuffer, ioNumChars): room includes the terminator.
void CopyOut(const std::string& text, char* oBuffer, int* ioNumChars)
{
    if (oBuffer == nullptr || ioNumChars == nullptr || *ioNumChars <= 0)
        return;
    const int n = std::min(static_cast<int>(text.size()), *ioNumChars - 1);
    std::memcpy(oBuffer, text.data(), static_cast<size_t>(n));
    oBuffer[n] = '\0';
    *ioNumChars = n;
}

int SizeOf(const std::string& text)
{
    return static_cast<int>(text.size()) + 1;
}

}  // namespace

// The host's functions. KV_GetControlBounds, KV_InsetRect and most others
// are deliberately missing.
extern "C" {

int KV_GetAPIVersion(void)
{
    return 42;
}

void KV_SetRect(KV_Rect* oRect, int iLeft, int iTop, int iRight, int iBottom)
{
    gSetRect = {oRect, iLeft, iTop, iRight, iBottom};
    if (oRect != nullptr)
        *oRect = KV_Rect{iLeft, iTop, iRight, iBottom};
}

KV_Control* KV_FindControlByID(const KV_Dialog* iDialog, int iControlID)
{
    if (iDialog == nullptr)
        return nullptr;
    for (KV_Control& c : const_cast<KV_Dialog*>(iDialog)->controls)
        if (c.id == iControlID)
            return &c;
    return nullptr;
}

int KV_CountControls(const KV_Dialog* iDialog)
{
    return iDialog != nullptr ? static_cast<int>(iDialog->controls.size()) : 0;
}

KV_Control* KV_FindControlByIndex(const KV_Dialog* iDialog, int iIndex)
{
    gVisitedIndexes.push_back(iIndex);
    if (iDialog == nullptr || iIndex < 0 || iIndex >= static_cast<int>(iDialog->controls.size()))
        return nullptr;
    return &const_cast<KV_Dialog*>(iDialog)->controls[static_cast<size_t>(iIndex)];
}

KV_ControlType KV_GetControlType(const KV_Control* iControl)
{
    return iControl != nullptr ? iControl->type : cKV_NoControlType;
}

int KV_GetControlValue(const KV_Control* iControl)
{
    return iControl != nullptr ? iControl->value : 0;
}

void KV_SetControlValue(KV_Control* ioControl, int iNewValue)
{
    if (ioControl != nullptr)
        ioControl->value = iNewValue;
}

int KV_GetControlTitleSize(const KV_Control* iControl)
{
    return iControl != nullptr ? SizeOf(iControl->title) : 0;
}

void KV_GetControlTitle(const KV_Control* iControl, char* oBuffer, int* ioNumChars)
{
    if (iControl != nullptr)
        CopyOut(iControl->title, oBuffer, ioNumChars);
}

void KV_SetControlTitle(KV_Control* ioControl, const char* iTitle)
{
    gEvents.push_back("title " + std::to_string(ioControl != nullptr ? ioControl->id : -1));
    if (ioControl != nullptr && iTitle != nullptr)
        ioControl->title = iTitle;
}

int KV_GetEditTextStringSize(const KV_Control* iControl)
{
    return iControl != nullptr ? SizeOf(iControl->text) : 0;
}

void KV_GetEditTextString(const KV_Control* iControl, char* oBuffer, int* ioNumChars)
{
    if (iControl != nullptr)
        CopyOut(iControl->text, oBuffer, ioNumChars);
}

void KV_SetEditTextString(KV_Control* ioControl, const char* iEditString)
{
    if (ioControl != nullptr && iEditString != nullptr)
        ioControl->text = iEditString;
}

void KV_SetKeyControl(KV_Control* iControl)
{
    gEvents.push_back("key " + std::to_string(iControl->id));
}

void KV_SetEditTextSelection(KV_Control* ioControl, int iSelectionStart, int iSelectionEnd)
{
    gEvents.push_back("select " + std::to_string(ioControl->id) + " " +
                      std::to_string(iSelectionStart) + " " + std::to_string(iSelectionEnd));
}

void KV_SetColorButtonColor(KV_Control* ioControl, int iRed, int iGreen, int iBlue, int iAlpha)
{
    ioControl->color[0] = iRed;
    ioControl->color[1] = iGreen;
    ioControl->color[2] = iBlue;
    ioControl->color[3] = iAlpha;
}

void KV_GetColorButtonColor(const KV_Control* iControl, int* oRed, int* oGreen, int* oBlue,
                            int* oAlpha)
{
    *oRed = iControl->color[0];
    *oGreen = iControl->color[1];
    *oBlue = iControl->color[2];
    *oAlpha = iControl->color[3];
}

void KV_SetUserControlDraw(KV_Control* ioControl, KV_UserDrawFunction)
{
    gEvents.push_back("draw " + std::to_string(ioControl->id));
}

void KV_SetUserControlClick(KV_Control* ioControl, KV_UserClickFunction)
{
    gEvents.push_back("click " + std::to_string(ioControl->id));
}

void KV_SetControlHitFunction(KV_Control* ioControl, KV_ControlHitFunction)
{
    gEvents.push_back("hit " + std::to_string(ioControl->id));
}

void KV_SetControlVisible(KV_Control* ioControl, int iVisible)
{
    gEvents.push_back(std::string(ioControl != nullptr ? "visible " : "visible null ") +
                      std::to_string(iVisible));
}

KV_Dialog* KV_MakeDialog(KV_ResourceFile* iResourceFile, int iDialogID)
{
    gEvents.push_back("make " + std::to_string(iDialogID) +
                      (iResourceFile == &gResourceFile ? "" : " (other file)"));
    if (gMakeDialogFails)
        return nullptr;
    gAlert.resourceID = iDialogID;
    gAlert.controls = {{1, cKV_PushButton, 0, "OK", "", {}},
                       {3, cKV_StaticText, 0, "Alert: ^0", "", {}}};
    return &gAlert;
}

int KV_ExecuteDialog(KV_Dialog* iDialog)
{
    gShownAlerts.push_back(std::to_string(iDialog->resourceID) + ":" + iDialog->controls[1].title);
    return gExecuteAnswer;
}

void KV_DestroyDialog(KV_Dialog* iDialog)
{
    gEvents.push_back("destroy " + std::to_string(iDialog->resourceID));
}

KV_DirectoryRef* KV_GetHomeDirectory(void)
{
    gEvents.push_back("home");
    return &gHome;
}

KV_FileRef* KV_MakeFileRef(const KV_DirectoryRef* iDirectoryRef, const char* iNameString,
                           uint32_t iFileType, const char* iExtensionString)
{
    gFileRefRequest = {iDirectoryRef, iNameString, iFileType, iExtensionString};
    gEvents.push_back("file ref");
    return gMakeFileRefFails ? nullptr : &gFileRef;
}

KV_ResourceFile* KV_OpenResourceFile(const KV_FileRef* iFileRef)
{
    gEvents.push_back(iFileRef == &gFileRef ? "open" : "open (other ref)");
    return &gResourceFile;
}

void KV_DestroyFileRef(KV_FileRef* iFileRef)
{
    gEvents.push_back(iFileRef == &gFileRef ? "destroy file ref" : "destroy other file ref");
}

void KV_DestroyDirectoryRef(KV_DirectoryRef* iDirectoryRef)
{
    gEvents.push_back(iDirectoryRef == &gHome ? "destroy home" : "destroy other directory");
}

}  // extern "C"

namespace {

std::string Text(const unsigned char* p)
{
    return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
}

// A Pascal string made from text, for arguments.
struct PText {
    PStr255 bytes;
    explicit PText(const std::string& s)
    {
        const size_t n = std::min<size_t>(s.size(), 255);
        bytes[0] = static_cast<unsigned char>(n);
        std::memcpy(bytes + 1, s.data(), n);
    }
    operator const unsigned char*() const { return bytes; }
};

class FakeHostTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gEvents.clear();
        gVisitedIndexes.clear();
        gShownAlerts.clear();
        gMakeDialogFails = false;
        gMakeFileRefFails = false;
        gExecuteAnswer = 1;
        kit = KitProbe();
        kit->InitUtils();
        dialog.controls = {
            {5, cKV_PopupMenu, 0, "Style", "", {}},
            {6, cKV_EditText, 0, "", "", {}},
            {14, cKV_CheckBox, 0, "Use aspect ratio", "", {}},
            {16, cKV_UserControl, 0, "", "", {}},
            {28, cKV_ColorButton, 0, "", "", {}},
        };
    }
    KV_Control& Item(int id) { return *KV_FindControlByID(&dialog, id); }

    const KitProbeTable* kit = nullptr;
    KV_Dialog dialog;
};

TEST_F(FakeHostTest, WrappersReachTheHostWithTheirArgumentsAndAbsentOnesDoNothing)
{
    EXPECT_EQ(kit->KV_GetAPIVersion(), 42);
    KV_Rect r{0, 0, 0, 0};
    kit->KV_SetRect(&r, -3, 7, 300, 2000000000);
    EXPECT_EQ(gSetRect.rect, &r);
    EXPECT_EQ(gSetRect.left, -3);
    EXPECT_EQ(gSetRect.top, 7);
    EXPECT_EQ(gSetRect.right, 300);
    EXPECT_EQ(gSetRect.bottom, 2000000000);
    // This host has no KV_InsetRect and no KV_GetControlBounds.
    kit->KV_InsetRect(&r, 1, 1);
    EXPECT_EQ(r.left, -3);
    KV_Rect bounds{9, 9, 9, 9};
    kit->GetTheIRect(&dialog, 16, &bounds);
    EXPECT_EQ(bounds.right, 9);
    EXPECT_EQ(kit->KV_MakeImageBuffer(&r), nullptr);
}

TEST_F(FakeHostTest, ButtonsAndPopUps)
{
    struct Case {
        int stored;
        bool toggled;      // ToggleButton's answer
        int afterToggle;
        int16_t popUp;     // the value as a signed 16-bit index
    } const cases[] = {
        {0, true, 1, 0},
        {1, false, 0, 1},
        {5, false, 0, 5},
        {-1, false, 0, -1},
        {70000, false, 0, 4464},
        {32768, false, 0, -32768},
    };
    for (const Case& c : cases) {
        kit->SetButton(&dialog, 14, c.stored);
        EXPECT_EQ(kit->GetButton(&dialog, 14), c.stored);
        kit->SetButton(&dialog, 5, c.stored);
        EXPECT_EQ(kit->GetTheIPopUp(&dialog, 5), c.popUp) << c.stored;
        EXPECT_EQ(kit->ToggleButton(&dialog, 14), c.toggled) << c.stored;
        EXPECT_EQ(Item(14).value, c.afterToggle);
    }
    kit->SetTheIPopUp(&dialog, 5, -2);
    EXPECT_EQ(Item(5).value, -2);
    // A missing item is left alone and reads as 0.
    kit->SetButton(&dialog, 99, 1);
    EXPECT_EQ(kit->GetButton(&dialog, 99), 0);
    EXPECT_FALSE(kit->ToggleButton(&dialog, 99));
    EXPECT_EQ(kit->GetTheIType(&dialog, 99), cKV_NoControlType);
    EXPECT_EQ(kit->GetTheIType(&dialog, 28), cKV_ColorButton);
}

TEST_F(FakeHostTest, RealNumbersWrittenTrimmed)
{
    struct Case {
        double value;
        int16_t digits;
        const char* text;
    } const cases[] = {{2.5, 8, "2.5"}, {3.0, 8, "3"}, {-1e-10, 8, "0"}, {2.5, -2, "2.50"}};
    for (const Case& c : cases) {
        kit->SetTheIReal(&dialog, 6, c.value, c.digits);
        EXPECT_EQ(Item(6).text, c.text) << c.value << " with " << c.digits;
    }
}

TEST_F(FakeHostTest, RealNumbersReadBack)
{
    struct Case {
        const char* text;
        double value;
    } const cases[] = {
        {"abc", 0.0},     {"2.5", 2.5},   {"  -3e2xyz", -300.0}, {"", 0.0},
        {"-0", 0.0},      {"inf", 0.0},   {"-inf", 0.0},         {"nan", 0.0},
        {"1e999", 0.0},   {"0.1", 0.1},   {"7.", 7.0},
    };
    for (const Case& c : cases) {
        Item(6).text = c.text;
        const double read = kit->GetTheIReal(&dialog, 6);
        EXPECT_EQ(read, c.value) << c.text;
        EXPECT_FALSE(std::signbit(read) && read == 0.0) << c.text;
    }
}

TEST_F(FakeHostTest, WholeNumbers)
{
    struct Case {
        std::string text;
        int32_t value;
    } const cases[] = {
        {"123abc", 123},
        {"abc", 0},
        {"-42", -42},
        {"99999999999", INT32_MAX},
        {"-99999999999", INT32_MIN},
        // only the first 50 characters are read
        {std::string(49, ' ') + "12", 1},
        {std::string(48, ' ') + "12", 12},
    };
    for (const Case& c : cases) {
        Item(6).text = c.text;
        EXPECT_EQ(kit->GetTheINum(&dialog, 6), c.value) << c.text;
    }
    kit->SetTheINum(&dialog, 6, INT32_MIN);
    EXPECT_EQ(Item(6).text, "-2147483648");
}

TEST_F(FakeHostTest, TextsAndTitlesAsPascalStrings)
{
    kit->SetTheIText(&dialog, 6, PText("hello"));
    EXPECT_EQ(Item(6).text, "hello");
    PStr255 s;
    kit->GetTheIText(&dialog, 6, s);
    EXPECT_EQ(Text(s), "hello");

    Item(14).title = std::string(300, 't');
    EXPECT_EQ(kit->GetButtonName(&dialog, 14, s), s);
    EXPECT_EQ(Text(s), std::string(255, 't'));
    kit->SetButtonName(&dialog, 14, PText("Grey rings"));
    EXPECT_EQ(Item(14).title, "Grey rings");

    kit->SetControlIDTitle(&dialog, 14, "Plain");
    EXPECT_EQ(Item(14).title, "Plain");
    kit->SetEditTextIDString(&dialog, 6, "1.5");
    EXPECT_EQ(Item(6).text, "1.5");
}

TEST_F(FakeHostTest, SelectingAnItemSelectsAllOfAnEditText)
{
    kit->SelectItem(&dialog, 6);
    kit->SelectItem(&dialog, 14);
    kit->SelectItem(&dialog, 99);
    EXPECT_EQ(gEvents, (std::vector<std::string>{"key 6", "select 6 0 10000", "key 14"}));
}

TEST_F(FakeHostTest, RoutinesAndVisibilityGoToTheFoundControl)
{
    kit->SetUserControlIDFunctions(&dialog, 16, nullptr, nullptr);
    kit->SetControlIDHitFunction(&dialog, 14, nullptr);
    kit->SetUserControlIDFunctions(&dialog, 99, nullptr, nullptr);
    kit->SetControlIDHitFunction(&dialog, 99, nullptr);
    // These three pass even a missing control on to the host.
    kit->SetControlIDVisible(&dialog, 14, 1);
    kit->SetControlIDVisible(&dialog, 99, 0);
    EXPECT_EQ(gEvents, (std::vector<std::string>{"draw 16", "click 16", "hit 14", "visible 1",
                                                 "visible null 0"}));
}

TEST_F(FakeHostTest, ColorButtonsAsARGB)
{
    ARGB in;
    in.argb = {1, 2, 3, 4};
    kit->SetColorButtonIDARGB(&dialog, 28, &in);
    EXPECT_EQ(Item(28).color[0], 2);
    EXPECT_EQ(Item(28).color[1], 3);
    EXPECT_EQ(Item(28).color[2], 4);
    EXPECT_EQ(Item(28).color[3], 1);

    Item(28).color[0] = 255;
    Item(28).color[1] = 0;
    Item(28).color[2] = 128;
    Item(28).color[3] = 64;
    ARGB out;
    out.colorValue = 0;
    kit->GetColorButtonIDARGB(&dialog, 28, &out);
    EXPECT_EQ(out.argb.a, 64);
    EXPECT_EQ(out.argb.r, 255);
    EXPECT_EQ(out.argb.g, 0);
    EXPECT_EQ(out.argb.b, 128);
}

// SetParamText: one counter serves as control index and character position.
struct ParamCase {
    const char* what;
    std::vector<KV_Control> controls;
    std::vector<const char*> texts;  // text0..text3, null for none
    std::vector<std::string> titles; // the titles afterwards
    std::vector<int> visited;        // indexes looked up, in order (empty: not checked)
};

void PrintTo(const ParamCase& c, std::ostream* os)
{
    *os << c.what;
}

KV_Control Static(int id, const std::string& title)
{
    return {id, cKV_StaticText, 0, title, "", {}};
}

KV_Control Button(int id, const std::string& title)
{
    return {id, cKV_PushButton, 0, title, "", {}};
}

std::vector<ParamCase> ParamCases()
{
    const std::string x250(250, 'x');
    return {
        {"replaces placeholders, skips other kinds",
         {Button(1, "OK ^0"), Static(3, "Error: ^0 (^1)")},
         {"disk", "7", nullptr, nullptr},
         {"OK ^0", "Error: disk (7)"},
         {0, 1}},
        {"the scan position becomes the next control index",
         {Static(1, "^0"), Static(2, "^1 x"), Static(3, "^2"), Static(4, "^3")},
         {"ab", "c", "d", "e"},
         {"ab", "^1 x", "^2", "^3"},
         {0}},
        {"a text without placeholders also moves the counter",
         {Static(1, "Hello"), Static(2, "^0"), Static(3, "^0"), Static(4, "^0"), Static(5, "^0"),
          Static(6, "^0"), Static(7, "^0 the end")},
         {"X", nullptr, nullptr, nullptr},
         {"Hello", "^0", "^0", "^0", "^0", "^0", "X the end"},
         {0, 6}},
        {"inserted text is not scanned again",
         {Static(1, "^0^1")},
         {"^1", "Q", nullptr, nullptr},
         {"^1Q"},
         {}},
        {"only carets before 0 to 3 count; the last character is not scanned",
         {Static(1, "^4 ^ ^0 ^3^")},
         {"A", nullptr, nullptr, "D"},
         {"^4 ^ A D^"},
         {}},
        {"missing texts are empty",
         {Static(1, "a^2b^3c")},
         {nullptr, nullptr, nullptr, nullptr},
         {"abc"},
         {}},
        {"the title is cut to make room for the inserted text",
         {Static(1, x250 + "^0")},
         {"0123456789", nullptr, nullptr, nullptr},
         {std::string(245, 'x') + "0123456789"},
         {}},
    };
}

class SetParamTextTest : public FakeHostTest, public ::testing::WithParamInterface<ParamCase> {};

TEST_P(SetParamTextTest, FollowsTheSharedCounter)
{
    const ParamCase& c = GetParam();
    dialog.controls = c.controls;
    std::vector<PText> texts;
    const unsigned char* args[4] = {nullptr, nullptr, nullptr, nullptr};
    texts.reserve(4);
    for (size_t i = 0; i < 4; ++i)
        if (c.texts[i] != nullptr)
            args[i] = texts.emplace_back(c.texts[i]);
    kit->SetParamText(&dialog, args[0], args[1], args[2], args[3]);
    ASSERT_EQ(dialog.controls.size(), c.titles.size());
    for (size_t i = 0; i < c.titles.size(); ++i)
        EXPECT_EQ(dialog.controls[i].title, c.titles[i]) << c.what << ", control " << i;
    if (!c.visited.empty()) {
        EXPECT_EQ(gVisitedIndexes, c.visited) << c.what;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, SetParamTextTest, ::testing::ValuesIn(ParamCases()));

TEST_F(FakeHostTest, SetParamTextEndsWhenTheCounterGoesRoundInCircles)
{
    // Index 2 holds a one-character text: its scan ends at 1, so the visit
    // would come back to index 2 for ever.
    dialog.controls = {Button(1, "OK"), Button(2, "Cancel"), Static(3, "A")};
    kit->SetParamText(&dialog, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(dialog.controls[2].title, "A");
    EXPECT_LE(gVisitedIndexes.size(), 2u * 3u + 256u);
}

TEST_F(FakeHostTest, AlertsShowTheirDialogWithTheText)
{
    using AlertRoutine = int (*)(KV_ResourceFile*, const unsigned char*);
    struct Case {
        AlertRoutine routine;
        int id;
    } const cases[] = {
        {kit->Stop, 9000}, {kit->Warning, 9002}, {kit->Message, 9003}, {kit->Caution, 9004}};
    for (const Case& c : cases) {
        SetUp();
        gExecuteAnswer = c.id;
        EXPECT_EQ(c.routine(&gResourceFile, PText("it broke")), c.id);
        EXPECT_EQ(gShownAlerts, std::vector<std::string>{std::to_string(c.id) + ":Alert: it broke"});
        EXPECT_EQ(gEvents.front(), "make " + std::to_string(c.id));
        EXPECT_EQ(gEvents.back(), "destroy " + std::to_string(c.id));
    }
    // No dialog: nothing shown, 0 answered.
    SetUp();
    gMakeDialogFails = true;
    EXPECT_EQ(kit->StandardDialog(&gResourceFile, 9000, PText("a"), nullptr, nullptr, nullptr), 0);
    EXPECT_TRUE(gShownAlerts.empty());
}

TEST_F(FakeHostTest, ErrorsAreShownOnceUntilInitUtils)
{
    kit->Error(&gResourceFile, PText("Disk full"), -5);
    EXPECT_TRUE(*kit->errorFlag);
    kit->Error(&gResourceFile, PText("Again"), 1);
    kit->StandardError(&gResourceFile, PText("And again"));
    EXPECT_EQ(gShownAlerts, std::vector<std::string>{"9000:Alert: Disk full: -5"});

    kit->InitUtils();
    EXPECT_FALSE(*kit->errorFlag);
    kit->StandardError(&gResourceFile, PText(""));  // empty: not shown, still counts
    EXPECT_TRUE(*kit->errorFlag);
    EXPECT_EQ(gShownAlerts.size(), 1u);

    kit->InitUtils();
    kit->StandardError(&gResourceFile, PText("Out of paper"));
    EXPECT_EQ(gShownAlerts.back(), "9000:Alert: Out of paper");

    kit->InitUtils();
    *kit->hideErrorFlag = true;
    kit->Error(&gResourceFile, PText("Hidden"), 2);
    EXPECT_TRUE(*kit->errorFlag);
    EXPECT_EQ(gShownAlerts.size(), 2u);
    kit->InitUtils();
    EXPECT_FALSE(*kit->hideErrorFlag);
}

TEST_F(FakeHostTest, OpenResourceFileBuildsTheReferenceInTheHomeFolder)
{
    EXPECT_EQ(kit->OpenResourceFile("Glintwave.rsc"), &gResourceFile);
    EXPECT_EQ(gFileRefRequest.directory, &gHome);
    EXPECT_EQ(gFileRefRequest.name, "Glintwave.rsc");
    EXPECT_EQ(gFileRefRequest.type, 0x72737263u);  // 'rsrc'
    EXPECT_EQ(gFileRefRequest.extension, "rsc");
    EXPECT_EQ(gEvents, (std::vector<std::string>{"home", "file ref", "open", "destroy file ref",
                                                 "destroy home"}));

    SetUp();
    gMakeFileRefFails = true;
    EXPECT_EQ(kit->OpenResourceFile("Glintwave.rsc"), nullptr);
    EXPECT_EQ(gEvents, (std::vector<std::string>{"home", "file ref", "destroy home"}));
}

}  // namespace
