// InfoCommand.cpp - `glintwave info`: what the plug-in says about itself
// ('INFO'), which commands it answers ('CHEK') and its result texts ('DESC').

#include "Commands.h"
#include "FlareRenderer.h"

#include "korvane/PluginHost.h"

#include <iostream>

namespace glintwave::cli {
namespace {

// The twelve commands a Korvane plug-in may be sent.
constexpr std::uint32_t kCommands[] = {
    kCmdCheck,         kCmdDescribe,       kCmdFinishChannel, kCmdFinish,     kCmdFlareGenerate, kCmdInitChannel,
    kCmdInformation,   kCmdInitialize,     kCmdInterface,     kCmdLoadChannel, kCmdFlareSetup,   kCmdUpdateChannel,
};
constexpr std::int32_t kResultCodes[] = {1, 2, 3, 4, 5, 6, 7, 8};

int runInfo(const CommonOptions& common)
{
    FlareRenderer renderer(common.pluginFile(), false);
    korvane::PluginInstance& plugin = renderer.instance();
    const korvane::PluginInfo info = plugin.info();
    std::cout << info.name << "\n"
              << "  version      " << info.version << " (type " << korvane::commandName(info.type) << ")\n"
              << "  description  " << info.description << "\n"
              << "  copyright    " << info.copyright << "\n"
              << "  author       " << info.author << "\n"
              << "  plug-in      " << common.pluginFile().string() << "\n"
              << "  styles       " << renderer.styles().size() << "\n"
              << "Commands it answers ('CHEK'):\n ";
    std::string refused;
    for (const std::uint32_t command : kCommands) {
        if (plugin.check(command) == kPluginNoError)
            std::cout << " " << korvane::commandName(command);
        else
            refused += " " + korvane::commandName(command);
    }
    std::cout << "\n";
    if (!refused.empty())
        std::cout << "Commands it refuses:\n " << refused << "\n";
    std::cout << "Result texts ('DESC'):\n";
    for (const std::int32_t code : kResultCodes) {
        const std::string text = plugin.describe(code);
        if (!text.empty())
            std::cout << "  " << code << "  " << text << "\n";
    }
    return 0;
}

} // namespace

void addInfoCommand(CommandLine& line)
{
    line.addCommand("info", "show the plug-in's name, version, description, commands and result texts",
                    [&line] { return runInfo(line.common()); });
}

} // namespace glintwave::cli
