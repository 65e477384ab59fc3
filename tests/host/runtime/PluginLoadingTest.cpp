// PluginLoadingTest.cpp - loading plug-in files, and the typed calls against
// the minimal plug-in of our own.
#include "TempFolder.h"
#include "korvane/PluginHost.h"
#include "korvane/ResourceToolbox.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace {

using korvane::PluginError;
using korvane::PluginInstance;
using korvane::PluginLibrary;

struct LoadFailure {
    const char* label;
    std::filesystem::path file;
    const char* because;  // part of the message after the file's path
};

class LoadFailures : public testing::TestWithParam<LoadFailure> {};

TEST_P(LoadFailures, NameTheFileAndTheReason)
{
    const LoadFailure& failure = GetParam();
    try {
        PluginLibrary library(failure.file);
        FAIL() << "loaded " << failure.file;
    } catch (const PluginError& e) {
        const std::string message = e.what();
        EXPECT_NE(message.find(failure.file.filename().string()), std::string::npos) << message;
        EXPECT_NE(message.find(failure.because), std::string::npos) << message;
        EXPECT_EQ(e.code(), 0);
    }
}

const std::filesystem::path kNotALibrary = std::filesystem::path(GLINTWAVE_RSC_FILE);

INSTANTIATE_TEST_SUITE_P(Host, LoadFailures,
                         testing::Values(LoadFailure{"missing", "/nonexistent/folder/Missing.so", "no such file"},
                                         LoadFailure{"noMain", NO_ENTRY_PLUGIN_PATH, "has no entry point Main"},
                                         LoadFailure{"notALibrary", kNotALibrary, "cannot load plug-in"}),
                         [](const auto& info) { return std::string(info.param.label); });

TEST(PluginLibrary, HomeIsTheFolderOfTheFileAndIsSetForEveryCall)
{
    PluginLibrary library(MINIMAL_PLUGIN_PATH);
    EXPECT_EQ(library.homeDirectory(), std::filesystem::path(MINIMAL_PLUGIN_PATH).parent_path());
    EXPECT_EQ(library.displayName(), std::filesystem::path(MINIMAL_PLUGIN_PATH).filename().string());

    korvane::toolbox::setHomeDirectory("/somewhere/else");
    PluginInstance instance(library);
    EXPECT_EQ(instance.check(kCmdCheck), kPluginNoError);
    EXPECT_EQ(korvane::toolbox::homeDirectory(), library.homeDirectory());
}

TEST(MinimalPlugin, InfoIsDecodedToUtf8)
{
    PluginLibrary library(MINIMAL_PLUGIN_PATH);
    PluginInstance instance(library);
    const korvane::PluginInfo info = instance.info();
    EXPECT_EQ(info.type, KV_FOURCC('M', 'I', 'N', 'I'));
    EXPECT_EQ(info.version, 3);
    EXPECT_EQ(info.name, "Minimal \u2022 Plug-in");
    EXPECT_EQ(info.copyright, "No rights reserved");
    EXPECT_EQ(info.author, "Host tests|minimal plug-in");
    EXPECT_EQ(info.description, "Answers a host's first questions.");
    EXPECT_EQ(info.permission, 7u);
}

TEST(MinimalPlugin, FailureMessagesNameFileCommandAndCode)
{
    PluginLibrary library(MINIMAL_PLUGIN_PATH);
    PluginInstance instance(library);
    PluginInitializeRec record{};
    const std::int32_t result = instance.call(KV_FOURCC('X', 'X', 'X', 'X'), &record, sizeof record);
    ASSERT_EQ(result, kPluginUnsupported);

    // The minimal plug-in does not answer 'DESC': the host says so itself.
    const std::string message = instance.failureMessage(KV_FOURCC('X', 'X', 'X', 'X'), result);
    EXPECT_EQ(message, library.displayName() +
                           ": 'XXXX' failed: result code 2, which the plug-in does not describe (code 2)");
    try {
        instance.require(kCmdFlareSetup, 5);
        FAIL();
    } catch (const PluginError& e) {
        EXPECT_EQ(e.code(), 5);
        EXPECT_NE(std::string(e.what()).find("'SETF' failed"), std::string::npos);
    }
    EXPECT_NO_THROW(instance.require(kCmdFlareSetup, 0));
}

TEST(CommandName, PrintableCodesInQuotesOthersInHex)
{
    EXPECT_EQ(korvane::commandName(kCmdFlareGenerate), "'GENF'");
    EXPECT_EQ(korvane::commandName(0x47454E00u), "0x47454E00");
    EXPECT_EQ(korvane::commandName(0xFF454E46u), "0xFF454E46");
}

} // namespace
