// ProgramFiles.cpp - the installed layout and the build tree's, side by side.
//
// cmake/Install.cmake lays the installed copy out with these same folders;
// tests/install checks that the two agree.

#include "ProgramFiles.h"

#include <system_error>

namespace glintwave::cli {

std::filesystem::path programFolder(ProgramFolder which)
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return {};
    // An installed program sits in PREFIX/bin; the build puts it in BUILD/cli.
    const std::filesystem::path home = self.parent_path();
    const bool installed = home.filename() == "bin";
    const char* folder = nullptr;
    switch (which) {
    case ProgramFolder::plugin:
        folder = installed ? "lib/glintwave/plugin" : "plugin";
        break;
    case ProgramFolder::dialogPage:
        folder = installed ? "share/glintwave/web" : "web";
        break;
    }
    return (home.parent_path() / folder).lexically_normal();
}

} // namespace glintwave::cli
