// SceneOptions.cpp - settings and light options, parsed and range-checked.

#include "SceneOptions.h"

#include "korvane/NumberText.h"
#include "korvane/Spelling.h"

#include <cmath>

namespace glintwave::cli {
namespace {

constexpr double kMaxLightIntensity = 100;
constexpr double kMaxRotation = 360;

// The option's names for CLI11: its own, then the other spelling users may
// type ("--halo-color,--halo-colour"); --help shows the first only.
std::string namesOf(const std::string& option)
{
    const std::string alias = korvane::acceptedSpelling(option);
    return alias == option ? option : option + "," + alias;
}

// A switch's names: --NAME and --no-NAME, in both spellings.
std::string switchNamesOf(const std::string& name)
{
    const std::string alias = korvane::acceptedSpelling(name);
    const std::string names = "--" + name + ",!--no-" + name;
    return alias == name ? names : names + ",--" + alias + ",!--no-" + alias;
}

// A real option within [minimum, maximum].
void addReal(CLI::App& command, const std::string& name, double& target, double minimum, double maximum,
             const std::string& help)
{
    command
        .add_option_function<std::string>(
            "--" + name,
            [&target, name, minimum, maximum](const std::string& text) {
                const auto value = parseReal(text);
                if (!value || *value < minimum || *value > maximum)
                    throw CLI::ValidationError("--" + name, "'" + text + "' is not a number from " +
                                                                korvane::formatNumber(minimum) + " to " +
                                                                korvane::formatNumber(maximum));
                target = *value;
            },
            help)
        ->type_name("REAL")
        ->group("Light");
}

} // namespace

std::string SceneOptions::lightAsOptions() const
{
    return "--light " + formatLength(light.x) + "," + formatLength(light.y) + " --light-color " +
           formatColour(light.color) + " --light-intensity " + korvane::formatNumber(light.intensity) +
           " --light-radius " + formatLength(light.radius) +
           " --light-rotation " + korvane::formatNumber(light.rotation);
}

void addSettingOptions(CLI::App& command, ControlDataRec& settings)
{
    for (const Setting& setting : settingsTable()) {
        const std::string name(setting.name);
        const std::string help = std::string(setting.help) + " (" + settingRange(setting) + ")";
        if (setting.kind == SettingKind::Switch) {
            command
                .add_flag_function(
                    switchNamesOf(name),
                    [&settings, &setting](std::int64_t count) { setSwitch(settings, setting, count > 0); }, help)
                ->group("Flare settings");
            continue;
        }
        command
            .add_option_function<std::string>(
                namesOf("--" + name),
                [&settings, &setting, name](const std::string& text) {
                    try {
                        applySetting(settings, setting, text);
                    } catch (const korvane::Error& e) {
                        throw CLI::ValidationError("--" + name, e.what());
                    }
                },
                help)
            ->type_name(setting.kind == SettingKind::Colour ? "COLOR" : "REAL")
            ->group("Flare settings");
    }
}

void addLightOptions(CLI::App& command, SceneOptions& scene)
{
    command
        .add_option_function<std::string>(
            "--light",
            [&scene](const std::string& text) {
                const auto position = parsePosition(text);
                if (!position)
                    throw CLI::ValidationError("--light", "'" + text +
                                                              "' is not a position; give X,Y as fractions of the "
                                                              "frame (0.3,0.3), percentages (30%,30%) or pixels "
                                                              "(576px,324px)");
                scene.light.x = position->x;
                scene.light.y = position->y;
            },
            "where the light is: X,Y as fractions of the frame, N% or Npx; outside the frame is allowed "
            "(default 0.3,0.3)")
        ->type_name("X,Y")
        ->group("Light");
    command
        .add_option_function<std::string>(
            namesOf("--light-color"),
            [&scene](const std::string& text) {
                const auto colour = parseColour(text);
                if (!colour)
                    throw CLI::ValidationError("--light-color", "'" + text +
                                                                    "' is not a color; give #rrggbb (hex) or "
                                                                    "R,G,B (0-255 each)");
                scene.light.color = *colour;
            },
            "the light's color, #rrggbb or R,G,B (default #ffffff)")
        ->type_name("COLOR")
        ->group("Light");
    addReal(command, "light-intensity", scene.light.intensity, 0, kMaxLightIntensity,
            "the light's intensity (0 to 100, default 1)");
    command
        .add_option_function<std::string>(
            "--light-radius",
            [&scene](const std::string& text) {
                const auto radius = parseLength(text);
                if (!radius || radius->value < 0)
                    throw CLI::ValidationError("--light-radius", "'" + text +
                                                                     "' is not a radius; give a fraction of the "
                                                                     "frame height (0.1), N% or Npx, not negative");
                scene.light.radius = *radius;
            },
            "the light's radius: a fraction of the frame height, N% or Npx (default 0.1)")
        ->type_name("LENGTH")
        ->group("Light");
    addReal(command, "light-rotation", scene.light.rotation, -kMaxRotation, kMaxRotation,
            "the light's rotation in degrees (-360 to 360, default 0)");
}

} // namespace glintwave::cli
