// The host's toolbox functions for folders, file references and resource
// files, called as a plug-in calls them.

#include "korvane/ResourceFile.h"
#include "korvane/ResourceToolbox.h"

#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
namespace toolbox = korvane::toolbox;

constexpr std::uint32_t kTYPE = 0x54595045;  // 'TYPE'
constexpr std::uint32_t kRsrc = 0x72737263;  // 'rsrc'

class ResourceToolbox : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder_ = fs::temp_directory_path() / ("korvane-toolbox-" + std::to_string(::getpid()));
        fs::create_directories(folder_);
        korvane::ResourceFileWriter writer;
        writer.add(kTYPE, 128, "", {1, 2, 3, 4, 5});
        writer.add(kTYPE, -1, "", {});
        write("Glintwave.rsc", writer.bytes());
        write("Broken.rsc", {0, 0, 1, 0});
        toolbox::setHomeDirectory(folder_);
        toolbox::setErrorSink(nullptr);
        toolbox::clearLastError();
    }

    void TearDown() override
    {
        toolbox::setHomeDirectory({});
        toolbox::setErrorSink(nullptr);
        fs::remove_all(folder_);
    }

    void write(const std::string& name, const std::vector<std::uint8_t>& bytes)
    {
        std::ofstream out(folder_ / name, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    // Opens a file of the home folder the way the plug-in does.
    KV_ResourceFile* open(const char* name)
    {
        KV_DirectoryRef* home = KV_GetHomeDirectory();
        KV_FileRef* ref = KV_MakeFileRef(home, name, kRsrc, "rsc");
        KV_ResourceFile* file = KV_OpenResourceFile(ref);
        KV_DestroyFileRef(ref);
        KV_DestroyDirectoryRef(home);
        return file;
    }

    fs::path folder_;
};

TEST_F(ResourceToolbox, OpensTheFileByItsNameAsGiven)
{
    KV_DirectoryRef* home = KV_GetHomeDirectory();
    ASSERT_NE(home, nullptr);
    EXPECT_EQ(toolbox::pathOf(home), folder_);
    KV_FileRef* ref = KV_MakeFileRef(home, "Glintwave.rsc", kRsrc, "rsc");
    EXPECT_EQ(toolbox::pathOf(ref), folder_ / "Glintwave.rsc");
    KV_ResourceFile* file = KV_OpenResourceFile(ref);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(toolbox::resourceFileOf(file)->ids(kTYPE), (std::vector<std::int16_t>{-1, 128}));
    KV_CloseResourceFile(file);
    KV_DestroyFileRef(ref);
    KV_DestroyDirectoryRef(home);
}

TEST_F(ResourceToolbox, EveryGetIsAFreshCopy)
{
    KV_ResourceFile* file = open("Glintwave.rsc");
    ASSERT_NE(file, nullptr);
    int32_t size = -1;
    auto* first = static_cast<std::uint8_t*>(KV_GetResource(file, kTYPE, 128, &size));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(size, 5);
    first[0] = 0xEE;  // converted in place by its caller
    int32_t secondSize = -1;
    auto* second = static_cast<std::uint8_t*>(KV_GetResource(file, kTYPE, 128, &secondSize));
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(secondSize, 5);
    EXPECT_EQ(std::memcmp(second, "\1\2\3\4\5", 5), 0);
    KV_ReleaseResource(first);
    KV_ReleaseResource(second);
    KV_CloseResourceFile(file);
}

TEST_F(ResourceToolbox, AbsentResourcesAreNullWithSizeZero)
{
    KV_ResourceFile* file = open("Glintwave.rsc");
    ASSERT_NE(file, nullptr);
    const struct {
        std::uint32_t type;
        int id;
    } absent[] = {{kTYPE, 129}, {kRsrc, 128}, {kTYPE, 128 + 65536}, {kTYPE, -1 - 65536}, {kTYPE, 40000}};
    for (const auto& a : absent) {
        int32_t size = 77;
        EXPECT_EQ(KV_GetResource(file, a.type, a.id, &size), nullptr) << a.id;
        EXPECT_EQ(size, 0);
    }
    // An empty resource is present: a pointer, and size 0.
    int32_t size = 77;
    void* empty = KV_GetResource(file, kTYPE, -1, &size);
    EXPECT_NE(empty, nullptr);
    EXPECT_EQ(size, 0);
    KV_ReleaseResource(empty);
    KV_CloseResourceFile(file);
}

TEST_F(ResourceToolbox, MissingOrBrokenFilesAreNullAndExplained)
{
    std::vector<std::string> reported;
    toolbox::setErrorSink([&](const std::string& message) { reported.push_back(message); });
    const struct {
        const char* name;
        const char* message;
    } cases[] = {{"Missing.rsc", "Missing.rsc: cannot open: no such file"},
                 {"Broken.rsc", "Broken.rsc: truncated header"}};
    for (const auto& c : cases) {
        EXPECT_EQ(open(c.name), nullptr) << c.name;
        EXPECT_NE(toolbox::lastError().find(c.message), std::string::npos) << toolbox::lastError();
    }
    ASSERT_EQ(reported.size(), 2u);
    EXPECT_EQ(reported[1], toolbox::lastError());
}

TEST_F(ResourceToolbox, NullArgumentsAreTolerated)
{
    KV_DirectoryRef* dir = KV_MakeDirectoryRef(folder_.c_str());
    ASSERT_NE(dir, nullptr);
    EXPECT_EQ(KV_MakeDirectoryRef(nullptr), nullptr);
    EXPECT_EQ(KV_MakeDirectoryRef(""), nullptr);
    EXPECT_EQ(KV_MakeFileRef(nullptr, "Glintwave.rsc", kRsrc, "rsc"), nullptr);
    EXPECT_EQ(KV_MakeFileRef(dir, nullptr, kRsrc, "rsc"), nullptr);
    EXPECT_EQ(KV_MakeFileRef(dir, "", kRsrc, "rsc"), nullptr);
    EXPECT_EQ(KV_MakeFileRef(dir, "../Glintwave.rsc", kRsrc, "rsc"), nullptr);
    KV_FileRef* ref = KV_MakeFileRef(dir, "Glintwave.rsc", kRsrc, nullptr);
    EXPECT_NE(ref, nullptr);
    EXPECT_EQ(KV_OpenResourceFile(nullptr), nullptr);
    int32_t size = 5;
    EXPECT_EQ(KV_GetResource(nullptr, kTYPE, 128, &size), nullptr);
    EXPECT_EQ(size, 0);
    KV_ResourceFile* file = KV_OpenResourceFile(ref);
    ASSERT_NE(file, nullptr);
    void* data = KV_GetResource(file, kTYPE, 128, nullptr);
    EXPECT_NE(data, nullptr);
    KV_ReleaseResource(data);
    KV_ReleaseResource(nullptr);
    KV_CloseResourceFile(file);
    KV_CloseResourceFile(nullptr);
    KV_DestroyFileRef(ref);
    KV_DestroyFileRef(nullptr);
    KV_DestroyDirectoryRef(dir);
    KV_DestroyDirectoryRef(nullptr);
    EXPECT_EQ(toolbox::resourceFileOf(nullptr), nullptr);
    EXPECT_TRUE(toolbox::pathOf(static_cast<const KV_FileRef*>(nullptr)).empty());
}

// A plug-in finds the functions by name in the host process.
TEST(ResourceToolboxExports, PluginsFindEveryFunctionByName)
{
    for (const char* name : {"KV_GetHomeDirectory", "KV_MakeDirectoryRef", "KV_DestroyDirectoryRef", "KV_MakeFileRef",
                             "KV_DestroyFileRef", "KV_OpenResourceFile", "KV_CloseResourceFile", "KV_GetResource",
                             "KV_ReleaseResource"})
        EXPECT_NE(dlsym(RTLD_DEFAULT, name), nullptr) << name;
}

TEST_F(ResourceToolbox, NoHomeFolderMeansNoHomeDirectory)
{
    toolbox::setHomeDirectory({});
    EXPECT_EQ(KV_GetHomeDirectory(), nullptr);
    EXPECT_EQ(open("Glintwave.rsc"), nullptr);
}

} // namespace
