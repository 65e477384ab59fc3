// project_text_fuzzer.cpp - libFuzzer harness of the texts a user or a file
// hands the host: project files, frame ranges, numbered file names and
// "Name@Frame=Value" edits.
//
// The first byte picks the reader; the rest is the text. Every reader must
// either accept or throw its own error type. A project that was accepted
// must come back unchanged from its own formatted text, and an edit that
// was accepted must leave a project that formats and reads back the same.
#include <cstdint>
#include <cstring>
#include <string>

#include "korvane/FrameRange.h"
#include "korvane/ProjectEdit.h"

namespace {

korvane::ChannelStore someChannels()
{
    korvane::ChannelStore store;
    auto add = [&](std::int32_t id, std::uint32_t type, const char* name) {
        HostAddChannelRec record{};
        record.theChannelID = id;
        record.theChannelType = type;
        record.theChannelName[0] = static_cast<unsigned char>(std::strlen(name));
        std::memcpy(record.theChannelName + 1, name, record.theChannelName[0]);
        store.answer(kHostAddChannel, &record);
    };
    add(1, kChannelLabel, "Glintwave");
    add(4, kChannelReal, "Ring Scale");
    add(15, kChannelLabelEnd, "");
    add(16, kChannelLabel, "Halo");
    add(17, kChannelBoolean, "Visible");
    add(20, kChannelRGB, "Color");
    add(21, kChannelLabelEnd, "");
    return store;
}

void roundTrip(const korvane::Project& project)
{
    if (korvane::parseProject(korvane::formatProject(project), "again") != project)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    switch (data[0] % 4) {
    case 0:
        try {
            roundTrip(korvane::parseProject(text, "fuzz"));
        } catch (const korvane::Error&) {
        }
        break;
    case 1:
        try {
            const korvane::FrameList frames = korvane::parseFrameRange(text);
            for (std::size_t i = 1; i < frames.size(); i++)
                if (frames[i - 1] >= frames[i])
                    __builtin_trap();
        } catch (const korvane::Error&) {
        }
        break;
    case 2:
        try {
            const korvane::FramePattern pattern(text);
            (void)pattern.name(INT32_MIN);
            (void)pattern.name(1234567);
        } catch (const korvane::Error&) {
        }
        break;
    default: {
        static const korvane::ChannelStore channels = someChannels();
        korvane::Project project;
        try {
            korvane::applyAssignment(project, korvane::parseAssignment(text), channels);
            roundTrip(project);
            (void)korvane::describeProject(project);
        } catch (const korvane::Error&) {
        }
        break;
    }
    }
    return 0;
}
