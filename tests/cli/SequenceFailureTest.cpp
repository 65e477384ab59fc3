// SequenceFailureTest.cpp - what a sequence render does when things go
// wrong around it: workers that die, signals to the command alone, and
// writes that fail (file size limit, full disk, read-only folder). Every case
// ends with every frame either written whole or named as failed, and no
// temporary file left.
#include "CommandRun.h"
#include "Skip.h"

#include <fcntl.h>
#include <spawn.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

using namespace command_test;
using command_test::glintwave;

std::filesystem::path makeShot(const TempFolder& scratch, const std::string& size, int frames)
{
    const std::filesystem::path shot = scratch / "shot.json";
    const CommandRun made = glintwave(scratch, "-q project new " + quoted(shot) + " --size " + size +
                                                   " --frames 1-" + std::to_string(frames) +
                                                   " --light 0.2,0.4 && '" GLINTWAVE_COMMAND "' -q project set " +
                                                   quoted(shot) + " --key light.x@1=0.2 --key light.x@" +
                                                   std::to_string(frames) + "=0.8");
    EXPECT_EQ(made.status, 0) << made.err;
    return shot;
}

std::vector<std::string> framesIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool anyTemporary(const std::vector<std::string>& names)
{
    return std::any_of(names.begin(), names.end(),
                       [](const std::string& name) { return name.find(".tmp-") != std::string::npos; });
}

