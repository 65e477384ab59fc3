// Dialog resources: the stored form reads back exactly, and damaged ones are
// refused.

#include "korvane/DialogTemplate.h"
#include "korvane/ResourceFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>

namespace {

using korvane::DialogItem;
using korvane::DialogTemplate;

DialogTemplate sampleDialog()
{
    DialogTemplate dialog;
    dialog.icon = korvane::DialogIcon::caution;
    dialog.width = 300;
    dialog.height = -2;  // stored as given; the compiler checks sizes
    dialog.title = "Caf\x8E";
    DialogItem popup;
    popup.id = 5;
    popup.kind = 13;
    popup.left = -1;
    popup.top = 2;
    popup.right = 300;
    popup.bottom = 0x7FFF;
    popup.menuFromStyles = true;
    popup.menu = {"One", "", "Three"};
    popup.label = "Style";
    DialogItem ok;
    ok.id = -1;
    ok.kind = 1;
    ok.role = korvane::DialogRole::accept;
    ok.editFilter = 4;
    dialog.items = {popup, ok};
    return dialog;
}

TEST(DialogTemplate, ReadsBackWhatWasWritten)
{
    const DialogTemplate dialog = sampleDialog();
    const auto bytes = korvane::encodeDialogTemplate(dialog);
    EXPECT_EQ(korvane::decodeDialogTemplate(bytes), dialog);
    // Header: version 1, icon 4, reserved, width 300, height -2, title.
    const std::vector<std::uint8_t> head = {0, 1, 4, 0, 0x01, 0x2C, 0xFF, 0xFE, 4, 'C', 'a', 'f', 0x8E, 0, 2};
    EXPECT_TRUE(std::equal(head.begin(), head.end(), bytes.begin()));
}

TEST(DialogTemplate, UnknownCodesAreRefused)
{
    const auto bytes = korvane::encodeDialogTemplate(sampleDialog());
    // Offsets into the sample: first item starts after the 15-byte header.
    const struct {
        std::size_t at;
        std::uint8_t value;
        const char* message;
    } cases[] = {{1, 2, "unknown version"},   {2, 5, "unknown icon"},      {3, 1, "reserved"},
                 {18, 0, "unknown kind"},     {18, 17, "unknown kind"},   {27, 3, "unknown role"},
                 {28, 2, "unknown flags"},    {29, 6, "unknown edit filter"}, {30, 9, "reserved byte"}};
    for (const auto& c : cases) {
        auto damaged = bytes;
        damaged[c.at] = c.value;
        try {
            korvane::decodeDialogTemplate(damaged);
            ADD_FAILURE() << "accepted " << c.message;
        } catch (const korvane::ResourceError& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
    }
}

} // namespace
