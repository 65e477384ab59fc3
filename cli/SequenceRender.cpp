// SequenceRender.cpp - the frames of a project, in this process or in
// worker processes, each frame written through a temporary name.

#include "SequenceRender.h"

#include "Compose.h"
#include "FlareRenderer.h"
#include "Interrupt.h"
#include "Output.h"
#include "ProgressLine.h"

#include "korvane/FrameRange.h"
#include "korvane/ImageIO.h"
#include "korvane/ShotRenderer.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <optional>

namespace glintwave::cli {
namespace {

// What every worker needs to render any frame of the shot.
struct Shot {
    korvane::Project project;
    korvane::FramePattern output{""};
    std::optional<korvane::FramePattern> over;
    int depth = 48;
};

// Where a worker reports its frames: the progress bar of this process, or
// the pipe to the process that started it.
class Reporter {
public:
    virtual ~Reporter() = default;
    virtual void written(std::int32_t frame) = 0;
    virtual void failed(std::int32_t frame, const std::string& why) = 0;
    virtual void progress(float) {}
};

std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

ControlDataRec settingsOf(const korvane::PluginInstance& instance)
{
    ControlDataRec settings = defaultSettings();
    const auto block = instance.controlData();
    std::memcpy(&settings, block.data(), std::min(block.size(), sizeof settings));
    return settings;
}

std::string styleText(const std::vector<Style>& styles, std::int32_t number)
{
    for (const Style& style : styles)
        if (style.number == number)
            return std::to_string(number) + " " + style.name;
    return std::to_string(number);
}

// The light of a frame as the options that give it, for the image's metadata.
SceneOptions sceneAt(const korvane::Project& project, std::int32_t frame)
{
    SceneOptions scene;
    scene.light = project.light.at(frame);
    return scene;
}

void renderFrame(const Shot& shot, std::int32_t frame, FlareRenderer& renderer, korvane::ShotRenderer& frames)
{
    const korvane::Project& project = shot.project;
    const FrameSize size{project.width, project.height};
    std::optional<korvane::RgbImage> background;
    if (shot.over) {
        korvane::ImageLimits limits;
        limits.maxSide = kMaxFrameSide;
        limits.maxBytes = physicalMemory();
        background = korvane::readRgbImage(shot.over->name(frame), limits);
        const OIIO::ImageSpec& spec = background->pixels.spec();
        if (spec.width != size.width || spec.height != size.height)
            throw korvane::Error(shot.over->name(frame) + ": is " + std::to_string(spec.width) + "x" +
                                 std::to_string(spec.height) + ", the project's frames are " +
                                 std::to_string(size.width) + "x" + std::to_string(size.height));
    }
    const std::string file = shot.output.name(frame);
    const Painter paint = [&](korvane::FramePixels& pixels) { frames.render(frame, pixels.frameBuffer()); };
    OIIO::ImageBuf image = composeFrame(paint, shot.depth, background, size, korvane::isFloatFormat(file));
    const ControlDataRec settings = settingsOf(renderer.instance());
    describeImage(image, styleText(renderer.styles(), settings.flareLens), settings, sceneAt(project, frame));
    image.specmod().attribute("glintwave:frame", frame);
    writeOutput(image, file, sampleTypeFor(file, shot.depth, background));
}

// Renders the frames with one plug-in instance. Returns false when Ctrl-C
// stopped it; throws when the plug-in or the project cannot be used at all.
bool renderFrames(const Shot& shot, const korvane::FrameList& frames, const CommonOptions& common,
                  Reporter& report)
{
    FlareRenderer renderer(common.pluginFile(), false);
    korvane::ShotRenderer shotRenderer(renderer.instance(), shot.project);
    renderer.instance().setProgressCallback([&report](const korvane::Progress& progress) {
        InterruptCatcher::testHook();
        if (InterruptCatcher::interrupted())
            return kPluginUserCanceled;
        report.progress(progress.position);
        return kPluginNoError;
    });
    for (const std::int32_t frame : frames) {
        if (InterruptCatcher::interrupted())
            return false;
        try {
            renderFrame(shot, frame, renderer, shotRenderer);
            report.written(frame);
        } catch (const Cancelled&) {
            return false;
        } catch (const std::bad_alloc&) {
            report.failed(frame, "out of memory");
        } catch (const std::exception& e) {
            if (InterruptCatcher::interrupted())
                return false;
            report.failed(frame, e.what());
        }
    }
    return true;
}

// The frames of the whole run, as the command's process sees them.
class Tally : public Reporter {
public:
    Tally(std::size_t total, bool showProgress) : total_(total), bar_(showProgress) {}