// The command started in the background, through the shell.
class Background {
public:
    Background(const TempFolder& scratch, const std::string& arguments) : scratch_(scratch)
    {
        const std::string command = "exec env -u OCIO '" GLINTWAVE_COMMAND "' " + arguments + " >'" +
                                    (scratch / "out.txt").string() + "' 2>'" + (scratch / "err.txt").string() +
                                    "' </dev/null";
        const char* argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
        if (posix_spawn(&pid_, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(argv), environ) != 0)
            pid_ = -1;
    }
    ~Background()
    {
        if (pid_ > 0 && !waited_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    pid_t pid() const { return pid_; }
    // Its worker processes: its children.
    std::vector<pid_t> workers() const
    {
        std::vector<pid_t> children;
        std::ifstream list("/proc/" + std::to_string(pid_) + "/task/" + std::to_string(pid_) + "/children");
        for (pid_t child; list >> child;)
            children.push_back(child);
        return children;
    }
    int wait()
    {
        waited_ = true;
        status_ = 0;
        waitpid(pid_, &status_, 0);
        return status_;
    }
    std::string err() const { return slurp(scratch_ / "err.txt"); }

private:
    const TempFolder& scratch_;
    pid_t pid_ = -1;
    int status_ = 0;
    bool waited_ = false;
};

// Waits (at most a minute) until `ready` holds.
template <typename Ready>
bool waitFor(Ready ready)
{
    for (int i = 0; i < 6000; i++) {
        if (ready())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

bool alive(pid_t pid)
{
    return kill(pid, 0) == 0;
}

TEST(GlintwaveWorkers, AKilledWorkersFramesAreRenderedAgain)
{
    TempFolder scratch;
    const auto shot = makeShot(scratch, "320x180", 24);
    std::filesystem::create_directory(scratch / "one");
    std::filesystem::create_directory(scratch / "two");
    ASSERT_EQ(glintwave(scratch, "-q render --project " + quoted(shot) + " --threads 1 -o " +
                                     quoted(scratch / "one/f.####.exr"))
                  .status,
              0);
    Background run(scratch, "-q render --project " + quoted(shot) + " --threads 2 -o " +
                                quoted(scratch / "two/f.####.exr"));
    ASSERT_TRUE(waitFor([&] { return run.workers().size() == 2 && !framesIn(scratch / "two").empty(); }));
    kill(run.workers().front(), SIGKILL);
    const int status = run.wait();
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status << run.err();
    EXPECT_NE(run.err().find(": its worker process was killed by signal 9 (SIGKILL); rendering it again"),
              std::string::npos)
        << run.err();
    EXPECT_EQ(framesIn(scratch / "two"), framesIn(scratch / "one"));
    for (const std::string& name : framesIn(scratch / "one"))
        EXPECT_EQ(slurp(scratch / "two" / name), slurp(scratch / "one" / name)) << name;
}

TEST(GlintwaveWorkers, AFrameWhoseWorkersDieTwiceFailsAloneAndLeavesNoTemporaryFile)
{
    TempFolder scratch;
    const auto shot = makeShot(scratch, "160x90", 6);
    std::filesystem::create_directory(scratch / "out");
    const CommandRun run = glintwave(scratch, "-q render --project " + quoted(shot) + " --threads 2 -o " +
                                                  quoted(scratch / "out/f.####.exr"),
                                     "GLINTWAVE_TEST_WORKER_DIES=3");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("frame 3 failed: both worker processes that rendered it died; the second was killed "
                           "by signal 9 (SIGKILL)"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("1 of 6 frames failed: 3 "), std::string::npos) << run.err;
    EXPECT_EQ(framesIn(scratch / "out"),
              (std::vector<std::string>{"f.0001.exr", "f.0002.exr", "f.0004.exr", "f.0005.exr", "f.0006.exr"}));
}

// SIGINT and SIGTERM sent to the command alone, as a script or a scheduler
// sends them: the workers stop at their next progress report.
TEST(GlintwaveWorkers, ASignalStopsEveryWorkerAndNamesTheWrittenFrames)
{
    struct Case {
        int signal;
        int status;
    };
    for (const Case& test : {Case{SIGINT, 130}, Case{SIGTERM, 143}}) {
        TempFolder scratch;
        const auto shot = makeShot(scratch, "640x360", 400);
        std::filesystem::create_directory(scratch / "out");
        Background run(scratch, "-q render --project " + quoted(shot) + " --threads 2 -o " +
                                    quoted(scratch / "out/f.####.exr"));
        ASSERT_TRUE(waitFor([&] { return run.workers().size() == 2 && framesIn(scratch / "out").size() >= 2; }));
        const std::vector<pid_t> workers = run.workers();
        kill(run.pid(), test.signal);
        const int status = run.wait();
        ASSERT_TRUE(WIFEXITED(status)) << status;
        EXPECT_EQ(WEXITSTATUS(status), test.status);
        const std::vector<std::string> written = framesIn(scratch / "out");
        EXPECT_LT(written.size(), 400u);
        EXPECT_FALSE(anyTemporary(written));
        EXPECT_NE(run.err().find("cancelled; " + std::to_string(written.size()) + " of 400 frames were written ("),
                  std::string::npos)
            << run.err();
        for (const pid_t worker : workers)
            EXPECT_TRUE(waitFor([&] { return !alive(worker); })) << worker;
    }
}

TEST(GlintwaveWorkers, ASecondInterruptKillsAtOnce)
{
    TempFolder scratch;
    const auto shot = makeShot(scratch, "320x180", 200);
    std::filesystem::create_directory(scratch / "out");
    Background run(scratch, "-q render --project " + quoted(shot) + " --threads 2 -o " +
                                quoted(scratch / "out/f.####.exr"));
    ASSERT_TRUE(waitFor([&] { return run.workers().size() == 2 && !framesIn(scratch / "out").empty(); }));
    // Stopped workers cannot heed the first interrupt; only the second ends them.
    const std::vector<pid_t> workers = run.workers();
    for (const pid_t worker : workers)
        kill(worker, SIGSTOP);
    kill(run.pid(), SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_TRUE(alive(run.pid()));
    kill(run.pid(), SIGINT);
    const int status = run.wait();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    for (const pid_t worker : workers)
        EXPECT_TRUE(waitFor([&] { return !alive(worker); })) << worker;
    EXPECT_FALSE(anyTemporary(framesIn(scratch / "out")));
}

// Whether this machine lets a test mount a small file system of its own
// (user namespaces): what the full-disk and read-only cases need.
bool canMountScratch()
{
    return std::system("unshare -rm true >/dev/null 2>&1") == 0;
}

TEST(GlintwaveWrites, AFailedWriteFailsItsFrameAndLeavesNoFile)
{
    // Each case runs the command in a shell that sets the trouble up first
    // (a limit, or a small file system of its own mounted on the folder)
    // and lists the folder before the mount goes with the shell.
    struct Case {
        const char* name;
        const char* setUp;  // shell text; FOLDER is the output folder
        const char* reason;
        bool needsMount;
        bool someWritten;
    };
    const Case cases[] = {
        {"file size limit", "ulimit -f 16", "File too large", false, false},
        {"full disk", "mount -t tmpfs -o size=96k none FOLDER", "No space left on device", true, true},
        {"read-only folder", "mount -t tmpfs -o ro none FOLDER", "Read-only file system", true, false},
    };
    for (const Case& test : cases) {
        if (test.needsMount && !canMountScratch()) {
            GLINTWAVE_SKIP("cli write failures (full disk, read-only folder)",
                           "this machine lets no unprivileged user namespace mount a file system (unshare -rm)");
        }
        TempFolder scratch;
        const auto shot = makeShot(scratch, "160x90", 6);
        const std::filesystem::path folder = scratch / "out";
        std::filesystem::create_directory(folder);
        std::string setUp = test.setUp;
        if (const std::size_t at = setUp.find("FOLDER"); at != std::string::npos)
            setUp.replace(at, 6, folder.string());
        const std::string script = setUp + " && '" GLINTWAVE_COMMAND "' -q render --project " + shot.string() +
                                   " --threads 2 -o " + (folder / "f.####.exr").string() + " 2>" +
                                   (scratch / "err.txt").string() + "; s=\\$?; ls -a " + folder.string() + " >" +
                                   (scratch / "listing.txt").string() + "; exit \\$s";
        const std::string command = (test.needsMount ? "unshare -rm " : "") + std::string("sh -c \"") + script + "\"";
        const int raw = std::system(command.c_str());
        const std::string err = slurp(scratch / "err.txt");
        EXPECT_TRUE(WIFEXITED(raw) && WEXITSTATUS(raw) == 1) << test.name << ": " << raw << "\n" << err;
        EXPECT_NE(err.find(test.reason), std::string::npos) << test.name << "\n" << err;
        EXPECT_NE(err.find("frames failed"), std::string::npos) << test.name << "\n" << err;
        const std::string listed = slurp(scratch / "listing.txt");
        EXPECT_EQ(listed.find(".tmp-"), std::string::npos) << test.name << "\n" << listed;
        EXPECT_EQ(listed.find("f.00") != std::string::npos, test.someWritten) << test.name << "\n" << listed;
    }
}

} // namespace
