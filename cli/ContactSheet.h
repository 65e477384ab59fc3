// ContactSheet.h - pictures in a labelled grid: the styles of `glintwave
// sheet`, or the layers of an image with `sheet --layers`.
//
// Labels are drawn with OpenImageIO's text renderer in DejaVu Sans
// (Debian's fonts-dejavu-core); without the font the sheet has no labels
// and a line on stderr says so.
#pragma once

#include "ValueGrammar.h"

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace glintwave::cli {

// One picture: display-referred float RGB, any size (fitted into its cell).
struct SheetCell {
    OIIO::ImageBuf picture;
    std::string label;
};

struct SheetLayout {
    FrameSize cell{320, 180};
    std::int32_t columns = 4;
};

// Throws UsageError when the grid of `count` cells would be larger than a
// frame may be, korvane::Error when the machine lacks the memory.
void checkSheetSize(std::size_t count, const SheetLayout& layout);

OIIO::ImageBuf contactSheet(const std::vector<SheetCell>& cells, const SheetLayout& layout);

// Every layer of an image (its main R, G, B, then each NAME.R, NAME.G,
// NAME.B, as compositing applications group them), encoded for display
// from linear light when the file holds floats. Read through the guarded
// open; throws korvane::Error for a file that is not such an image.
std::vector<SheetCell> layerCells(const std::filesystem::path& file);

} // namespace glintwave::cli
