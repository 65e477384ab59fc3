// CommandLine.cpp - parsing, dispatch, and errors as exit statuses.

#include "CommandLine.h"

#include "FlareRenderer.h"
#include "Interrupt.h"

#include "korvane/Spelling.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>
#include <string_view>
#include <new>

#ifndef GLINTWAVE_VERSION
#define GLINTWAVE_VERSION "unknown"
#endif

namespace glintwave::cli {
namespace {

// CLI11 shows a switch as "--halo,--no-halo{false}"; the braces say nothing
// to a user, so they go, and so do the names in the other spelling, which
// are accepted but not taught (--halo-colour beside --halo-color).
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        std::string name = CLI::Formatter::make_option_name(option, isPositional);
        for (const char* noise : {"{false}", "{true}"})
            for (std::size_t at; (at = name.find(noise)) != std::string::npos;)
                name.erase(at, std::string_view(noise).size());
        std::string shown;
        for (std::size_t start = 0; start <= name.size();) {
            const std::size_t comma = std::min(name.find(',', start), name.size());
            const std::string part = name.substr(start, comma - start);
            if (korvane::canonicalSpelling(part) == part)
                shown += (shown.empty() ? "" : ",") + part;
            start = comma + 1;
        }
        return shown;
    }
};

} // namespace

std::filesystem::path CommonOptions::pluginFile() const
{
    return plugin.empty() ? defaultPluginPath() : plugin;
}

CommandLine::CommandLine() : app_("Renders lens flares with the Glintwave plug-in.", "glintwave")
{
    app_.formatter(std::make_shared<HelpFormatter>());
    app_.set_version_flag("--version", std::string("glintwave ") + GLINTWAVE_VERSION);
    app_.require_subcommand(1);
    app_.fallthrough();  // common options may also follow the subcommand
    app_.add_option("--plugin", common_.plugin,
                    "the plug-in to load (default: ../plugin/Glintwave.so beside glintwave)")
        ->type_name("PATH");
    app_.add_flag("-q,--quiet", common_.quiet, "no progress bar and no report lines");
    app_.footer("`glintwave COMMAND --help` lists the options of a command.");
}

CLI::App* CommandLine::addCommand(const std::string& name, const std::string& description,
                                  std::function<int()> action)
{
    CLI::App* command = app_.add_subcommand(name, description);
    actions_[command] = std::move(action);
    return command;
}

int CommandLine::fail(int status, const std::string& message)
{
    std::cout.flush();
    std::cerr << "glintwave ERROR: " << message << "\n";
    if (status == 2) {
        std::string command = "COMMAND";
        for (const CLI::App* chosen : app_.get_subcommands())
            command = chosen->get_name();
        std::cerr << "usage: glintwave " << command << " [OPTIONS]  (glintwave " << command
                  << " --help lists them)\n";
    }
    return status;
}

int CommandLine::run(int argc, char** argv)
{
    try {
        app_.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app_.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app_.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app_.exit(e);
    } catch (const CLI::ParseError& e) {
        return fail(2, e.what());
    }

    const std::vector<CLI::App*> chosen = app_.get_subcommands();
    if (chosen.empty() || !actions_.count(chosen.front()))
        return fail(2, "no command given; choose render, styles, sheet, info, project or edit");
    InterruptCatcher interrupts;
    // Past a file size limit (ulimit -f) a write then fails with "File too
    // large", which the frame reports, instead of the signal ending us.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return actions_[chosen.front()]();
    } catch (const UsageError& e) {
        return fail(2, e.what());
    } catch (const Cancelled&) {
        std::cout.flush();
        std::cerr << "glintwave: cancelled; nothing was written\n";
        return InterruptCatcher::exitStatus();
    } catch (const std::bad_alloc&) {
        return fail(1, "out of memory; try a smaller frame (--size) or background image");
    } catch (const std::exception& e) {
        return fail(1, e.what());
    }
}

} // namespace glintwave::cli
