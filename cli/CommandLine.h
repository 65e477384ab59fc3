// CommandLine.h - the `glintwave` program: its subcommands, the options
// they share, and the one place where errors become exit statuses.
//
// Each subcommand has a registration function (see Commands.h) that adds
// its options to the program and says what runs when it is chosen, so a new
// subcommand is one file and one line in main().
//
// Exit statuses: 0 done (also --help and --version, on stdout); 1 a failure,
// as one line "glintwave ERROR: <what is wrong and what to do>"; 2 a mistake
// on the command line, with a usage line; 130 cancelled by Ctrl-C, nothing
// written.
#pragma once

#include "korvane/Error.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <map>

namespace glintwave::cli {

// A command-line mistake found after parsing (exit status 2).
struct UsageError : korvane::Error {
    using korvane::Error::Error;
};

// Options every subcommand takes.
struct CommonOptions {
    std::filesystem::path plugin;  // empty: defaultPluginPath()
    bool quiet = false;            // no progress line, no report lines

    std::filesystem::path pluginFile() const;
};

class CommandLine {
public:
    CommandLine();

    CLI::App& app() { return app_; }
    const CommonOptions& common() const { return common_; }

    // Adds a subcommand whose work is `action` (its exit status).
    CLI::App* addCommand(const std::string& name, const std::string& description, std::function<int()> action);

    // Parses the arguments, runs the chosen subcommand and returns the exit status.
    int run(int argc, char** argv);

private:
    int fail(int status, const std::string& message);

    CLI::App app_;
    CommonOptions common_;
    std::map<CLI::App*, std::function<int()>> actions_;
};

} // namespace glintwave::cli
