// SheetCommand.cpp - `glintwave sheet`: every style of the plug-in rendered
// over black into one grid, each cell labelled with the style's number and
// name. Labels are drawn with OpenImageIO's text renderer in DejaVu Sans
// (Debian's fonts-dejavu-core); without the font the sheet has no labels.

#include "Commands.h"
#include "FlareRenderer.h"
#include "Output.h"
#include "SceneOptions.h"

#include "korvane/ImageIO.h"

#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace glintwave::cli {
namespace {

constexpr const char* kLabelFont = "DejaVuSans";
constexpr int kGap = 2;                   // pixels of background between cells
constexpr float kBackdrop = 0.12f;        // grey behind the cells and labels
constexpr float kLabelGrey = 0.85f;
constexpr std::int32_t kMaxColumns = 16;

struct SheetOptions {
    SceneOptions scene;
    FrameSize cell{320, 180};
    std::int32_t columns = 4;
    std::filesystem::path output;
};

int labelSize(const FrameSize& cell)
{
    return std::clamp(cell.height / 10, 10, 28);
}

int runSheet(const SheetOptions& options, const CommonOptions& common)
{
    checkOutputPath(options.output);
    FlareRenderer renderer(common.pluginFile(), !common.quiet);
    const std::vector<Style>& styles = renderer.styles();
    const std::int32_t count = static_cast<std::int32_t>(styles.size());
    const std::int32_t columns = std::min(options.columns, count);
    const std::int32_t rows = (count + columns - 1) / columns;
    const int fontSize = labelSize(options.cell);
    const int band = fontSize + fontSize / 2;  // the label strip under each cell
    const std::int32_t pitchX = options.cell.width + kGap;
    const std::int32_t pitchY = options.cell.height + band + kGap;
    const std::int64_t sheetWidth = std::int64_t{columns} * pitchX + kGap;
    const std::int64_t sheetHeight = std::int64_t{rows} * pitchY + kGap;
    if (sheetWidth > kMaxFrameSide || sheetHeight > kMaxFrameSide)
        throw UsageError("a sheet of " + std::to_string(sheetWidth) + "x" + std::to_string(sheetHeight) +
                         " pixels is too large; choose a smaller --cell or other --columns");
    requireFrameMemory(static_cast<std::int32_t>(sheetWidth), static_cast<std::int32_t>(sheetHeight));

    const auto start = std::chrono::steady_clock::now();
    OIIO::ImageBuf sheet(OIIO::ImageSpec(static_cast<int>(sheetWidth), static_cast<int>(sheetHeight), 3,
                                         OIIO::TypeDesc::FLOAT));
    const float backdrop[3] = {kBackdrop, kBackdrop, kBackdrop};
    OIIO::ImageBufAlgo::fill(sheet, backdrop);
    const korvane::Light& light = options.scene.light;
    const float labelColour[3] = {kLabelGrey, kLabelGrey, kLabelGrey};
    bool labelled = true;

    for (std::int32_t i = 0; i < count; ++i) {
        const Style& style = styles[static_cast<std::size_t>(i)];
        ControlDataRec settings = options.scene.settings;
        settings.flareLens = style.number;
        korvane::FramePixels frame(options.cell.width, options.cell.height, 48);
        renderer.render(settings, light, frame, "style " + std::to_string(style.number) + "/" +
                                                    std::to_string(styles.back().number) + " " + style.name);
        const int x = kGap + (i % columns) * pitchX;
        const int y = kGap + (i / columns) * pitchY;
        OIIO::ImageBufAlgo::paste(sheet, x, y, 0, 0, frame.toImage(true));
        const std::string label = std::to_string(style.number) + "  " + style.name;
        if (labelled)
            labelled = OIIO::ImageBufAlgo::render_text(sheet, x + fontSize / 2, y + options.cell.height + fontSize,
                                                       label, fontSize, kLabelFont, labelColour);
    }
    if (!labelled) {
        OIIO::geterror();
        sheet.geterror();
        std::cerr << "glintwave: no font " << kLabelFont
                  << " for the labels (install fonts-dejavu-core); the sheet has none\n";
    }
    describeImage(sheet, "all " + std::to_string(count) + " styles", options.scene.settings, options.scene);
    writeOutput(sheet, options.output,
                korvane::isFloatFormat(options.output) ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::UINT8);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!common.quiet) {
        char timing[32];
        std::snprintf(timing, sizeof timing, "%.2f s", seconds);
        std::cout << options.output.string() << ": " << count << " styles, " << sheetWidth << "x" << sheetHeight
                  << ", " << timing << ", " << fileSizeText(options.output) << "\n";
    }
    return 0;
}

} // namespace

void addSheetCommand(CommandLine& line)
{
    auto options = std::make_shared<SheetOptions>();
    CLI::App* command = line.addCommand("sheet", "render every style into one labelled contact sheet",
                                        [options, &line] { return runSheet(*options, line.common()); });
    command->add_option("-o,--output", options->output, "the sheet image to write (.png .exr .tif .jpg .dpx)")
        ->required()
        ->type_name("FILE");
    command
        ->add_option_function<std::string>(
            "--cell",
            [options](const std::string& text) {
                const auto parsed = parseFrameSize(text);
                if (!parsed || parsed->width < 16 || parsed->height < 16)
                    throw CLI::ValidationError("--cell", "'" + text + "' is not a cell size; give WIDTHxHEIGHT, "
                                                                      "each at least 16, as in 320x180");
                options->cell = *parsed;
            },
            "the size of one style's frame in pixels (default 320x180)")
        ->type_name("WxH");
    command->add_option("--columns", options->columns, "styles per row (1 to 16, default 4)")
        ->check(CLI::Range(1, kMaxColumns))
        ->type_name("N");
    addLightOptions(*command, options->scene);
    addSettingOptions(*command, options->scene.settings);
}

} // namespace glintwave::cli
