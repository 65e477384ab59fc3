// plugin_table_fuzzer.cpp - Glintwave.so reading a hostile flare table.
//
// The input is a resource file (its last bytes choose the style, the host's
// answers and the buffers): the harness writes it as the plug-in's
// Glintwave.rsc, then runs 'INIT', 'SETF' and paints at every depth, so the
// plug-in's table loading, element reading and the painters all meet what
// any file can hold.
#include "PluginHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 8)
        return 0;
    // The choices come from the end of the input, the file from the front.
    FuzzedDataProvider choices(data + size - 8, 8);
    fuzz::Plugin::get().writeTable(data, size - 8);

    fuzz::HostScript script;
    korvane::PluginInstance instance(fuzz::Plugin::get().library(), script.options(choices));
    // The defaults, with the style the choices name (usually 1 to 4).
    fuzz::requireDocumented(instance.init());
    std::vector<std::uint8_t> control(instance.controlData().begin(), instance.controlData().end());
    if (control.size() >= sizeof(ControlDataRec)) {
        const std::int32_t style = choices.ConsumeIntegralInRange(0, 7) == 0 ? choices.ConsumeIntegral<std::int32_t>()
                                                                             : choices.ConsumeIntegralInRange(1, 4);
        std::memcpy(control.data() + offsetof(ControlDataRec, flareLens), &style, sizeof style);
        instance.setControlData(control);
    }
    korvane::Light light;
    light.x = {static_cast<double>(choices.ConsumeIntegralInRange(-20, 80)), korvane::Length::Unit::Pixels};
    light.y = {static_cast<double>(choices.ConsumeIntegralInRange(-20, 60)), korvane::Length::Unit::Pixels};
    light.radius = {};
    const korvane::FrameSetup frame = korvane::FrameSetup::centred(64, 48, light);
    fuzz::requireDocumented(instance.setup(frame));
    for (int pass = 0; pass < 3; pass++)
        fuzz::paint(choices, instance);
    return 0;
}
