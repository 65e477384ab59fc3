// DialogTemplate.cpp - encoding and decoding 'KDLG' resources (layout in the header).

#include "korvane/DialogTemplate.h"

#include "korvane/BigEndian.h"
#include "korvane/ResourceFile.h"

namespace korvane {
namespace {

constexpr std::uint16_t kMaxControlType = 16;    // cKV_OpenGLControl
constexpr std::uint8_t kMaxEditFilter = 5;        // cKV_Custom
constexpr std::uint8_t kFlagMenuFromStyles = 0x01;

// Reads forward through a resource, refusing any read past its end.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint8_t u8(const char* what)
    {
        need(1, what);
        return bytes_[at_++];
    }
    std::uint16_t u16(const char* what)
    {
        need(2, what);
        const std::uint16_t v = be::readU16(bytes_, at_);
        at_ += 2;
        return v;
    }
    std::int16_t s16(const char* what) { return static_cast<std::int16_t>(u16(what)); }
    std::string text(const char* what)
    {
        const std::size_t length = u8(what);
        need(length, what);
        std::string s(reinterpret_cast<const char*>(bytes_.data() + at_), length);
        at_ += length;
        return s;
    }
    std::size_t offset() const { return at_; }
    bool atEnd() const { return at_ == bytes_.size(); }

private:
    void need(std::size_t count, const char* what) const
    {
        if (bytes_.size() - at_ < count)
            throw Error("dialog resource is truncated in " + std::string(what) + " at byte " +
                        std::to_string(at_) + " (resource has " + std::to_string(bytes_.size()) + " bytes)");
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

void appendText(std::vector<std::uint8_t>& out, const std::string& text, const char* what)
{
    if (text.size() > 255)
        throw Error(std::string(what) + " is longer than 255 bytes");
    be::appendU8(out, static_cast<std::uint32_t>(text.size()));
    out.insert(out.end(), text.begin(), text.end());
}

} // namespace

DialogTemplate decodeDialogTemplate(std::span<const std::uint8_t> bytes)
{
    Reader in(bytes);
    DialogTemplate dialog;
    const std::uint16_t version = in.u16("the header");
    if (version != kDialogTemplateVersion)
        throw Error("dialog resource has unknown version " + std::to_string(version));
    const std::uint8_t icon = in.u8("the header");
    if (icon > static_cast<std::uint8_t>(DialogIcon::caution))
        throw Error("dialog resource has unknown icon " + std::to_string(icon));
    dialog.icon = static_cast<DialogIcon>(icon);
    if (in.u8("the header") != 0)
        throw Error("dialog resource has a non-zero reserved header byte");
    dialog.width = in.s16("the header");
    dialog.height = in.s16("the header");
    dialog.title = in.text("the title");
    const std::uint16_t count = in.u16("the item count");
    dialog.items.reserve(count);
    for (std::uint16_t i = 0; i < count; ++i) {
        DialogItem item;
        item.id = in.s16("an item");
        const std::string where = "dialog item " + std::to_string(item.id);
        item.kind = in.u16("an item");
        if (item.kind == 0 || item.kind > kMaxControlType)
            throw Error(where + " has unknown kind " + std::to_string(item.kind));
        item.left = in.s16("an item");
        item.top = in.s16("an item");
        item.right = in.s16("an item");
        item.bottom = in.s16("an item");
        const std::uint8_t role = in.u8("an item");
        if (role > static_cast<std::uint8_t>(DialogRole::cancel))
            throw Error(where + " has unknown role " + std::to_string(role));
        item.role = static_cast<DialogRole>(role);
        const std::uint8_t flags = in.u8("an item");
        if ((flags & ~kFlagMenuFromStyles) != 0)
            throw Error(where + " has unknown flags " + std::to_string(flags));
        item.menuFromStyles = (flags & kFlagMenuFromStyles) != 0;
        item.editFilter = in.u8("an item");
        if (item.editFilter > kMaxEditFilter)
            throw Error(where + " has unknown edit filter " + std::to_string(item.editFilter));
        if (in.u8("an item") != 0)
            throw Error(where + " has a non-zero reserved byte");
        item.label = in.text("an item's label");
        const std::uint16_t menuCount = in.u16("a menu");
        for (std::uint16_t m = 0; m < menuCount; ++m)
            item.menu.push_back(in.text("a menu item"));
        dialog.items.push_back(std::move(item));
    }
    if (!in.atEnd())
        throw Error("dialog resource has " + std::to_string(bytes.size() - in.offset()) +
                    " unexpected bytes after its last item");
    return dialog;
}

std::vector<std::uint8_t> encodeDialogTemplate(const DialogTemplate& dialog)
{
    std::vector<std::uint8_t> out;
    be::appendU16(out, kDialogTemplateVersion);
    be::appendU8(out, static_cast<std::uint8_t>(dialog.icon));
    be::appendU8(out, 0);
    be::appendU16(out, static_cast<std::uint16_t>(dialog.width));
    be::appendU16(out, static_cast<std::uint16_t>(dialog.height));
    appendText(out, dialog.title, "dialog title");
    if (dialog.items.size() > 0xFFFF)
        throw Error("dialog has more than 65535 items");
    be::appendU16(out, static_cast<std::uint32_t>(dialog.items.size()));
    for (const DialogItem& item : dialog.items) {
        be::appendU16(out, static_cast<std::uint16_t>(item.id));
        be::appendU16(out, item.kind);
        be::appendU16(out, static_cast<std::uint16_t>(item.left));
        be::appendU16(out, static_cast<std::uint16_t>(item.top));
        be::appendU16(out, static_cast<std::uint16_t>(item.right));
        be::appendU16(out, static_cast<std::uint16_t>(item.bottom));
        be::appendU8(out, static_cast<std::uint8_t>(item.role));
        be::appendU8(out, item.menuFromStyles ? kFlagMenuFromStyles : 0);
        be::appendU8(out, item.editFilter);
        be::appendU8(out, 0);
        appendText(out, item.label, "item label");
        if (item.menu.size() > 0xFFFF)
            throw Error("dialog item has more than 65535 menu items");
        be::appendU16(out, static_cast<std::uint32_t>(item.menu.size()));
        for (const std::string& entry : item.menu)
            appendText(out, entry, "menu item");
    }
    return out;
}

} // namespace korvane
