// SheetCommand.cpp - `glintwave sheet`: every style of the plug-in rendered
// over black into one labelled grid (ContactSheet.h), or with --layers the
// layers of an image, such as the passes `render --passes` writes.

#include "Commands.h"
#include "ContactSheet.h"
#include "FlareRenderer.h"
#include "Output.h"
#include "SceneOptions.h"

#include "korvane/ImageIO.h"

#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace glintwave::cli {
namespace {

constexpr std::int32_t kMaxColumns = 16;

struct SheetOptions {
    SceneOptions scene;
    SheetLayout layout;
    std::filesystem::path layers;
    std::filesystem::path output;
};

std::vector<SheetCell> styleCells(const SheetOptions& options, FlareRenderer& renderer)
{
    const std::vector<Style>& styles = renderer.styles();
    checkSheetSize(styles.size(), options.layout);
    std::vector<SheetCell> cells;
    for (const Style& style : styles) {
        ControlDataRec settings = options.scene.settings;
        settings.flareLens = style.number;
        korvane::FramePixels frame(options.layout.cell.width, options.layout.cell.height, 48);
        renderer.render(settings, options.scene.light, frame,
                        "style " + std::to_string(style.number) + "/" + std::to_string(styles.back().number) + " " +
                            style.name);
        cells.push_back({frame.toImage(true), std::to_string(style.number) + "  " + style.name});
    }
    return cells;
}

int runSheet(const SheetOptions& options, const CommonOptions& common)
{
    checkOutputPath(options.output);
    const auto start = std::chrono::steady_clock::now();
    std::vector<SheetCell> cells;
    std::string what;
    if (!options.layers.empty()) {
        cells = layerCells(options.layers);
        what = std::to_string(cells.size()) + " layers of " + options.layers.filename().string();
    } else {
        FlareRenderer renderer(common.pluginFile(), !common.quiet);
        cells = styleCells(options, renderer);
        what = std::to_string(cells.size()) + " styles";
    }
    OIIO::ImageBuf sheet = contactSheet(cells, options.layout);
    describeImage(sheet, options.layers.empty() ? "all " + what : what, options.scene.settings, options.scene);
    // Cells are display-referred: painted levels, or layers encoded for show.
    sheet.specmod().attribute("glintwave:colorspace", "sRGB");
    writeOutput(sheet, options.output,
                korvane::isFloatFormat(options.output) ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::UINT8);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!common.quiet) {
        char timing[32];
        std::snprintf(timing, sizeof timing, "%.2f s", seconds);
        std::cout << options.output.string() << ": " << what << ", " << sheet.spec().width << "x"
                  << sheet.spec().height << ", " << timing << ", " << fileSizeText(options.output) << "\n";
    }
    return 0;
}

} // namespace

void addSheetCommand(CommandLine& line)
{
    auto options = std::make_shared<SheetOptions>();
    CLI::App* command = line.addCommand("sheet", "render every style, or an image's layers, into one labelled "
                                                 "contact sheet",
                                        [options, &line] { return runSheet(*options, line.common()); });
    command->add_option("-o,--output", options->output, "the sheet image to write (.png .exr .tif .jpg .dpx)")
        ->required()
        ->type_name("FILE");
    command->add_option("--layers", options->layers,
                        "instead of the styles, the layers of this image (the passes of render --passes), shown "
                        "in sRGB")
        ->type_name("IMAGE");
    command
        ->add_option_function<std::string>(
            "--cell",
            [options](const std::string& text) {
                const auto parsed = parseFrameSize(text);
                if (!parsed || parsed->width < 16 || parsed->height < 16)
                    throw CLI::ValidationError("--cell", "'" + text + "' is not a cell size; give WIDTHxHEIGHT, "
                                                                      "each at least 16, as in 320x180");
                options->layout.cell = *parsed;
            },
            "the size of one cell in pixels (default 320x180)")
        ->type_name("WxH");
    command->add_option("--columns", options->layout.columns, "cells per row (1 to 16, default 4)")
        ->check(CLI::Range(1, kMaxColumns))
        ->type_name("N");
    addLightOptions(*command, options->scene);
    addSettingOptions(*command, options->scene.settings);
}

} // namespace glintwave::cli
