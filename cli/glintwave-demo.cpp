// glintwave-demo - one frame of every flare style; see korvane/DemoCommand.h.

#include "korvane/DemoCommand.h"

#include <string_view>
#include <vector>

int main(int argc, char** argv)
{
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return korvane::demo::runDemoCommand(arguments);
}
