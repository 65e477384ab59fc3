// glintwave-rsc - compiles resource sources into a resource file and dumps
// resource files back to sources. The work is done by korvane_rsc_compiler.

#include "RscCompiler.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: glintwave-rsc compile -o OUT.rsc SOURCE.json...\n"
    "       glintwave-rsc dump IN.rsc                 print the file as one JSON document\n"
    "       glintwave-rsc dump -d DIR IN.rsc          write one source file per style and dialog\n"
    "       glintwave-rsc format SOURCE.json          print a source in its canonical form\n"
    "       glintwave-rsc --help | --version\n";

int usageError(const std::string& message)
{
    std::cerr << "glintwave-rsc ERROR: " << message << "\n" << kUsage;
    return 2;
}

// Writes to a temporary name beside the target, then renames, so that a
// failed run never leaves half a file behind.
void writeFile(const std::filesystem::path& path, const void* data, std::size_t size)
{
    std::filesystem::path temporary = path;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out)
            throw korvane::Error(temporary.string() + ": cannot create");
        out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
        if (!out.flush())
            throw korvane::Error(temporary.string() + ": write error");
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::filesystem::remove(temporary, error);
        throw korvane::Error(path.string() + ": cannot write: " + error.message());
    }
}

int compile(const std::vector<std::string>& args)
{
    std::filesystem::path output;
    std::vector<std::filesystem::path> sources;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-o") {
            if (i + 1 == args.size())
                return usageError("-o needs a file name");
            output = args[++i];
        } else {
            sources.emplace_back(args[i]);
        }
    }
    if (output.empty())
        return usageError("compile needs -o OUT.rsc");
    if (sources.empty())
        return usageError("compile needs at least one source");
    const std::vector<std::uint8_t> bytes = korvane::rsc::compileFiles(sources);
    writeFile(output, bytes.data(), bytes.size());
    return 0;
}

int dump(const std::vector<std::string>& args)
{
    std::filesystem::path directory;
    std::filesystem::path input;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-d") {
            if (i + 1 == args.size())
                return usageError("-d needs a folder");
            directory = args[++i];
        } else if (input.empty()) {
            input = args[i];
        } else {
            return usageError("dump reads one file");
        }
    }
    if (input.empty())
        return usageError("dump needs a resource file");
    const korvane::ResourceFile file = korvane::ResourceFile::load(input);
    if (directory.empty()) {
        std::cout << korvane::rsc::dumpText(file);
        return std::cout.flush() ? 0 : 1;
    }
    std::filesystem::create_directories(directory);
    for (const auto& source : korvane::rsc::dumpSources(file))
        writeFile(directory / source.fileName, source.text.data(), source.text.size());
    return 0;
}

int format(const std::vector<std::string>& args)
{
    if (args.size() != 1)
        return usageError("format reads one source");
    std::ifstream in(args[0], std::ios::binary);
    if (!in)
        throw korvane::Error(args[0] + ": cannot open");
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::cout << korvane::rsc::canonicalText({args[0], text});
    return std::cout.flush() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> all(argv + 1, argv + argc);
    if (all.empty())
        return usageError("no command");
    const std::string& command = all[0];
    const std::vector<std::string> args(all.begin() + 1, all.end());
    if (command == "--help" || command == "-h") {
        std::cout << kUsage;
        return 0;
    }
    if (command == "--version") {
        std::cout << "glintwave-rsc 1.0\n";
        return 0;
    }
    try {
        if (command == "compile")
            return compile(args);
        if (command == "dump")
            return dump(args);
        if (command == "format")
            return format(args);
    } catch (const std::exception& e) {
        std::cerr << "glintwave-rsc ERROR: " << e.what() << "\n";
        return 1;
    }
    return usageError("unknown command \"" + command + "\"");
}
