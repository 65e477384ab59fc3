// Commands.h - one registration function per subcommand of `glintwave`.
// Each adds its subcommand, its options and its action to the command line.
#pragma once

#include "CommandLine.h"

namespace glintwave::cli {

void addRenderCommand(CommandLine& line);  // a flare, or a project's frames, to image files
void addStylesCommand(CommandLine& line);  // the style list
void addSheetCommand(CommandLine& line);   // every style in one contact sheet
void addInfoCommand(CommandLine& line);    // what the plug-in says about itself
void addProjectCommand(CommandLine& line); // project files: new, show, set
void addEditCommand(CommandLine& line);    // a project's settings in the plug-in's dialog
void addCheckFlashesCommand(CommandLine& line); // flashes of an image sequence

} // namespace glintwave::cli
