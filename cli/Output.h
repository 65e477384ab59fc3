// Output.h - what every image the command writes shares: checks made before
// rendering (format, folder, memory), the metadata that records how it was
// made, and the write that leaves either the whole file or nothing.
#pragma once

#include "SceneOptions.h"

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace glintwave::cli {

// Throws UsageError for an extension no image format knows, and
// korvane::Error for a folder that does not exist.
void checkOutputPath(const std::filesystem::path& file);

// The bytes a width x height frame may take at most (frame, image and
// background together), and whether this machine has them. Throws
// korvane::Error naming the size and what to do.
// With `passes`, the four parts' frames and the layers they make too.
std::uint64_t frameMemory(std::int32_t width, std::int32_t height, bool passes = false);
std::uint64_t physicalMemory();
void requireFrameMemory(std::int32_t width, std::int32_t height, bool passes = false);

// Records the style, the settings and the light in the image's metadata:
// "glintwave:style" ("1 Classic zoom"), "glintwave:settings" and
// "glintwave:light" (the options that give them), ImageDescription (all of
// it, for formats that keep no other text), Software; no time of writing.
void describeImage(OIIO::ImageBuf& image, const std::string& style, const ControlDataRec& settings,
                   const SceneOptions& scene);

// Writes through a temporary name; Ctrl-C before the rename drops the file
// and throws Cancelled. `whole`, when given, runs once the temporary file
// is complete, just before the rename.
void writeOutput(OIIO::ImageBuf& image, const std::filesystem::path& file, OIIO::TypeDesc sampleType,
                 const std::function<void()>& whole = {});

// "2.4 MB" for a file's size.
std::string fileSizeText(const std::filesystem::path& file);

} // namespace glintwave::cli
