// ColourSpaces.cpp - the built-in spaces and those of an OpenColorIO
// configuration, and their conversions.

#include "korvane/ColourSpaces.h"

#include "korvane/Error.h"
#include "korvane/TransferCurves.h"

#include <OpenColorIO/OpenColorIO.h>

#include <algorithm>
#include <cctype>

namespace OCIO = OCIO_NAMESPACE;

namespace korvane {

struct ColourSpaces::Config {
    OCIO::ConstConfigRcPtr config;
};

namespace {

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::string listed(const std::vector<std::string>& names)
{
    constexpr std::size_t kMost = 24;
    std::string list;
    for (std::size_t i = 0; i < names.size() && i < kMost; ++i)
        list += (list.empty() ? "" : ", ") + names[i];
    if (names.size() > kMost)
        list += " and " + std::to_string(names.size() - kMost) + " more";
    return list;
}

class Identity final : public ColourConversion {
public:
    void apply(float*, std::size_t, int) const override {}
    bool isIdentity() const override { return true; }
    bool isPerChannel() const override { return true; }
};

// The same curve on red, green and blue; alpha stays.
template <double (*curve)(double)>
class PerChannel final : public ColourConversion {
public:
    void apply(float* pixels, std::size_t count, int channels) const override
    {
        for (std::size_t i = 0; i < count; ++i, pixels += channels)
            for (int c = 0; c < 3; ++c)
                pixels[c] = static_cast<float>(curve(pixels[c]));
    }
    bool isPerChannel() const override { return true; }
};

// An OpenColorIO processor on the CPU. Without the approximations of
// powers and logarithms its default allows, so values are those of the
// transforms themselves.
class ConfigConversion final : public ColourConversion {
public:
    explicit ConfigConversion(OCIO::ConstCPUProcessorRcPtr processor, bool identity)
        : processor_(std::move(processor)), identity_(identity)
    {
    }
    void apply(float* pixels, std::size_t count, int channels) const override
    {
        if (identity_ || count == 0)
            return;
        // One row at a time keeps the image description's sizes small.
        constexpr std::size_t kRow = 1 << 16;
        for (std::size_t start = 0; start < count; start += kRow) {
            const auto width = static_cast<long>(std::min(kRow, count - start));
            OCIO::PackedImageDesc image(pixels + start * static_cast<std::size_t>(channels), width, 1, channels);
            processor_->apply(image);
        }
    }
    bool isIdentity() const override { return identity_; }

private:
    OCIO::ConstCPUProcessorRcPtr processor_;
    bool identity_;
};

} // namespace

ColourSpaces::ColourSpaces() : working_(kLinearSpace), names_{std::string(kLinearSpace), std::string(kSrgbSpace)} {}

ColourSpaces::~ColourSpaces() = default;
ColourSpaces::ColourSpaces(ColourSpaces&&) noexcept = default;
ColourSpaces& ColourSpaces::operator=(ColourSpaces&&) noexcept = default;

ColourSpaces ColourSpaces::fromConfig(const std::filesystem::path& file)
{
    ColourSpaces spaces;
    spaces.source_ = file.string();
    spaces.names_.clear();
    spaces.working_.clear();
    spaces.config_ = std::make_unique<Config>();
    try {
        std::error_code error;
        if (!std::filesystem::is_regular_file(file, error))
            throw Error(ErrorPlace{file.string()}, "no such colour configuration; check the path given by --ocio or $OCIO");
        spaces.config_->config = OCIO::Config::CreateFromFile(file.c_str());
        spaces.config_->config->validate();
    } catch (const OCIO::Exception& e) {
        throw Error(ErrorPlace{file.string()}, std::string("is not a usable colour configuration (") + e.what() + ")");
    }
    const OCIO::ConstConfigRcPtr& config = spaces.config_->config;
    for (int i = 0; i < config->getNumColorSpaces(); ++i)
        spaces.names_.emplace_back(config->getColorSpaceNameByIndex(i));
    if (spaces.names_.empty())
        throw Error(ErrorPlace{file.string()}, "defines no colour spaces");
    if (const OCIO::ConstColorSpaceRcPtr linear = config->getColorSpace(OCIO::ROLE_SCENE_LINEAR))
        spaces.working_ = linear->getName();
    return spaces;
}

bool ColourSpaces::builtIn() const
{
    return !config_;
}

std::string ColourSpaces::displayReferred() const
{
    if (!config_)
        return std::string(kSrgbSpace);
    if (const OCIO::ConstColorSpaceRcPtr picking = config_->config->getColorSpace(OCIO::ROLE_COLOR_PICKING))
        return picking->getName();
    for (const std::string& name : names_)
        if (sameName(name, "sRGB"))
            return name;
    throw Error(ErrorPlace{source_}, "names no display-referred space for the plug-in's painted levels (no "
                                     "color_picking role, no space called sRGB); add a color_picking role to it");
}

std::string ColourSpaces::find(std::string_view name, std::string_view what) const
{
    if (config_) {
        if (const OCIO::ConstColorSpaceRcPtr space = config_->config->getColorSpace(std::string(name).c_str()))
            return space->getName();
    } else {
        for (const std::string& known : names_)
            if (sameName(known, name))
                return known;
    }
    throw Error(std::string(what) + ": no colour space is called '" + std::string(name) + "' in " +
                (config_ ? source_ : std::string("the built-in spaces")) + "; the spaces are " + listed(names_));
}

std::unique_ptr<ColourConversion> ColourSpaces::conversion(std::string_view from, std::string_view to) const
{
    const std::string source = find(from, "the source colour space");
    const std::string target = find(to, "the target colour space");
    if (source == target)
        return std::make_unique<Identity>();
    if (config_) {
        try {
            const OCIO::ConstProcessorRcPtr processor =
                config_->config->getProcessor(source.c_str(), target.c_str());
            return std::make_unique<ConfigConversion>(
                processor->getOptimizedCPUProcessor(OCIO::OPTIMIZATION_LOSSLESS), processor->isNoOp());
        } catch (const OCIO::Exception& e) {
            throw Error(ErrorPlace{source_}, "cannot convert from " + source + " to " + target + " (" + e.what() + ")");
        }
    }
    if (source == kSrgbSpace)
        return std::make_unique<PerChannel<srgbToLinear>>();
    return std::make_unique<PerChannel<linearToSrgb>>();
}

} // namespace korvane
