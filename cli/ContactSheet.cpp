// ContactSheet.cpp - the grid, its labels, and an image's layers as cells.

#include "ContactSheet.h"

#include "CommandLine.h"
#include "Output.h"

#include "korvane/ImageIO.h"
#include "korvane/ImageOpen.h"
#include "korvane/TransferCurves.h"

#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>

namespace glintwave::cli {
namespace {

constexpr const char* kLabelFont = "DejaVuSans";
constexpr int kGap = 2;             // pixels of background between cells
constexpr float kBackdrop = 0.12f;  // grey behind the cells and labels
constexpr float kLabelGrey = 0.85f;

int labelSize(const FrameSize& cell)
{
    return std::clamp(cell.height / 10, 10, 28);
}

struct Grid {
    std::int32_t columns, rows, pitchX, pitchY, fontSize;
    std::int64_t width, height;
};

Grid gridFor(std::size_t count, const SheetLayout& layout)
{
    Grid grid{};
    const auto cells = static_cast<std::int32_t>(std::max<std::size_t>(count, 1));
    grid.columns = std::min(layout.columns, cells);
    grid.rows = (cells + grid.columns - 1) / grid.columns;
    grid.fontSize = labelSize(layout.cell);
    const int band = grid.fontSize + grid.fontSize / 2;  // the label strip under each cell
    grid.pitchX = layout.cell.width + kGap;
    grid.pitchY = layout.cell.height + band + kGap;
    grid.width = std::int64_t{grid.columns} * grid.pitchX + kGap;
    grid.height = std::int64_t{grid.rows} * grid.pitchY + kGap;
    return grid;
}

} // namespace

void checkSheetSize(std::size_t count, const SheetLayout& layout)
{
    const Grid grid = gridFor(count, layout);
    if (grid.width > kMaxFrameSide || grid.height > kMaxFrameSide)
        throw UsageError("a sheet of " + std::to_string(grid.width) + "x" + std::to_string(grid.height) +
                         " pixels is too large; choose a smaller --cell or other --columns");
    requireFrameMemory(static_cast<std::int32_t>(grid.width), static_cast<std::int32_t>(grid.height));
}

OIIO::ImageBuf contactSheet(const std::vector<SheetCell>& cells, const SheetLayout& layout)
{
    checkSheetSize(cells.size(), layout);
    const Grid grid = gridFor(cells.size(), layout);
    OIIO::ImageBuf sheet(
        OIIO::ImageSpec(static_cast<int>(grid.width), static_cast<int>(grid.height), 3, OIIO::TypeDesc::FLOAT));
    const float backdrop[3] = {kBackdrop, kBackdrop, kBackdrop};
    OIIO::ImageBufAlgo::fill(sheet, backdrop);
    const float labelColour[3] = {kLabelGrey, kLabelGrey, kLabelGrey};
    bool labelled = true;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const int x = kGap + static_cast<int>(i % static_cast<std::size_t>(grid.columns)) * grid.pitchX;
        const int y = kGap + static_cast<int>(i / static_cast<std::size_t>(grid.columns)) * grid.pitchY;
        const OIIO::ImageSpec& spec = cells[i].picture.spec();
        if (spec.width == layout.cell.width && spec.height == layout.cell.height) {
            OIIO::ImageBufAlgo::paste(sheet, x, y, 0, 0, cells[i].picture);
        } else {
            const OIIO::ImageBuf fitted =
                OIIO::ImageBufAlgo::fit(cells[i].picture, "", 0.0f, "letterbox", false,
                                        OIIO::ROI(0, layout.cell.width, 0, layout.cell.height, 0, 1, 0, 3));
            OIIO::ImageBufAlgo::paste(sheet, x, y, 0, 0, fitted);
        }
        if (labelled)
            labelled = OIIO::ImageBufAlgo::render_text(sheet, x + grid.fontSize / 2,
                                                       y + layout.cell.height + grid.fontSize, cells[i].label,
                                                       grid.fontSize, kLabelFont, labelColour);
    }
    if (!labelled) {
        OIIO::geterror();
        sheet.geterror();
        std::cerr << "glintwave: no font " << kLabelFont
                  << " for the labels (install fonts-dejavu-core); the sheet has none\n";
    }
    return sheet;
}

std::vector<SheetCell> layerCells(const std::filesystem::path& file)
{
    korvane::ImageLimits limits;
    limits.maxSide = kMaxFrameSide;
    limits.maxBytes = physicalMemory();
    korvane::OpenedImage opened = korvane::openImageSafely(file, limits);
    const OIIO::ImageSpec& spec = opened.spec;
    const std::string name = file.string();
    std::vector<float> pixels(static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(spec.height) *
                              static_cast<std::size_t>(spec.nchannels));
    if (!opened.input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, pixels.data()))
        throw korvane::Error(korvane::ErrorPlace{name}, "cannot read its pixels (" + opened.input->geterror() +
                                                            "); the file may be damaged");
    // Layers in the order their red channels come; the main one first.
    std::vector<std::string> layers;
    std::map<std::string, std::array<int, 3>> channels;
    for (int c = 0; c < spec.nchannels; ++c) {
        const std::string& channel = spec.channel_name(c);
        const std::size_t dot = channel.rfind('.');
        const std::string layer = dot == std::string::npos ? "" : channel.substr(0, dot);
        const std::string part = dot == std::string::npos ? channel : channel.substr(dot + 1);
        const int slot = part == "R" ? 0 : part == "G" ? 1 : part == "B" ? 2 : -1;
        if (slot < 0)
            continue;
        if (!channels.count(layer)) {
            channels[layer] = {-1, -1, -1};
            layers.push_back(layer);
        }
        channels[layer][static_cast<std::size_t>(slot)] = c;
    }
    std::stable_partition(layers.begin(), layers.end(), [](const std::string& layer) { return layer.empty(); });
    const OIIO::TypeDesc::BASETYPE base = static_cast<OIIO::TypeDesc::BASETYPE>(spec.format.basetype);
    const bool linear = base == OIIO::TypeDesc::HALF || base == OIIO::TypeDesc::FLOAT;
    std::vector<SheetCell> cells;
    for (const std::string& layer : layers) {
        const std::array<int, 3>& rgb = channels[layer];
        if (std::find(rgb.begin(), rgb.end(), -1) != rgb.end())
            continue;
        OIIO::ImageBuf picture(OIIO::ImageSpec(spec.width, spec.height, 3, OIIO::TypeDesc::FLOAT));
        std::vector<float> samples(static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(spec.height) * 3);
        for (std::size_t i = 0; i < samples.size() / 3; ++i)
            for (int c = 0; c < 3; ++c) {
                const float value = pixels[i * static_cast<std::size_t>(spec.nchannels) +
                                           static_cast<std::size_t>(rgb[static_cast<std::size_t>(c)])];
                samples[i * 3 + c] = linear ? static_cast<float>(korvane::linearToSrgb(value)) : value;
            }
        picture.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, samples.data());
        cells.push_back({std::move(picture), layer.empty() ? "main" : layer});
    }
    if (cells.empty())
        throw korvane::Error(korvane::ErrorPlace{name}, "has no layer of red, green and blue channels");
    return cells;
}

} // namespace glintwave::cli
