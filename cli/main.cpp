// glintwave - renders lens flares with the Glintwave plug-in; see Commands.h.

#include "Commands.h"

int main(int argc, char** argv)
{
    glintwave::cli::CommandLine line;
    glintwave::cli::addRenderCommand(line);
    glintwave::cli::addStylesCommand(line);
    glintwave::cli::addSheetCommand(line);
    glintwave::cli::addInfoCommand(line);
    glintwave::cli::addCheckFlashesCommand(line);
    glintwave::cli::addProjectCommand(line);
    glintwave::cli::addEditCommand(line);
    return line.run(argc, argv);
}
