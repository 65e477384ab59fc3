// PluginLibrary.cpp - loading a plug-in file and calling its entry point.

#include "korvane/PluginHost.h"

#include "korvane/ResourceToolbox.h"

#include <dlfcn.h>
#include <time.h>

#include <cstdio>
#include <system_error>

namespace korvane {

std::int32_t tickCount()
{
    struct timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return 0;
    // Whole sixtieths, keeping the low 32 bits as the plug-ins' TickCount does.
    const std::int64_t ticks =
        static_cast<std::int64_t>(now.tv_sec) * 60 + static_cast<std::int64_t>(now.tv_nsec) * 60 / 1000000000;
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(ticks)));
}

std::string commandName(std::uint32_t command)
{
    std::string text = "'";
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto c = static_cast<unsigned char>((command >> shift) & 0xFF);
        if (c < 0x20 || c >= 0x7F) {
            char hex[11];
            std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(command));
            return hex;
        }
        text += static_cast<char>(c);
    }
    return text + "'";
}

PluginLibrary::PluginLibrary(const std::filesystem::path& file)
{
    // An absolute path, so the home directory stays right whatever the
    // current directory does later.
    std::error_code error;
    file_ = std::filesystem::absolute(file, error);
    if (error)
        file_ = file;
    home_ = file_.parent_path();

    if (!std::filesystem::is_regular_file(file_, error))
        throw PluginError("cannot load plug-in " + file_.string() + ": no such file");

    dlerror();
    handle_ = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) {
        const char* why = dlerror();
        throw PluginError("cannot load plug-in " + file_.string() + ": " + (why ? why : "unknown reason"));
    }
    dlerror();
    void* entry = dlsym(handle_, "Main");
    if (!entry) {
        dlclose(handle_);
        handle_ = nullptr;
        throw PluginError(file_.string() + " is not a Korvane plug-in: it has no entry point Main");
    }
    main_ = reinterpret_cast<PluginMain>(entry);
}

PluginLibrary::~PluginLibrary()
{
    if (handle_)
        dlclose(handle_);
}

std::int32_t PluginLibrary::call(std::uint32_t command, std::int32_t recordSize, void* record) const
{
    toolbox::setHomeDirectory(home_);
    return main_(command, recordSize, record);
}

} // namespace korvane
