// FlarePasses.cpp - settings that keep one part of the flare.

#include "FlarePasses.h"

#include <algorithm>

namespace glintwave::cli {

ControlDataRec passSettings(const ControlDataRec& settings, const FlarePass& pass)
{
    ControlDataRec kept = settings;
    for (const FlarePass& other : kFlarePasses) {
        if (other.name == pass.name)
            continue;
        for (const std::string_view name : other.switches) {
            const auto setting = std::find_if(settingsTable().begin(), settingsTable().end(),
                                              [&](const Setting& s) { return !name.empty() && s.name == name; });
            if (setting != settingsTable().end())
                setSwitch(kept, *setting, false);
        }
    }
    return kept;
}

} // namespace glintwave::cli
