// ChannelCalls.h - the channel commands a host sends a plug-in instance:
// 'ICHN' registers the channels (into the instance's ChannelStore), 'UCHN'
// keys the current settings over a range of frames, 'LCHN' loads one frame's
// values into the settings, 'FCHN' ends the exchange. Each returns the
// plug-in's result code.
#pragma once

#include "korvane/PluginHost.h"

#include <cstdint>

namespace korvane {

// The shot the channels describe: frames and their times in seconds.
struct ChannelRange {
    std::int32_t startFrame = 1;
    std::int32_t endFrame = 1;
    double startTime = 0;
    double frameTime = 1.0 / 24.0;
};

std::int32_t initializeChannels(PluginInstance& instance, const ChannelRange& range);
std::int32_t updateChannels(PluginInstance& instance, const ChannelRange& range);
std::int32_t loadChannels(PluginInstance& instance, const ChannelRange& range, std::int32_t frame);
std::int32_t finishChannels(PluginInstance& instance);

} // namespace korvane
