// LinearBlend.h - the flare decoded to linear light and added there
// (Compose.h).
#pragma once

#include "Compose.h"

namespace glintwave::cli {

ComposedFrame composeLinear(const Painter& paint, const PassPainter& paintPass, int depth,
                            const std::optional<korvane::RgbImage>& background, FrameSize size,
                            const std::filesystem::path& output, const CompositeOptions& options);

} // namespace glintwave::cli
