// CommandRun.h - running the built `glintwave` program from a test: a
// scratch folder, the program's status and output, the files it left,
// images written and read back.
#pragma once

#include "TempFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace command_test {

// A fresh folder, removed with its contents at the end of the test.
using testsupport::TempFolder;

struct CommandRun {
    int status = -1;
    std::string out;
    std::string err;
};

inline std::string slurp(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs `environment glintwave arguments` through the shell, stdin closed,
// without $OCIO.
inline CommandRun glintwave(const TempFolder& scratch, const std::string& arguments, const std::string& environment = "")
{
    // The user's own colour configuration ($OCIO) would change the numbers
    // the tests pin.
    const std::string command = "env -u OCIO " + environment + " '" GLINTWAVE_COMMAND "' " + arguments + " >'" +
                                (scratch / "out.txt").string() + "' 2>'" + (scratch / "err.txt").string() +
                                "' </dev/null";
    CommandRun run;
    const int raw = std::system(command.c_str());
    run.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = slurp(scratch / "out.txt");
    run.err = slurp(scratch / "err.txt");
    return run;
}

// The files in a folder other than the runner's own output captures.
inline std::vector<std::string> filesIn(const TempFolder& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        const std::string name = entry.path().filename().string();
        if (name != "out.txt" && name != "err.txt")
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A path as one shell word.
inline std::string quoted(const std::filesystem::path& path)
{
    return "'" + path.string() + "'";
}

inline OIIO::ImageBuf readBack(const std::filesystem::path& file)
{
    OIIO::ImageBuf image(file.string());
    EXPECT_TRUE(image.read(0, 0, true, OIIO::TypeDesc::FLOAT)) << file << ": " << image.geterror();
    return image;
}

// Writes a width x height image whose pixel (x, y) is (fill(x, y, c)) per
// channel; a fourth channel is alpha.
template <typename Fill>
void writeImage(const std::filesystem::path& file, int width, int height, OIIO::TypeDesc type, Fill fill,
                int channels = 3)
{
    OIIO::ImageBuf image(OIIO::ImageSpec(width, height, channels, OIIO::TypeDesc::FLOAT));
    for (OIIO::ImageBuf::Iterator<float> p(image); !p.done(); ++p)
        for (int c = 0; c < channels; ++c)
            p[c] = fill(p.x(), p.y(), c);
    ASSERT_TRUE(image.write(file.string(), type));
}

} // namespace command_test
