// ColourSpaces.cpp - the built-in spaces and their conversions.

#include "korvane/ColourSpaces.h"

#include "korvane/Error.h"
#include "korvane/TransferCurves.h"

#include <algorithm>
#include <cctype>

namespace korvane {
namespace {

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

class Identity final : public ColourConversion {
public:
    void apply(float*, std::size_t, int) const override {}
    bool isIdentity() const override { return true; }
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
};

} // namespace

ColourSpaces::ColourSpaces() : working_(kLinearSpace), names_{std::string(kLinearSpace), std::string(kSrgbSpace)} {}

std::string ColourSpaces::find(std::string_view name, std::string_view what) const
{
    for (const std::string& known : names_)
        if (sameName(known, name))
            return known;
    std::string list;
    for (const std::string& known : names_)
        list += (list.empty() ? "" : ", ") + known;
    throw Error(std::string(what) + ": no colour space is called '" + std::string(name) + "'; the spaces are " + list);
}

std::unique_ptr<ColourConversion> ColourSpaces::conversion(std::string_view from, std::string_view to) const
{
    const std::string source = find(from, "the source colour space");
    const std::string target = find(to, "the target colour space");
    if (source == target)
        return std::make_unique<Identity>();
    if (source == kSrgbSpace)
        return std::make_unique<PerChannel<srgbToLinear>>();
    return std::make_unique<PerChannel<linearToSrgb>>();
}

} // namespace korvane