    void written(std::int32_t frame) override
    {
        done_[frame] = true;
        progress(0);
    }
    void failed(std::int32_t frame, const std::string& why) override
    {
        done_[frame] = false;
        bar_.clear();
        std::cerr << "glintwave: frame " << frame << " failed: " << oneLine(why) << "\n";
        failures_.push_back(frame);
        progress(0);
    }
    void progress(float fraction) override
    {
        const float position = (static_cast<float>(done_.size()) + fraction) / static_cast<float>(total_);
        bar_.show("frame " + std::to_string(std::min(done_.size() + 1, total_)) + " of " + std::to_string(total_),
                  position);
    }
    void clear() { bar_.clear(); }

    bool reported(std::int32_t frame) const { return done_.count(frame) != 0; }
    std::size_t writtenCount() const { return done_.size() - failures_.size(); }
    std::vector<std::int32_t>& failures() { return failures_; }

private:
    std::size_t total_;
    korvane::ProgressLine bar_;
    std::map<std::int32_t, bool> done_;
    std::vector<std::int32_t> failures_;
};

// A worker's reports as lines on the shared pipe: "written F", "failed F
// WHY", "fatal WHY". A line of at most PIPE_BUF bytes is written at once, so
// workers' lines never mix.
class PipeReporter : public Reporter {
public:
    explicit PipeReporter(int fd) : fd_(fd) {}
    void written(std::int32_t frame) override { send("written " + std::to_string(frame)); }
    void failed(std::int32_t frame, const std::string& why) override
    {
        send("failed " + std::to_string(frame) + " " + why);
    }
    void send(std::string line)
    {
        line = oneLine(std::move(line)).substr(0, PIPE_BUF - 1) + "\n";
        while (write(fd_, line.data(), line.size()) < 0 && errno == EINTR) {
        }
    }

private:
    int fd_;
};

// The lines of the pipe, until every worker has closed it.
class PipeReader {
public:
    explicit PipeReader(int fd) : fd_(fd) {}
    bool next(std::string& line)
    {
        for (std::size_t end; (end = pending_.find('\n')) == std::string::npos;) {
            char buffer[4096];
            const ssize_t got = read(fd_, buffer, sizeof buffer);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                return false;
            pending_.append(buffer, static_cast<std::size_t>(got));
        }
        const std::size_t end = pending_.find('\n');
        line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        return true;
    }

private:
    int fd_;
    std::string pending_;
};

// A frame list as a range text, runs of even steps as "a-bxs", so a
// worker's share of a long shot stays a short argument.
std::string frameText(const korvane::FrameList& frames)
{
    std::string text;
    for (std::size_t i = 0; i < frames.size();) {
        std::size_t end = i + 1;
        const std::int64_t step = end < frames.size() ? std::int64_t{frames[end]} - frames[i] : 1;
        while (end < frames.size() && std::int64_t{frames[end]} - frames[end - 1] == step)
            end++;
        text += text.empty() ? "" : ",";
        if (end - i >= 3) {
            text += std::to_string(frames[i]) + "-" + std::to_string(frames[end - 1]) + "x" + std::to_string(step);
            i = end;
        } else {
            text += std::to_string(frames[i]);
            i++;
        }
    }
    return text;
}

// Runs `processes` workers, worker k taking frames k, k + processes, ...
// Each worker is this program again (`render --worker-report FD`), started
// afresh rather than forked: the image libraries keep thread pools that a
// forked child would wait on forever. Returns false when Ctrl-C stopped them.
bool renderInWorkers(const SequenceOptions& options, const korvane::FrameList& frames, int processes,
                     const CommonOptions& common, Tally& tally)
{
    int ends[2];
    if (pipe(ends) != 0 || fcntl(ends[0], F_SETFD, FD_CLOEXEC) != 0)
        throw korvane::Error(std::string("cannot start worker processes: ") + std::strerror(errno));
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    std::cout.flush();
    std::cerr.flush();
    std::vector<pid_t> workers;
    std::string ending;
    for (int k = 0; k < processes && !error; k++) {
        korvane::FrameList mine;
        for (std::size_t i = static_cast<std::size_t>(k); i < frames.size(); i += static_cast<std::size_t>(processes))
            mine.push_back(frames[i]);
        std::vector<std::string> arguments = {self.string(), "-q", "render", "--project", options.project.string(),
                                              "--frames", frameText(mine), "-o", options.output, "--depth",
                                              std::to_string(options.depth), "--worker-report",
                                              std::to_string(ends[1])};
        if (!options.over.empty())
            arguments.insert(arguments.end(), {"--over", options.over});
        if (!common.plugin.empty())
            arguments.insert(arguments.end(), {"--plugin", common.plugin.string()});
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        pid_t pid = 0;
        const int failure = posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ);
        if (failure != 0) {
            ending = std::string("its worker process could not start: ") + std::strerror(failure);
            break;
        }
        workers.push_back(pid);
    }
    if (error)
        ending = "its worker process could not start: " + error.message();
    close(ends[1]);

