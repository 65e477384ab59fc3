// Flashes.h - where a sequence's brightness flashes more than three times
// in a second.
//
// A flash is a pair of opposing changes of relative luminance (linear, 0..1)
// of at least a tenth of the maximum, where the darker state is below 0.8,
// as the common web accessibility guidance defines a general flash; more
// than three in any one second is the limit. Changes are found between the
// turning points of the luminance: a rise or a fall counts once it reaches
// a tenth, however many frames it takes.
#pragma once

#include <cstdint>
#include <vector>

namespace korvane {

inline constexpr double kFlashChange = 0.1;
inline constexpr double kFlashDarkBelow = 0.8;
inline constexpr int kFlashesPerSecond = 3;

// The frames (indices into `luminance`) at which a counted change
// completes.
std::vector<std::size_t> flashChanges(const std::vector<double>& luminance);

// Where more than three flashes (eight changes) fall within one second
// (`framesPerSecond` frames): the frame each such stretch begins at, a
// stretch reported again only a second after the last one reported.
std::vector<std::size_t> tooManyFlashes(const std::vector<double>& luminance, double framesPerSecond);

} // namespace korvane
