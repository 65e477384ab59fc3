// StylesCommand.cpp - `glintwave styles`: the number and name of every style.

#include "Commands.h"
#include "FlareRenderer.h"

#include <cstdio>

namespace glintwave::cli {

void addStylesCommand(CommandLine& line)
{
    line.addCommand("styles", "list the flare styles by number and name (--style takes either)", [&line] {
        const FlareRenderer renderer(line.common().pluginFile(), false);
        for (const Style& style : renderer.styles())
            std::printf("%3d  %s\n", style.number, style.name.c_str());
        return 0;
    });
}

} // namespace glintwave::cli
