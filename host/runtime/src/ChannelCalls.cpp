// ChannelCalls.cpp - the channel command records.

#include "korvane/ChannelCalls.h"

namespace korvane {
namespace {

template <class Record>
void fillRange(Record& record, const ChannelRange& range)
{
    record.theStartFrame = range.startFrame;
    record.theEndFrame = range.endFrame;
    record.theStartTime = range.startTime;
    record.theFrameTime = range.frameTime;
}

} // namespace

std::int32_t initializeChannels(PluginInstance& instance, const ChannelRange& range)
{
    PluginInitializeChannelRec record{};
    fillRange(record, range);
    return instance.call(kCmdInitChannel, &record, sizeof record);
}

std::int32_t updateChannels(PluginInstance& instance, const ChannelRange& range)
{
    PluginUpdateChannelRec record{};
    fillRange(record, range);
    return instance.call(kCmdUpdateChannel, &record, sizeof record);
}

std::int32_t loadChannels(PluginInstance& instance, const ChannelRange& range, std::int32_t frame)
{
    PluginLoadChannelRec record{};
    fillRange(record, range);
    record.theFrame = frame;
    return instance.call(kCmdLoadChannel, &record, sizeof record);
}

std::int32_t finishChannels(PluginInstance& instance)
{
    PluginFinishChannelRec record{};
    return instance.call(kCmdFinishChannel, &record, sizeof record);
}

} // namespace korvane
