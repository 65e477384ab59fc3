// 'SETF': the frame and the light stored in the working data, and the flag
// bits that make the flare ignore the light's rotation, size or intensity.
#include <algorithm>
#include <cmath>

#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

const double kPi = 3.14159265358979323846;

Matrix4 rotation(double degrees)
{
    const double r = degrees * kPi / 180.0;
    return Matrix4{std::cos(r), std::sin(r), 0, 0, -std::sin(r), std::cos(r), 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

class SetupTest : public HostTest {
protected:
    void SetUp() override
    {
        HostTest::SetUp();
        writeStandardStyle();
        ASSERT_EQ(host.init(), kPluginNoError);
    }

    void setFlags(std::uint32_t flags) { host.controlHeader()->flareFlags = flags; }

    // The origin glow's outer size (0.2 of a table unit, as a float) times
    // the frame's y scale.
    static double flareScale(const FrameSetup& frame) { return static_cast<double>(0.2f) * frame.yScale; }
};

TEST_F(SetupTest, FrameAndLightAreStored)
{
    FrameSetup frame;
    frame.frame = L_Rect{10, 20, 130, 220, 200, 120};
    frame.xScale = 55.5;
    frame.yScale = 44.25;
    frame.xCenter = 120.5;
    frame.yCenter = 70.25;
    frame.lightPosition = DCoordinate{33.5, 47.25, 9.0};
    frame.lightColor = 0x80FF4020u;
    frame.lightIntensity = 0.625;
    frame.lightFrameRadius = 12.0;
    frame.lightMatrix = rotation(30.0);
    ASSERT_EQ(host.setup(frame), kPluginNoError);

    const PluginDataRec* data = host.pluginHeader();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(0, std::memcmp(&data->flareRect, &frame.frame, sizeof(L_Rect)));
    EXPECT_EQ(data->flareXScale, 55.5);
    EXPECT_EQ(data->flareYScale, 44.25);
    EXPECT_EQ(data->flareXCenter, 120.5);
    EXPECT_EQ(data->flareYCenter, 70.25);
    EXPECT_EQ(data->flareXPosition, 33.5);
    EXPECT_EQ(data->flareYPosition, 47.25);
    EXPECT_EQ(data->flareLightColor.colorValue, 0x80FF4020u);
    EXPECT_EQ(data->flareLightIntensity, 0.625);
    EXPECT_NEAR(data->flareLightRotation, 30.0, 1e-9);
    EXPECT_EQ(data->flareLightSize, 12.0 / flareScale(frame));
    EXPECT_EQ(copyOf(data->flareHostReference), copyOf(host.infoRecord().theHostReference));
    EXPECT_NE(copyOf(data->flareHostProc), nullptr);
    EXPECT_EQ(copyOf(data->flarePixelBuffer.bufferBase), nullptr);
    EXPECT_EQ(data->flarePixelBuffer.bufferRowBytes, 200 * 4);
    EXPECT_EQ(0, std::memcmp(&data->flarePixelBuffer.bufferRect, &frame.frame, sizeof(L_Rect)));
    // The colours and layout were recomputed for this light.
    EXPECT_EQ(data->flareReset, 0);
}

// The blur position starts equal to the light's and is moved by the shutter
// times their difference, which is nothing: the record's blur position is
// not used.
TEST_F(SetupTest, BlurPositionIsTheLightPosition)
{
    FrameSetup frame;
    frame.blurShutter = 0.5;
    frame.lightPosition = DCoordinate{40.0, 30.0, 0.0};
    frame.lightBlurPosition = DCoordinate{90.0, 10.0, 0.0};
    ASSERT_EQ(host.setup(frame), kPluginNoError);
    EXPECT_EQ(host.pluginHeader()->flareBlurXPosition, 40.0);
    EXPECT_EQ(host.pluginHeader()->flareBlurYPosition, 30.0);
}

struct FlagCase {
    const char* name;
    std::uint32_t flags;
    bool followsRotation;
    bool followsSize;
    bool followsIntensity;
};

TEST_F(SetupTest, FlagsDetachTheFlareFromTheLight)
{
    const FlagCase cases[] = {
        {"none", 0, true, true, true},
        {"bit 20: no rotation", 1u << 20, false, true, true},
        {"bit 21: no size", 1u << 21, true, false, true},
        {"bit 23: no intensity", 1u << 23, true, true, false},
        {"all three", (1u << 20) | (1u << 21) | (1u << 23), false, false, false},
        {"bit 22 changes none", 1u << 22, true, true, true},
    };
    FrameSetup frame;
    frame.lightMatrix = rotation(-45.0);
    frame.lightIntensity = 0.25;
    frame.lightFrameRadius = 6.0;
    for (const FlagCase& c : cases) {
        SCOPED_TRACE(c.name);
        setFlags(c.flags);
        ASSERT_EQ(host.setup(frame), kPluginNoError);
        const PluginDataRec* data = host.pluginHeader();
        if (c.followsRotation)
            EXPECT_NEAR(data->flareLightRotation, -45.0, 1e-9);
        else
            EXPECT_EQ(data->flareLightRotation, 0.0);
        EXPECT_EQ(data->flareLightSize, c.followsSize ? 6.0 / flareScale(frame) : 0.0);
        EXPECT_EQ(data->flareLightIntensity, c.followsIntensity ? 0.25 : 1.0);
    }
}

TEST_F(SetupTest, RotationIsTheAngleOfTheMatrixRows)
{
    for (double degrees : {0.0, 90.0, 179.0, -120.0}) {
        FrameSetup frame;
        frame.lightMatrix = rotation(degrees);
        ASSERT_EQ(host.setup(frame), kPluginNoError);
        EXPECT_NEAR(host.pluginHeader()->flareLightRotation, degrees, 1e-9) << degrees;
    }
}

TEST_F(SetupTest, StyleWithoutOriginGlowGivesAnInfiniteLightSize)
{
    // The flare scale is 0 without an origin glow; the size stays the double
    // that the division gives.
    FlareTableFolder folder;
    folder.add(kStreakResType, 20, streakResource(StreakSpec{}));
    folder.add(kFlareResType, kFlareResBaseID + 1, flareInfoResource({{kStreakResType, 20, 20}}));
    folder.write();
    ASSERT_EQ(host.init(), kPluginNoError);
    FrameSetup frame;
    ASSERT_EQ(host.setup(frame), kPluginNoError);
    EXPECT_TRUE(std::isinf(host.pluginHeader()->flareLightSize));
    frame.lightFrameRadius = 0.0;
    ASSERT_EQ(host.setup(frame), kPluginNoError);
    EXPECT_TRUE(std::isnan(host.pluginHeader()->flareLightSize));

    // And the flare is still drawn without a fault.
    std::vector<std::uint16_t> pixels(static_cast<std::size_t>(frame.frame.width) * frame.frame.height * 3);
    EXPECT_EQ(host.generate(pixels.data(), static_cast<std::int32_t>(frame.frame.width * 6), frame.frame, 48),
              kPluginNoError);
}

// The test host's progress record and cancel, through a whole 'GENF'.
TEST_F(SetupTest, GenerateReportsProgressAndStopsAtTheHostsCancel)
{
    FrameSetup frame;
    ASSERT_EQ(host.setup(frame), kPluginNoError);
    const std::int32_t rowBytes = static_cast<std::int32_t>(frame.frame.width * 6);
    std::vector<std::uint16_t> pixels(static_cast<std::size_t>(frame.frame.width) * frame.frame.height * 3);
    host.clearLog();
    ASSERT_EQ(host.generate(pixels.data(), rowBytes, frame.frame, 48), kPluginNoError);
    const auto& reports = host.statusReports();
    ASSERT_GE(reports.size(), 2u);
    EXPECT_EQ(reports.front().info, "Drawing Flare");
    EXPECT_EQ(reports.front().unit, "Scanline");
    EXPECT_EQ(reports.front().value, 0);
    EXPECT_EQ(reports.back().maximum, static_cast<std::int32_t>(frame.frame.height));
    EXPECT_EQ(reports.back().value, static_cast<std::int32_t>(frame.frame.height));
    EXPECT_NE(std::count(pixels.begin(), pixels.end(), 0), static_cast<std::ptrdiff_t>(pixels.size()))
        << "nothing was painted";

    // A cancel answered to the third report ends the command with it; no
    // report is sent after it.
    host.options.cancelAfterReports = 2;
    host.clearLog();
    EXPECT_EQ(host.generate(pixels.data(), rowBytes, frame.frame, 48), kPluginUserCanceled);
    EXPECT_EQ(host.statusReports().size(), 3u);
}

TEST_F(SetupTest, SetupErrorsComeFromTheDataCheck)
{
    table.removeFile();
    host.pluginHeader()->flareDataSize = 0;  // invalid: the next check re-reads
    EXPECT_EQ(host.setup(), kPluginMemoryError);
}

} // namespace
} // namespace glintwave::testhost
