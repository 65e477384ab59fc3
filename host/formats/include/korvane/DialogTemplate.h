// DialogTemplate.h - the host's dialog resources ('KDLG').
//
// A dialog resource describes a dialog window and its items; the host builds
// its controls from it (KV_MakeDialog). Binary layout, big-endian, no padding:
//
//   offset  size  field
//   0       2     version, always 1
//   2       1     icon: 0 none, 1 stop, 2 warning, 3 message, 4 caution
//   3       1     reserved, 0
//   4       2     width (S16, pixels)
//   6       2     height (S16, pixels)
//   8       1+n   title: a length byte and n characters
//   ..      2     item count (U16)
//   then per item, in the order the controls are created:
//           2     id (S16), unique within the dialog
//           2     kind: a KV_ControlType value, 1..16
//           8     bounds: left, top, right, bottom (S16 each, pixels from
//                 the dialog's top left corner; right and bottom exclusive)
//           1     role: 0 none, 1 accept (default button), 2 cancel
//           1     flags: bit 0 set when the menu items are the names of the
//                 flare styles, filled in by the resource compiler
//           1     edit filter: a KV_EditFilterType value, 0..5
//           1     reserved, 0
//           1+n   label (length byte and characters)
//           2     menu item count (U16), then each menu item as length byte
//                 and characters
//
// Texts are Mac OS Roman bytes. decodeDialogTemplate checks the structure and
// every length against the resource's size; it refuses unknown versions,
// kinds, roles, flags and filters, and trailing bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace korvane {

inline constexpr std::uint32_t kDialogResType = 0x4B444C47;  // 'KDLG'
inline constexpr std::uint16_t kDialogTemplateVersion = 1;

enum class DialogIcon : std::uint8_t { none = 0, stop = 1, warning = 2, message = 3, caution = 4 };
enum class DialogRole : std::uint8_t { none = 0, accept = 1, cancel = 2 };

struct DialogItem {
    std::int16_t id = 0;
    std::uint16_t kind = 0;  // KV_ControlType
    std::int16_t left = 0;
    std::int16_t top = 0;
    std::int16_t right = 0;
    std::int16_t bottom = 0;
    DialogRole role = DialogRole::none;
    bool menuFromStyles = false;
    std::uint8_t editFilter = 0;  // KV_EditFilterType
    std::string label;            // Mac OS Roman
    std::vector<std::string> menu;  // Mac OS Roman

    bool operator==(const DialogItem&) const = default;
};

struct DialogTemplate {
    DialogIcon icon = DialogIcon::none;
    std::int16_t width = 0;
    std::int16_t height = 0;
    std::string title;  // Mac OS Roman
    std::vector<DialogItem> items;

    bool operator==(const DialogTemplate&) const = default;
};

// Throws Error "<what is wrong>" (no file name: the caller adds it).
DialogTemplate decodeDialogTemplate(std::span<const std::uint8_t> bytes);
// Throws Error when a text is longer than 255 bytes or there are
// more than 65535 items or menu items.
std::vector<std::uint8_t> encodeDialogTemplate(const DialogTemplate& dialog);

} // namespace korvane
