// plugin_main_fuzzer.cpp - Glintwave.so driven through Main with hostile
// settings blocks, 'SETF' records, buffer rectangles and host answers.
//
// The plug-in reads the delivered styles (compiled from glintwave/styles at
// start-up). The input chooses the host's answers and the settings block
// (empty, raw bytes, or the defaults with some bytes overwritten), then a
// sequence of commands: 'INIT', 'SETF' from a sane record with bytes
// overwritten anywhere, 'GENF' into guarded buffers anywhere near the frame,
// pokes into the working block the host keeps, and any command with a record
// of any size.
#include "PluginHarness.h"
#include "RscCompiler.h"

#include <algorithm>
#include <cmath>

namespace {

// Overwrites up to `count` runs of bytes of the block from the input.
void overwrite(FuzzedDataProvider& input, std::uint8_t* bytes, std::size_t size, int count, std::size_t from = 0)
{
    if (size <= from)
        return;
    for (int i = 0; i < count && input.remaining_bytes() > 0; i++) {
        const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(from, size - 1);
        const std::vector<std::uint8_t> run =
            input.ConsumeBytes<std::uint8_t>(std::min<std::size_t>(input.ConsumeIntegralInRange(1, 8), size - at));
        if (!run.empty())
            std::memcpy(bytes + at, run.data(), run.size());
    }
}

void setup(FuzzedDataProvider& input, korvane::PluginInstance& instance)
{
    const auto width = input.ConsumeIntegralInRange<std::int32_t>(1, 200);
    const auto height = input.ConsumeIntegralInRange<std::int32_t>(1, 150);
    const double lightX = input.ConsumeIntegralInRange(-50, 250);
    const double lightY = input.ConsumeIntegralInRange(-50, 200);
    const double lightRadius = input.ConsumeIntegralInRange(0, 40);
    const double lightRotation = input.ConsumeIntegralInRange(-360, 360);
    // The host library fills the record; this one is the same, then damaged.
    PluginFlareSetupRec record{};
    record.theFrameRect = fuzz::rectOf(0, 0, width, height);
    record.theFrameXScale = record.theFrameYScale = height / 2.0;
    record.theFrameXCenter = width / 2.0;
    record.theFrameYCenter = height / 2.0;
    record.theLightFramePosition = {lightX, lightY, 0.0};
    record.theLightBlurFramePosition = record.theLightFramePosition;
    record.theLightColor.colorValue = input.ConsumeIntegral<std::uint32_t>();
    record.theLightIntensity = 1.0;
    record.theLightFrameRadius = lightRadius;
    const double radians = lightRotation * 0.017453292519943295;
    Matrix4 m{};
    m.m00 = m.m11 = std::cos(radians);
    m.m01 = std::sin(radians);
    m.m10 = -m.m01;
    m.m22 = m.m33 = 1.0;
    record.theLightMatrix = record.theLightRotMatrix = record.theLightBlurMatrix = m;
    overwrite(input, reinterpret_cast<std::uint8_t*>(&record), sizeof record, input.ConsumeIntegralInRange(0, 4),
              sizeof(PluginInfoRec));
    const std::int32_t size = input.ConsumeIntegralInRange(0, 15) == 0
                                  ? input.ConsumeIntegralInRange<std::int32_t>(sizeof(PluginInfoRec), sizeof record)
                                  : static_cast<std::int32_t>(sizeof record);
    fuzz::requireDocumented(instance.call(kCmdFlareSetup, &record, size));
}

// Any command, with a record of any size holding the info record as far as
// it reaches and the input's bytes after it.
void anyCommand(FuzzedDataProvider& input, korvane::PluginInstance& instance)
{
    static const std::uint32_t kCommands[] = {kCmdInformation, kCmdCheck,         kCmdDescribe,
                                              kCmdInterface,   kCmdInitChannel,   kCmdFinishChannel,
                                              kCmdUpdateChannel, kCmdLoadChannel, kCmdFinish,
                                              kCmdInitialize,  kCmdFlareSetup,    kCmdFlareGenerate};
    const std::uint32_t command =
        input.ConsumeBool() ? input.PickValueInArray(kCommands) : input.ConsumeIntegral<std::uint32_t>();
    const auto size = input.ConsumeIntegralInRange<std::int32_t>(0, sizeof(PluginInformationRec) + 64);
    std::vector<std::uint8_t> record(static_cast<std::size_t>(std::max(size, 1)));
    const std::vector<std::uint8_t> tail = input.ConsumeBytes<std::uint8_t>(record.size());
    std::copy(tail.begin(), tail.end(), record.begin());
    const PluginInfoRec info = instance.infoRecord();
    std::memcpy(record.data(), &info, std::min(record.size(), sizeof info));
    // 'UCHN' writes every frame of the range it is given: a range of four
    // billion frames is honest work, not a fault, so the span is kept short.
    if (command == kCmdUpdateChannel && record.size() >= sizeof(PluginUpdateChannelRec)) {
        PluginUpdateChannelRec update;
        std::memcpy(&update, record.data(), sizeof update);
        if (update.theEndFrame > update.theStartFrame &&
            static_cast<std::int64_t>(update.theEndFrame) - update.theStartFrame > 64)
            update.theEndFrame = update.theStartFrame + 64;
        std::memcpy(record.data(), &update, sizeof update);
    }
    fuzz::requireDocumented(instance.library().call(command, size, record.data()));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::vector<std::filesystem::path> styles;
    for (const auto& entry : std::filesystem::directory_iterator(GLINTWAVE_STYLES_DIR))
        if (entry.path().extension() == ".json")
            styles.push_back(entry.path());
    std::sort(styles.begin(), styles.end());
    fuzz::Plugin::get().writeTable(korvane::rsc::compileFiles(styles));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    fuzz::HostScript script;
    korvane::PluginInstance instance(fuzz::Plugin::get().library(), script.options(input));

    switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0:
        break;
    case 1:
        instance.setControlData(input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange(0, 700)));
        break;
    default: {
        fuzz::requireDocumented(instance.init());
        std::vector<std::uint8_t> control(instance.controlData().begin(), instance.controlData().end());
        overwrite(input, control.data(), control.size(), input.ConsumeIntegralInRange(0, 6));
        if (input.ConsumeBool())
            control.resize(input.ConsumeIntegralInRange<std::size_t>(0, control.size() + 200));
        instance.setControlData(control);
        break;
    }
    }

    for (int step = 0; step < 8 && input.remaining_bytes() > 0; step++) {
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0: fuzz::requireDocumented(instance.init()); break;
        case 1: setup(input, instance); break;
        case 2:
        case 3: fuzz::paint(input, instance); break;
        case 4: {
            korvane::HostBlock& block = instance.pluginBlock();
            overwrite(input, block.data(), static_cast<std::size_t>(block.size()), input.ConsumeIntegralInRange(1, 4));
            break;
        }
        default: anyCommand(input, instance); break;
        }
    }
    return 0;
}
