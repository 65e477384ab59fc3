// HostBlend.h - the flare's levels painted into the frame as the platform's
// own host paints them (Compose.h).
#pragma once

#include "Compose.h"

namespace glintwave::cli {

ComposedFrame composeHostBlend(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                               FrameSize size, const std::filesystem::path& output);

} // namespace glintwave::cli
