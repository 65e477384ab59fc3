// ToolboxObjects.h - what the host's opaque toolbox handles hold.
//
// Plug-ins see only pointers to these; the host's toolbox code includes this
// header to look inside.
#pragma once

#include "KVToolboxTypes.h"
#include "korvane/ResourceFile.h"

#include <cstdint>
#include <filesystem>
#include <string>

struct KV_DirectoryRef {
    std::filesystem::path path;
};

struct KV_FileRef {
    std::filesystem::path directory;
    std::string name;
    std::uint32_t fileType = 0;
    std::string extension;

    std::filesystem::path path() const { return directory / name; }
};

struct KV_ResourceFile {
    korvane::ResourceFile file;
};
