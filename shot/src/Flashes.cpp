// Flashes.cpp - counted changes of luminance and the windows with too many.

#include "korvane/Flashes.h"

#include <algorithm>
#include <cmath>

namespace korvane {

std::vector<std::size_t> flashChanges(const std::vector<double>& luminance)
{
    std::vector<std::size_t> changes;
    if (luminance.empty())
        return changes;
    const auto counts = [](double from, double to) {
        return std::fabs(to - from) >= kFlashChange && std::min(from, to) < kFlashDarkBelow;
    };
    // Before the first change: the lowest and highest seen, either may be
    // where it starts. After it: the extreme of the way it went.
    double low = luminance.front(), high = luminance.front();
    int direction = 0;
    for (std::size_t i = 1; i < luminance.size(); ++i) {
        const double value = luminance[i];
        if (direction == 0) {
            if (counts(low, value) && value > low) {
                direction = 1;
            } else if (counts(high, value) && value < high) {
                direction = -1;
            } else {
                low = std::min(low, value);
                high = std::max(high, value);
                continue;
            }
            changes.push_back(i);
            low = high = value;
            continue;
        }
        const double extreme = direction > 0 ? high : low;
        if ((direction > 0 && value >= extreme) || (direction < 0 && value <= extreme)) {
            low = high = value;  // further the same way
            continue;
        }
        if (counts(extreme, value)) {
            changes.push_back(i);
            direction = -direction;
            low = high = value;
        }
    }
    return changes;
}

std::vector<std::size_t> tooManyFlashes(const std::vector<double>& luminance, double framesPerSecond)
{
    const std::vector<std::size_t> changes = flashChanges(luminance);
    const auto window = static_cast<std::size_t>(std::max(1.0, std::floor(framesPerSecond)));
    // More than three flashes: at least eight changes (four opposing pairs).
    constexpr std::size_t kChanges = 2 * (kFlashesPerSecond + 1);
    std::vector<std::size_t> starts;
    for (std::size_t first = 0; first + kChanges <= changes.size(); ++first) {
        const std::size_t last = first + kChanges - 1;
        // Eight changes within one second: the first begins at the frame
        // before the one it completes at.
        if (changes[last] - changes[first] < window) {
            const std::size_t start = changes[first] - 1;
            if (starts.empty() || start >= starts.back() + window)
                starts.push_back(start);
        }
    }
    return starts;
}

} // namespace korvane