    PipeReader reader(ends[0]);
    std::string fatal;
    for (std::string line; reader.next(line);) {
        const std::size_t space = line.find(' ');
        const std::string word = line.substr(0, space);
        const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
        const std::size_t gap = rest.find(' ');
        const auto frame = static_cast<std::int32_t>(std::strtol(rest.c_str(), nullptr, 10));
        if (word == "fatal" && fatal.empty())
            fatal = rest;
        else if (word == "written")
            tally.written(frame);
        else if (word == "failed")
            tally.failed(frame, gap == std::string::npos ? "" : rest.substr(gap + 1));
    }
    close(ends[0]);

    bool cancelled = false;
    for (const pid_t pid : workers) {
        int status = 0;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        if (WIFEXITED(status) && WEXITSTATUS(status) == 130)
            cancelled = true;
        else if (WIFSIGNALED(status))
            ending = "its worker process ended with signal " + std::to_string(WTERMSIG(status));
    }
    if (!fatal.empty())
        throw korvane::Error(fatal);
    if (cancelled || InterruptCatcher::interrupted())
        return false;
    for (const std::int32_t frame : frames)
        if (!tally.reported(frame))
            tally.failed(frame, ending.empty() ? "its worker process stopped early" : ending);
    return true;
}

// A worker: renders its frames and reports them on the pipe; the exit
// status says whether Ctrl-C stopped it (130) or it could not start (1).
int runWorker(const Shot& shot, const korvane::FrameList& frames, const CommonOptions& common, int fd)
{
    PipeReporter report(fd);
    try {
        return renderFrames(shot, frames, common, report) ? 0 : 130;
    } catch (const std::exception& e) {
        report.send(std::string("fatal ") + e.what());
        return 1;
    }
}

std::string frameList(const std::vector<std::int32_t>& frames)
{
    std::string text;
    for (const std::int32_t frame : frames)
        text += (text.empty() ? "" : ", ") + std::to_string(frame);
    return text;
}

} // namespace

int usableCpus()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) != 0)
        return 1;
    return std::max(1, CPU_COUNT(&set));
}

int renderSequence(const SequenceOptions& options, const CommonOptions& common)
{
    Shot shot;
    shot.project = korvane::loadProject(options.project);
    shot.depth = options.depth;
    korvane::FrameList frames;
    try {
        shot.output = korvane::FramePattern(options.output);
        if (!options.over.empty())
            shot.over = korvane::FramePattern(options.over);
        frames = options.frames.empty()
                     ? korvane::parseFrameRange(std::to_string(shot.project.firstFrame) + "-" +
                                                std::to_string(shot.project.lastFrame))
                     : korvane::parseFrameRange(options.frames);
    } catch (const korvane::Error& e) {
        throw UsageError(e.what());
    }
    if (frames.size() > 1 && !shot.output.numbered())
        throw UsageError("-o " + options.output + " names one file for " + std::to_string(frames.size()) +
                         " frames; put the frame number in it, as in out.####.exr");
    checkOutputPath(shot.output.name(frames.front()));
    requireFrameMemory(shot.project.width, shot.project.height);

    if (options.reportFd >= 0)
        return runWorker(shot, frames, common, options.reportFd);
    const std::size_t named = frames.size();
    if (options.skipExisting) {
        std::error_code ignored;
        std::erase_if(frames, [&](std::int32_t frame) { return std::filesystem::exists(shot.output.name(frame), ignored); });
    }
    const int processes =
        static_cast<int>(std::min<std::size_t>(options.threads > 0 ? options.threads : usableCpus(), frames.size()));

    const auto start = std::chrono::steady_clock::now();
    Tally tally(frames.size(), !common.quiet);
    bool finished = true;
    if (processes == 1)
        finished = renderFrames(shot, frames, common, tally);
    else if (processes > 1)
        finished = renderInWorkers(options, frames, processes, common, tally);
    tally.clear();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!finished) {
        std::cout.flush();
        std::cerr << "glintwave: cancelled; " << tally.writtenCount()
                  << " frames were written whole, the frames in progress were not\n";
        return 130;
    }
    std::vector<std::int32_t>& failures = tally.failures();
    std::sort(failures.begin(), failures.end());
    if (!failures.empty())
        throw korvane::Error(std::to_string(failures.size()) + " of " + std::to_string(frames.size()) +
                             " frames failed: " + frameList(failures) + " (the others were written; the " +
                             "reasons are above)");
    if (!common.quiet) {
        char timing[64];
        std::snprintf(timing, sizeof timing, "%.2f s, %.2f frames/s", seconds,
                      seconds > 0 ? static_cast<double>(frames.size()) / seconds : 0.0);
        std::cout << options.output << ": " << frames.size() << " frames, " << shot.project.width << "x"
                  << shot.project.height << ", " << options.depth << "-bit, " << processes
                  << (processes == 1 ? " process, " : " processes, ") << timing;
        if (named != frames.size())
            std::cout << ", " << named - frames.size() << " skipped (their files exist)";
        std::cout << "\n";
    }
    return 0;
}

} // namespace glintwave::cli
