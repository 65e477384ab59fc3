// SettingsTable.h - every setting of Glintwave's settings record, in one table.
//
// The table drives the render options (name, value grammar, range check and
// --help text), the metadata written with an image, and the user guide's
// options table (docs/user-guide.md). A setting is one field of the
// record's 128-byte header: a real number, a colour, or one bit of
// flareFlags.
//
// The header is a saved format (type 'FLAR', version 6, fields in the
// machine's byte order); the command builds it natively and leaves both
// element counts 0, so the plug-in starts the chosen style afresh with the
// style's own per-ring settings and writes the ring records behind the
// header itself.
#pragma once

#include "glintwave/GlintwaveRecords.h"
#include "korvane/Error.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace glintwave::cli {

enum class SettingKind {
    Real,    // a double of the record
    Colour,  // an ARGB_Color of the record, written as #rrggbb or R,G,B
    Switch,  // one bit of flareFlags, written as on or off
};

struct Setting {
    std::string_view name;  // the option is --name; a switch also has --no-name
    SettingKind kind;
    std::string_view help;  // one line
    std::string_view unit;  // reals only
    double defaultValue;    // reals; switches 1 (on) or 0 (off)
    double minimum;
    double maximum;
    std::size_t offset;     // reals and colours: where the field lives in the header
    int bit;                // switches: the bit of flareFlags
    bool bitMeansOn;        // switches: a set bit turns the feature on (else off)
};

std::span<const Setting> settingsTable();

// The header with every setting at its default, style 1, no element counts.
ControlDataRec defaultSettings();

// Sets one setting from its text form (a real, a colour, or on/off).
// Throws korvane::Error saying what would fit.
void applySetting(ControlDataRec& settings, const Setting& setting, std::string_view text);
void setSwitch(ControlDataRec& settings, const Setting& setting, bool on);

// The text form of a setting's value in the header, which applySetting reads back.
std::string formatSetting(const ControlDataRec& settings, const Setting& setting);

// "value range unit and default" for --help: "0 to 10, default 1".
std::string settingRange(const Setting& setting);

// Every setting as the options that give it: "--rotation 0 ... --no-halo".
std::string settingsAsOptions(const ControlDataRec& settings);

// The header as the bytes of a settings block.
std::vector<std::uint8_t> settingsBlock(const ControlDataRec& settings);

} // namespace glintwave::cli
