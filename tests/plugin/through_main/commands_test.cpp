// The commands that answer the host about the plug-in, the dispatcher's
// answers, and the record size checks of every command.
#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

using CommandsTest = HostTest;

TEST_F(CommandsTest, UnknownCommandAnswersTwoAndAsksNothing)
{
    writeStandardStyle();
    const std::uint32_t commands[] = {KV_FOURCC('X', 'X', 'X', 'X'), kHostResetChannel, 0u, 0xFFFFFFFFu};
    for (std::uint32_t command : commands) {
        PluginInterfaceRec record{};
        EXPECT_EQ(host.call(command, record), kPluginUnsupported) << fourCC(command);
    }
    EXPECT_TRUE(host.requests().empty());
}

TEST_F(CommandsTest, NullRecordAnswersThree)
{
    const std::uint32_t commands[] = {kCmdInitialize, kCmdInformation, kCmdFlareSetup, KV_FOURCC('X', 'X', 'X', 'X')};
    for (std::uint32_t command : commands)
        EXPECT_EQ(host.callRaw(command, 1128, nullptr), kPluginIncompatible) << fourCC(command);
    EXPECT_TRUE(host.requests().empty());
}

struct CheckCase {
    std::uint32_t asked;
    std::int32_t expected;
};

TEST_F(CommandsTest, CheckKnowsExactlyTheTwelveCommands)
{
    const CheckCase cases[] = {
        {kCmdCheck, 0},         {kCmdDescribe, 0},      {kCmdFinishChannel, 0}, {kCmdFinish, 0},
        {kCmdFlareGenerate, 0}, {kCmdInitChannel, 0},   {kCmdInformation, 0},   {kCmdInitialize, 0},
        {kCmdInterface, 0},     {kCmdLoadChannel, 0},   {kCmdFlareSetup, 0},    {kCmdUpdateChannel, 0},
        // Not understood: deliberately 3, not the 2 that Main answers.
        {kHostResetChannel, 3}, {kHostFree, 3},         {KV_FOURCC('X', 'X', 'X', 'X'), 3},
        {KV_FOURCC('i', 'n', 'i', 't'), 3}, {0, 3},
    };
    for (const CheckCase& c : cases)
        EXPECT_EQ(host.check(c.asked), c.expected) << fourCC(c.asked);
    EXPECT_TRUE(host.requests().empty());
}

struct SizeCase {
    std::uint32_t command;
    std::size_t minimum;
};

// Every command answers 3 for a record one byte short of its own (and for a
// negative size), asks nothing of the host and leaves both blocks alone.
TEST_F(CommandsTest, ShortRecordsAnswerThreeAndChangeNothing)
{
    writeStandardStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    const Bytes control = blockBytes(host.control());
    const Bytes plugin = blockBytes(host.plugin());
    host.clearLog();

    const SizeCase cases[] = {
        {kCmdInitialize, sizeof(PluginInitializeRec)},
        {kCmdFinish, sizeof(PluginFinishRec)},
        {kCmdInformation, sizeof(PluginInformationRec)},
        {kCmdCheck, sizeof(PluginCheckRec)},
        {kCmdDescribe, sizeof(PluginDescribeRec)},
        {kCmdInterface, sizeof(PluginInterfaceRec)},
        {kCmdInitChannel, sizeof(PluginInitializeChannelRec)},
        {kCmdFinishChannel, sizeof(PluginFinishChannelRec)},
        {kCmdUpdateChannel, sizeof(PluginUpdateChannelRec)},
        {kCmdLoadChannel, sizeof(PluginLoadChannelRec)},
        {kCmdFlareSetup, sizeof(PluginFlareSetupRec)},
        {kCmdFlareGenerate, sizeof(PluginFlareGenerateRec)},
    };
    for (const SizeCase& c : cases) {
        for (std::int32_t size : {static_cast<std::int32_t>(c.minimum) - 1, -1, INT32_MIN}) {
            Bytes record(sizeof(PluginFlareSetupRec) + 16, 0x5A);
            const Bytes before = record;
            EXPECT_EQ(host.call(c.command, record.data(), size), kPluginIncompatible)
                << fourCC(c.command) << " size " << size;
            // Only the info record the host filled in may differ.
            EXPECT_TRUE(std::equal(record.begin() + sizeof(PluginInfoRec), record.end(),
                                   before.begin() + sizeof(PluginInfoRec)))
                << fourCC(c.command);
        }
    }
    EXPECT_TRUE(host.requests().empty());
    EXPECT_EQ(blockBytes(host.control()), control);
    EXPECT_EQ(blockBytes(host.plugin()), plugin);
}

TEST_F(CommandsTest, InformationFillsEveryField)
{
    PluginInformationRec record;
    std::memset(&record, 0x5A, sizeof record);
    ASSERT_EQ(host.info(record), kPluginNoError);

    auto text = [](const unsigned char* pascal) {
        return std::string(reinterpret_cast<const char*>(pascal + 1), pascal[0]);
    };
    EXPECT_EQ(record.thePluginType, KV_FOURCC('F', 'L', 'A', 'R'));
    EXPECT_EQ(record.thePluginVersion, 6);
    EXPECT_EQ(text(record.thePluginName), "Korvane\xAA Glintwave");
    EXPECT_EQ(text(record.thePluginDescription),
              "This light effects plugin can simulate lens flares.  It is table driven and can create many "
              "different effects.");
    EXPECT_FALSE(text(record.thePluginCopyright).empty());
    EXPECT_NE(text(record.thePluginAuthor).find('|'), std::string::npos);
    EXPECT_EQ(record.thePluginPermission, 0u);
    EXPECT_TRUE(host.requests().empty());
}

TEST_F(CommandsTest, DescribeGivesTheTextOfEachCode)
{
    const std::pair<std::int32_t, const char*> cases[] = {
        {0, "No plug-in error"},
        {1, "Plug-in could not allocate needed memory"},
        {2, "Unsupported plug-in command was received"},
        {3, "Incompatible plug-in parameter record was received"},
        {4, "The user canceled the plug-in operation"},
        {5, "A plug-in command was received out of sequence"},
        {6, "Plug-in could not get a required resource"},
        {7, ""},
        {8, "A requested plug-in feature or mode is not supported"},
        {9, ""},
        {-1, ""},
        {INT32_MIN, ""},
    };
    for (const auto& [code, expected] : cases) {
        const auto [result, description] = host.describe(code);
        EXPECT_EQ(result, kPluginNoError);
        EXPECT_EQ(description, expected) << "code " << code;
    }
}

TEST_F(CommandsTest, CommandsThatNeedTheHostProcedureRefuseWithoutIt)
{
    writeStandardStyle();
    host.options.offerHostProc = false;
    EXPECT_EQ(host.init(), kPluginIncompatible);
    EXPECT_EQ(host.setup(), kPluginIncompatible);
    EXPECT_EQ(host.finish(), kPluginIncompatible);
    EXPECT_EQ(host.control().size(), 0);
    EXPECT_EQ(host.plugin().size(), 0);

    // The commands that touch no data do not need it.
    PluginInformationRec record{};
    EXPECT_EQ(host.info(record), kPluginNoError);
    EXPECT_EQ(host.check(kCmdInitialize), kPluginNoError);

    host.options.offerHostProc = true;
    EXPECT_EQ(host.finish(), kPluginNoError);
}

} // namespace
} // namespace glintwave::testhost
