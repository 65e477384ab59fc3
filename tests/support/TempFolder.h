// TempFolder.h - a fresh folder under the system's temporary directory,
// removed with everything in it when the object goes. Shared by the tests,
// the benchmarks and the fuzzers (glintwave_test_support).
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace testsupport {

class TempFolder {
public:
    // `prefix` names the folder (prefix-XXXXXX), so a folder left behind by
    // a crash says who made it. Throws std::runtime_error when no folder can
    // be made: every caller needs one.
    explicit TempFolder(const std::string& prefix = "glintwave-test")
    {
        std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a temporary folder " + pattern);
        path_ = pattern;
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace testsupport
