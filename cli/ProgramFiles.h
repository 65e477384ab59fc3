// ProgramFiles.h - where the command finds the files it needs besides
// itself: the plug-in's folder and the settings dialog's page.
#pragma once

#include <filesystem>

namespace glintwave::cli {

enum class ProgramFolder {
    plugin,      // Glintwave.so and Glintwave.rsc
    dialogPage,  // index.html and what it loads
};

// The folder, found from the program's own place (/proc/self/exe), never
// from the working folder, so the command runs from any prefix:
//   installed   PREFIX/bin/glintwave    PREFIX/lib/glintwave/plugin, PREFIX/share/glintwave/web
//   build tree  BUILD/cli/glintwave     BUILD/plugin, BUILD/web
// Empty (the working folder) when the program's place cannot be read.
std::filesystem::path programFolder(ProgramFolder which);

} // namespace glintwave::cli
