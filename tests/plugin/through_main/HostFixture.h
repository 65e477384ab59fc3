// HostFixture.h - what the tests through Main share: a test host with a flare
// table folder, and stored settings records built byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "FlareTable.h"
#include "TestHost.h"

namespace glintwave::testhost {

// The defaults of a settings record, written out here on their own so the
// tests do not take them from the plug-in.
inline ControlDataRec expectedDefaults()
{
    ControlDataRec control;
    std::memset(&control, 0, sizeof control);
    control.ownerType = kFlareOwnerType;
    control.ownerVersion = 6;
    control.flareAspectRatio = 2.0;
    control.flareRotation = 0.0;
    control.flareRingScale = 1.0;
    control.flareRingIntensity = 1.0;
    control.flareRingContrast = 1.0;
    control.flareStreakScale = 1.0;
    control.flareStreakIntensity = 1.0;
    control.flareStreakContrast = 1.0;
    for (ARGB_Color* color : {&control.flareRingColor, &control.flareOriginGlowColor, &control.flareOuterGlowColor,
                              &control.flareHaloColor, &control.flareStreakColor})
        *color = ARGB_Color{-1, -1, -1, -1};
    control.flareFlags = 0;
    control.flareLens = 1;
    return control;
}

// A version 6 header with every field distinct from the defaults.
inline ControlDataRec customControl()
{
    ControlDataRec control = expectedDefaults();
    control.flareAspectRatio = 1.25;
    control.flareRotation = 33.5;
    control.flareRingScale = 0.75;
    control.flareRingIntensity = 1.5;
    control.flareRingContrast = 2.25;
    control.flareStreakScale = 0.5;
    control.flareStreakIntensity = 3.0;
    control.flareStreakContrast = 0.125;
    control.flareRingColor = ARGB_Color{-1, 100, 200, 300};
    control.flareOriginGlowColor = ARGB_Color{-1, 400, 500, 600};
    control.flareOuterGlowColor = ARGB_Color{-1, 700, 800, 900};
    control.flareHaloColor = ARGB_Color{-1, 1000, 1100, 1200};
    control.flareStreakColor = ARGB_Color{-1, 1300, 1400, 1500};
    control.flareFlags = 0x12345678u & ~0x00F00000u;
    control.flareLens = 1;
    return control;
}

// A copy of a field. gtest's assertions bind references, and a field of a
// packed record may lie where its type cannot be referenced (a pointer at an
// offset that is not a multiple of 8).
template <class T>
constexpr T copyOf(T value)
{
    return value;
}

inline Bytes bytesOf(const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

template <class T>
inline void put(Bytes& out, std::size_t offset, const T& value)
{
    if (out.size() < offset + sizeof value)
        out.resize(offset + sizeof value, 0);
    std::memcpy(out.data() + offset, &value, sizeof value);
}

// Compares two headers field by field (doubles bit for bit), so a failure
// names the field.
inline void expectSameControl(const ControlDataRec& actual, const ControlDataRec& expected)
{
    EXPECT_EQ(actual.ownerType, expected.ownerType);
    EXPECT_EQ(actual.ownerVersion, expected.ownerVersion);
    EXPECT_EQ(actual.flareAspectRatio, expected.flareAspectRatio);
    EXPECT_EQ(actual.flareRotation, expected.flareRotation);
    EXPECT_EQ(actual.flareRingScale, expected.flareRingScale);
    EXPECT_EQ(actual.flareRingIntensity, expected.flareRingIntensity);
    EXPECT_EQ(actual.flareRingContrast, expected.flareRingContrast);
    EXPECT_EQ(actual.flareStreakScale, expected.flareStreakScale);
    EXPECT_EQ(actual.flareStreakIntensity, expected.flareStreakIntensity);
    EXPECT_EQ(actual.flareStreakContrast, expected.flareStreakContrast);
    EXPECT_EQ(0, std::memcmp(&actual.flareRingColor, &expected.flareRingColor, 40)) << "colours";
    EXPECT_EQ(actual.flareFlags, expected.flareFlags);
    EXPECT_EQ(actual.flareLens, expected.flareLens);
    EXPECT_EQ(actual.flareRingCount, expected.flareRingCount);
    EXPECT_EQ(actual.flareStreakCount, expected.flareStreakCount);
}

// A test host whose plug-in finds a flare table in a fresh folder of its own.
class HostTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(host.loaded()) << host.loadError(); }
    void TearDown() override
    {
        for (const std::string& error : host.protocolErrors())
            ADD_FAILURE() << "host protocol: " << error;
    }

    // A style with no elements at all.
    void writeEmptyStyle(std::int32_t style = 1)
    {
        // A table is at least 12 bytes: a count of 0 and one unused entry.
        table.add(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + style),
                  flareInfoResource({{kRingResType, 1, 1}}, 0));
        table.write();
    }
    void writeStandardStyle()
    {
        table.addStandardStyle();
        table.write();
    }

    // A command that only checks the data: 'GENF' for an empty area.
    std::int32_t checkOnly()
    {
        static std::uint64_t pixel;
        return host.generate(&pixel, 8, L_Rect{0, 0, 0, 0, 0, 0}, 48);
    }

    FlareTableFolder table;
    TestHost host;
};

} // namespace glintwave::testhost
