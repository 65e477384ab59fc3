// SettingsTable.cpp - the table of Glintwave's settings and the record it fills.

#include "SettingsTable.h"

#include "ValueGrammar.h"

#include "korvane/NumberText.h"

#include <array>
#include <cstring>

namespace glintwave::cli {
namespace {

constexpr double kWhite = 0xFFFFFF;

// The dialog's fields accept any value; these ranges keep a typed value
// within what renders sensibly (a scale of 10 already fills a 4K frame).
constexpr std::array kSettings = {
    Setting{"rotation", SettingKind::Real, "turns the whole flare about the light", "degrees", 0, -360, 360,
            offsetof(ControlDataRec, flareRotation), 0, false},
    Setting{"aspect-ratio", SettingKind::Real, "stretches rings across (needs --use-aspect-ratio)", "width/height",
            2, 0.05, 20, offsetof(ControlDataRec, flareAspectRatio), 0, false},
    Setting{"use-aspect-ratio", SettingKind::Switch, "draws rings with --aspect-ratio instead of round", "", 0, 0, 1,
            0, kFlagUseAspectRatio, true},
    Setting{"ring-scale", SettingKind::Real, "size of rings, halos and glows", "x", 1, 0, 10,
            offsetof(ControlDataRec, flareRingScale), 0, false},
    Setting{"ring-intensity", SettingKind::Real, "brightness of rings, halos and glows", "x", 1, 0, 10,
            offsetof(ControlDataRec, flareRingIntensity), 0, false},
    Setting{"ring-contrast", SettingKind::Real, "contrast of rings (above 1 darkens mid-tones)", "power", 1, 0.05,
            10, offsetof(ControlDataRec, flareRingContrast), 0, false},
    Setting{"streak-scale", SettingKind::Real, "length of streaks", "x", 1, 0, 10,
            offsetof(ControlDataRec, flareStreakScale), 0, false},
    Setting{"streak-intensity", SettingKind::Real, "brightness of streaks", "x", 1, 0, 10,
            offsetof(ControlDataRec, flareStreakIntensity), 0, false},
    Setting{"streak-contrast", SettingKind::Real, "contrast of streaks (above 1 darkens mid-tones)", "power", 1,
            0.05, 10, offsetof(ControlDataRec, flareStreakContrast), 0, false},
    Setting{"origin-glow-color", SettingKind::Colour, "tint of the glow at the light", "", kWhite, 0, 0,
            offsetof(ControlDataRec, flareOriginGlowColor), 0, false},
    Setting{"outer-glow-color", SettingKind::Colour, "tint of the wide glow around the light", "", kWhite, 0, 0,
            offsetof(ControlDataRec, flareOuterGlowColor), 0, false},
    Setting{"halo-color", SettingKind::Colour, "tint of the halo", "", kWhite, 0, 0,
            offsetof(ControlDataRec, flareHaloColor), 0, false},
    Setting{"ring-color", SettingKind::Colour, "tint of rings and reflections", "", kWhite, 0, 0,
            offsetof(ControlDataRec, flareRingColor), 0, false},
    Setting{"streak-color", SettingKind::Colour, "tint of streaks", "", kWhite, 0, 0,
            offsetof(ControlDataRec, flareStreakColor), 0, false},
    Setting{"origin-glow", SettingKind::Switch, "draws the glow at the light", "", 1, 0, 1, 0, kFlagNoOriginGlow,
            false},
    Setting{"outer-glow", SettingKind::Switch, "draws the wide outer glow", "", 1, 0, 1, 0, kFlagNoOuterGlow, false},
    Setting{"halo", SettingKind::Switch, "draws the halo", "", 1, 0, 1, 0, kFlagNoHalo, false},
    Setting{"rings", SettingKind::Switch, "draws rings and reflections", "", 1, 0, 1, 0, kFlagNoRings, false},
    Setting{"streaks", SettingKind::Switch, "draws streaks", "", 1, 0, 1, 0, kFlagNoStreaks, false},
    Setting{"grey-rings", SettingKind::Switch, "rings take their brightest channel in all three", "", 0, 0, 1, 0,
            kFlagRingGray, true},
    Setting{"grey-streaks", SettingKind::Switch, "streaks take their brightest channel in all three", "", 0, 0, 1,
            0, kFlagStreakGray, true},
    Setting{"follow-light-size", SettingKind::Switch, "scales glows and streaks with --light-radius", "", 1, 0, 1, 0,
            kFlagNoLightSize, false},
    Setting{"follow-light-intensity", SettingKind::Switch, "scales brightness with --light-intensity", "", 1, 0, 1,
            0, kFlagNoLightIntensity, false},
    Setting{"follow-light-rotation", SettingKind::Switch, "turns the flare with --light-rotation", "", 1, 0, 1, 0,
            kFlagNoLightRotation, false},
};

double readDouble(const ControlDataRec& settings, std::size_t offset)
{
    double value = 0;
    std::memcpy(&value, reinterpret_cast<const unsigned char*>(&settings) + offset, sizeof value);
    return value;
}

void writeDouble(ControlDataRec& settings, std::size_t offset, double value)
{
    std::memcpy(reinterpret_cast<unsigned char*>(&settings) + offset, &value, sizeof value);
}

// Colours are 16-bit components: an 8-bit value v is v x 257, alpha full.
void writeColour(ControlDataRec& settings, std::size_t offset, const Rgb8& colour)
{
    const ARGB_Color wide = {static_cast<std::int16_t>(0xFFFF), static_cast<std::int16_t>(colour.red * 257),
                             static_cast<std::int16_t>(colour.green * 257),
                             static_cast<std::int16_t>(colour.blue * 257)};
    std::memcpy(reinterpret_cast<unsigned char*>(&settings) + offset, &wide, sizeof wide);
}

Rgb8 readColour(const ControlDataRec& settings, std::size_t offset)
{
    ARGB_Color wide;
    std::memcpy(&wide, reinterpret_cast<const unsigned char*>(&settings) + offset, sizeof wide);
    auto high = [](std::int16_t component) {
        return static_cast<std::uint8_t>(static_cast<std::uint16_t>(component) >> 8);
    };
    return Rgb8{high(wide.red), high(wide.green), high(wide.blue)};
}

bool switchIsOn(const ControlDataRec& settings, const Setting& setting)
{
    const bool bitSet = (settings.flareFlags & FLARE_FLAG(setting.bit)) != 0;
    return bitSet == setting.bitMeansOn;
}

} // namespace

std::span<const Setting> settingsTable()
{
    return kSettings;
}

ControlDataRec defaultSettings()
{
    ControlDataRec settings{};
    settings.ownerType = kFlareOwnerType;
    settings.ownerVersion = kFlareVersion;
    settings.flareLens = 1;
    for (const Setting& setting : kSettings) {
        switch (setting.kind) {
        case SettingKind::Real: writeDouble(settings, setting.offset, setting.defaultValue); break;
        case SettingKind::Colour: writeColour(settings, setting.offset, Rgb8{}); break;
        case SettingKind::Switch: setSwitch(settings, setting, setting.defaultValue != 0); break;
        }
    }
    return settings;
}

void setSwitch(ControlDataRec& settings, const Setting& setting, bool on)
{
    if (on == setting.bitMeansOn)
        settings.flareFlags |= FLARE_FLAG(setting.bit);
    else
        settings.flareFlags &= ~FLARE_FLAG(setting.bit);
}

void applySetting(ControlDataRec& settings, const Setting& setting, std::string_view text)
{
    const std::string quoted = "'" + std::string(text) + "'";
    switch (setting.kind) {
    case SettingKind::Real: {
        const auto value = parseReal(text);
        if (!value)
            throw korvane::Error(quoted + " is not a number; give a decimal number, " + settingRange(setting));
        if (*value < setting.minimum || *value > setting.maximum)
            throw korvane::Error(quoted + " is out of range; give " + settingRange(setting));
        writeDouble(settings, setting.offset, *value);
        break;
    }
    case SettingKind::Colour: {
        const auto colour = parseColour(text);
        if (!colour)
            throw korvane::Error(quoted + " is not a color; give #rrggbb (hex) or R,G,B (0-255 each)");
        writeColour(settings, setting.offset, *colour);
        break;
    }
    case SettingKind::Switch:
        if (text == "on" || text == "true" || text == "1")
            setSwitch(settings, setting, true);
        else if (text == "off" || text == "false" || text == "0")
            setSwitch(settings, setting, false);
        else
            throw korvane::Error(quoted + " is not a switch; give on or off");
        break;
    }
}

std::string formatSetting(const ControlDataRec& settings, const Setting& setting)
{
    switch (setting.kind) {
    case SettingKind::Real: return korvane::formatNumber(readDouble(settings, setting.offset));
    case SettingKind::Colour: return formatColour(readColour(settings, setting.offset));
    default: return switchIsOn(settings, setting) ? "on" : "off";
    }
}

std::string settingRange(const Setting& setting)
{
    switch (setting.kind) {
    case SettingKind::Real:
        return korvane::formatNumber(setting.minimum) + " to " + korvane::formatNumber(setting.maximum) +
               (setting.unit.empty() ? "" : " " + std::string(setting.unit)) +
               ", default " + korvane::formatNumber(setting.defaultValue);
    case SettingKind::Colour: return "#rrggbb or R,G,B, default #ffffff";
    default: return std::string("default ") + (setting.defaultValue != 0 ? "on" : "off");
    }
}

std::string settingsAsOptions(const ControlDataRec& settings)
{
    std::string options;
    for (const Setting& setting : kSettings) {
        if (!options.empty())
            options += ' ';
        if (setting.kind == SettingKind::Switch)
            options += (switchIsOn(settings, setting) ? "--" : "--no-") + std::string(setting.name);
        else
            options += "--" + std::string(setting.name) + " " + formatSetting(settings, setting);
    }
    return options;
}

std::vector<std::uint8_t> settingsBlock(const ControlDataRec& settings)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&settings);
    return std::vector<std::uint8_t>(bytes, bytes + sizeof settings);
}

} // namespace glintwave::cli
