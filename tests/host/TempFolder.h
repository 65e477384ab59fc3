// TempFolder.h - a fresh folder under the system's temporary directory,
// removed with everything in it when the object goes.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace hosttest {

class TempFolder {
public:
    TempFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "korvane-host-XXXXXX").string();
        if (mkdtemp(pattern.data()))
            path_ = pattern;
    }
    ~TempFolder()
    {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace hosttest
