// SequenceRender.cpp - the frames of a project, in this process or in
// worker processes, each frame written through a temporary name.

#include "SequenceRender.h"

#include "Compose.h"
#include "FlarePasses.h"
#include "FlareRenderer.h"
#include "Interrupt.h"
#include "Output.h"
#include "ProgressLine.h"
#include "WorkerPool.h"

#include "korvane/FrameRange.h"
#include "korvane/ImageIO.h"
#include "korvane/ShotRenderer.h"

#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <tuple>

namespace glintwave::cli {
namespace {

// What every worker needs to render any frame of the shot.
struct Shot {
    korvane::Project project;
    korvane::FramePattern output{""};
    std::optional<korvane::FramePattern> over;
    int depth = 48;
    CompositeOptions composite;
    bool exposureKeyed = false;  // the project's keys give each frame its exposure
    OcclusionOptions occlusion;
    std::optional<korvane::FramePattern> occluder;
    // Each frame's own visibility, once measured: smoothing and the flash
    // limit read the frames around every frame.
    mutable std::map<std::int32_t, double> measured;
};

// The part of the frame's light its occluder leaves visible; 1 without one.
double visibilityAt(const Shot& shot, std::int32_t frame)
{
    if (!shot.occluder)
        return 1.0;
    const korvane::Project& project = shot.project;
    const auto measure = [&](std::int32_t at) {
        const auto known = shot.measured.find(at);
        if (known != shot.measured.end())
            return known->second;
        const double visible = lightVisibility(shot.occlusion, shot.occluder->name(at), project.light.at(at),
                                               FrameSize{project.width, project.height});
        shot.measured.emplace(at, visible);
        return visible;
    };
    return limitedVisibility(shot.occlusion, frame, project.firstFrame, project.lastFrame, project.frameRate,
                             measure);
}

// The command line's compositing options, and the project's output
// settings for those it did not give. A configuration file named by the
// project is found beside it.
CompositeOptions mergedComposite(const SequenceOptions& options, const korvane::Project& project, bool& exposureKeyed)
{
    CompositeOptions merged = options.composite;
    const korvane::OutputSettings& output = project.output;
    const SequenceOptions::Given& given = options.given;
    if (!given.blend && !output.blend.empty())
        merged.blend = blendNamed(output.blend).value_or(Blend::linear);
    merged.flareOnly = merged.flareOnly || (!given.flareOnly && output.flareOnly);
    if (!given.flareAlpha && !output.flareAlpha.empty())
        merged.flareAlpha = output.flareAlpha == "zero" ? FlareAlpha::zero : FlareAlpha::luminance;
    merged.passes = merged.passes || (!given.passes && output.passes);
    if (!given.ocio && !output.ocio.empty())
        merged.ocio = (options.project.parent_path() / output.ocio).string();
    const std::tuple<bool, const std::string&, std::string&> spaces[] = {
        {given.inputSpace, output.inputColorspace, merged.inputSpace},
        {given.workingSpace, output.workingColorspace, merged.workingSpace},
        {given.outputSpace, output.outputColorspace, merged.outputSpace}};
    for (const auto& [fromCommand, fromProject, target] : spaces)
        if (!fromCommand && !fromProject.empty())
            target = fromProject;
    exposureKeyed = !given.exposure && !output.exposure.empty();
    return merged;
}

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

void renderFrame(const Shot& shot, std::int32_t frame, FlareRenderer& renderer, korvane::ShotRenderer& frames,
                 const std::function<void()>& whole)
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
    // An occluder dims the flare in linear light, or in the host's blend
    // through the light's intensity.
    const double visible = visibilityAt(shot, frame);
    const bool linear = shot.composite.blend == Blend::linear && shot.depth != 8;
    const double lightIntensity = linear ? 1.0 : visible;
    const Painter paint = [&](korvane::FramePixels& pixels) {
        frames.render(frame, pixels.frameBuffer(), {{}, lightIntensity});
    };
    const PassPainter paintPass = [&](korvane::FramePixels& pixels, std::size_t pass) {
        frames.render(frame, pixels.frameBuffer(), {[pass](std::vector<std::uint8_t>& bytes) {
            if (bytes.size() < sizeof(ControlDataRec))
                return;
            ControlDataRec settings;
            std::memcpy(&settings, bytes.data(), sizeof settings);
            settings = passSettings(settings, kFlarePasses[pass]);
            std::memcpy(bytes.data(), &settings, sizeof settings);
        }, lightIntensity});
    };
    CompositeOptions composite = shot.composite;
    composite.visibility = linear ? visible : 1.0;
    if (shot.exposureKeyed)
        composite.exposure = project.output.exposureAt(frame);
    ComposedFrame composed = composeFrame(paint, shot.depth, background, size, file, composite, paintPass);
    OIIO::ImageBuf& image = composed.image;
    const ControlDataRec settings = settingsOf(renderer.instance());
    for (SideImage& side : composed.sideImages) {
        describeImage(side.image, styleText(renderer.styles(), settings.flareLens), settings, sceneAt(project, frame));
        side.image.specmod().attribute("glintwave:frame", frame);
        writeOutput(side.image, sideImageFile(file, side.suffix), composed.sampleType);
    }
    describeImage(image, styleText(renderer.styles(), settings.flareLens), settings, sceneAt(project, frame));
    image.specmod().attribute("glintwave:frame", frame);
    writeOutput(image, file, composed.sampleType, whole);
}

// The next frame to render; nothing when there are no more.
using FrameSource = std::function<std::optional<std::int32_t>()>;

// Renders frames with one plug-in instance. Returns false when a signal
// stopped it; throws when the plug-in or the project cannot be used at all.
bool renderFrames(const Shot& shot, const FrameSource& next, const CommonOptions& common, FrameReport& report,
                  const std::function<void(std::int32_t)>& whole = {})
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
    while (const std::optional<std::int32_t> frame = next()) {
        if (InterruptCatcher::interrupted())
            return false;
        try {
            renderFrame(shot, *frame, renderer, shotRenderer, [&] {
                if (whole)
                    whole(*frame);
            });
            report.written(*frame);
        } catch (const Cancelled&) {
            return false;
        } catch (const std::bad_alloc&) {
            report.failed(*frame, "out of memory");
        } catch (const std::exception& e) {
            if (InterruptCatcher::interrupted())
                return false;
            report.failed(*frame, e.what());
        }
    }
    return !InterruptCatcher::interrupted();
}

// The frames of the whole run, as the command's process sees them.
class Tally : public FrameReport {
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
    void retried(std::int32_t frame, const std::string& why) override
    {
        bar_.clear();
        std::cerr << "glintwave: frame " << frame << ": its worker process " << oneLine(why)
                  << "; rendering it again\n";
        progress(0);
    }
    void progress(float fraction) override
    {
        const float position = (static_cast<float>(done_.size()) + fraction) / static_cast<float>(total_);
        bar_.show("frame " + std::to_string(std::min(done_.size() + 1, total_)) + " of " + std::to_string(total_),
                  position);
    }
    void clear() { bar_.clear(); }

    std::size_t writtenCount() const { return done_.size() - failures_.size(); }
    korvane::FrameList writtenFrames() const
    {
        korvane::FrameList frames;
        for (const auto& [frame, written] : done_)
            if (written)
                frames.push_back(frame);
        return frames;
    }
    std::vector<std::int32_t>& failures() { return failures_; }

private:
    std::size_t total_;
    korvane::ProgressLine bar_;
    std::map<std::int32_t, bool> done_;
    std::vector<std::int32_t> failures_;
};

// A frame list as a range text, runs of even steps as "a-b" or "a-bxs".
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
            text += std::to_string(frames[i]) + "-" + std::to_string(frames[end - 1]) +
                    (step == 1 ? "" : "x" + std::to_string(step));
            i = end;
        } else {
            text += std::to_string(frames[i]);
            i++;
        }
    }
    return text;
}

// A worker's end of its socket: frames in, one number a line; reports out,
// "written F", "failed F WHY" or "fatal WHY". A report line goes out whole
// in one send.
class WorkerSocket : public FrameReport {
public:
    explicit WorkerSocket(int fd) : fd_(fd) {}
    void written(std::int32_t frame) override { send("written " + std::to_string(frame)); }
    void failed(std::int32_t frame, const std::string& why) override
    {
        send("failed " + std::to_string(frame) + " " + why);
    }
    void send(std::string line)
    {
        line = oneLine(std::move(line)).substr(0, 4000) + "\n";
        // The process that started us may be gone: no SIGPIPE, the next read ends.
        while (::send(fd_, line.data(), line.size(), MSG_NOSIGNAL) < 0 && errno == EINTR) {
        }
    }
    // The next frame; nothing at the socket's end, on a signal or on a line
    // that is not a frame number.
    std::optional<std::int32_t> next()
    {
        for (std::size_t end; (end = pending_.find('\n')) == std::string::npos;) {
            char buffer[64];
            const ssize_t got = read(fd_, buffer, sizeof buffer);
            if (got < 0 && errno == EINTR && !InterruptCatcher::interrupted())
                continue;
            if (got <= 0 || pending_.size() > 64)
                return std::nullopt;
            pending_.append(buffer, static_cast<std::size_t>(got));
        }
        const std::size_t end = pending_.find('\n');
        const std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        char* stop = nullptr;
        errno = 0;
        const long frame = std::strtol(line.c_str(), &stop, 10);
        if (line.empty() || *stop != '\0' || errno != 0 || frame < INT32_MIN || frame > INT32_MAX)
            return std::nullopt;
        return static_cast<std::int32_t>(frame);
    }

private:
    int fd_;
    std::string pending_;
};

// Test hook: GLINTWAVE_TEST_WORKER_DIES=F makes every worker that writes
// frame F kill itself once the frame's temporary file is whole, as the
// kernel's out-of-memory killer might.
std::optional<std::int32_t> frameToDieAt()
{
    const char* hook = std::getenv("GLINTWAVE_TEST_WORKER_DIES");
    if (!hook || !*hook)
        return std::nullopt;
    return static_cast<std::int32_t>(std::strtol(hook, nullptr, 10));
}

// A worker: renders the frames its socket hands it and reports each. Exit
// status 0 at the socket's end, 128 + N when signal N stopped it, 1 when it
// could not render at all.
int runWorker(const Shot& shot, const CommonOptions& common, int fd)
{
    // Should the process that started us die, stop as if it had said so.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    WorkerSocket socket(fd);
    const std::optional<std::int32_t> dieAt = frameToDieAt();
    try {
        const bool finished = renderFrames(shot, [&socket] { return socket.next(); }, common, socket,
                                           [dieAt](std::int32_t frame) {
                                               if (dieAt && *dieAt == frame)
                                                   std::raise(SIGKILL);
                                           });
        return finished ? 0 : InterruptCatcher::exitStatus();
    } catch (const std::exception& e) {
        socket.send(std::string("fatal ") + e.what());
        return 1;
    }
}

// The command line of a worker of this run; the pool adds its socket.
std::vector<std::string> workerCommand(const SequenceOptions& options, const CompositeOptions& composite,
                                       const OcclusionOptions& occluding, const CommonOptions& common)
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        throw korvane::Error("cannot start worker processes: this program's file is unknown (" + error.message() +
                             "); render with --threads 1");
    std::vector<std::string> command = {self.string(), "-q", "render", "--project", options.project.string(),
                                        "-o", options.output, "--depth", std::to_string(options.depth),
                                        "--blend", blendName(composite.blend)};
    if (composite.flareOnly)
        command.push_back("--flare-only");
    if (composite.flareAlpha)
        command.insert(command.end(), {"--flare-alpha", *composite.flareAlpha == FlareAlpha::zero ? "zero"
                                                                                                       : "luminance"});
    if (composite.passes)
        command.push_back("--passes");
    const std::pair<const std::string&, const char*> colour[] = {{composite.ocio, "--ocio"},
                                                                 {composite.inputSpace, "--input-colorspace"},
                                                                 {composite.workingSpace, "--working-colorspace"},
                                                                 {composite.outputSpace, "--output-colorspace"}};
    for (const auto& [value, option] : colour)
        if (!value.empty())
            command.insert(command.end(), {option, value});
    // The project's keyed exposure is read by each worker from the project.
    if (options.given.exposure) {
        char stops[32];
        std::snprintf(stops, sizeof stops, "%.17g", composite.exposure);
        command.insert(command.end(), {"--exposure", stops});
    }
    const std::vector<std::string> occlusion = occluding.asArguments();
    command.insert(command.end(), occlusion.begin(), occlusion.end());
    if (!options.frames.empty())
        command.insert(command.end(), {"--frames", options.frames});
    if (!options.over.empty())
        command.insert(command.end(), {"--over", options.over});
    if (!common.plugin.empty())
        command.insert(command.end(), {"--plugin", common.plugin.string()});
    return command;
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
    shot.composite = mergedComposite(options, shot.project, shot.exposureKeyed);
    if (shot.composite.blend == Blend::linear && shot.depth != 8)
        shot.composite.spaces = colourSpacesFor(shot.composite.ocio);
    checkCompositeOptions(shot.composite, shot.depth, options.output);
    if (shot.exposureKeyed && (shot.composite.blend == Blend::host || shot.depth == 8))
        throw UsageError(options.project.string() + ": its output.exposure works in linear light; it does not go "
                                                    "with --blend host or the sketch");
    if (shot.composite.flareOnly && !options.over.empty())
        throw UsageError("--over does not go with the flare alone (--flare-only, or the project's "
                         "output.flareOnly)");
    shot.occlusion = options.occlusion.any() ? options.occlusion
                                             : occlusionFromProject(shot.project.occlusion, options.project);
    korvane::FrameList frames;
    try {
        shot.output = korvane::FramePattern(options.output);
        if (shot.occlusion.any())
            shot.occluder = korvane::FramePattern(shot.occlusion.source());
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
    requireFrameMemory(shot.project.width, shot.project.height, shot.composite.passes);

    if (options.workerSocket >= 0)
        return runWorker(shot, common, options.workerSocket);
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
    if (processes == 1) {
        std::size_t position = 0;
        finished = renderFrames(
            shot,
            [&]() -> std::optional<std::int32_t> {
                if (position == frames.size())
                    return std::nullopt;
                return frames[position++];
            },
            common, tally);
    } else if (processes > 1) {
        WorkerPoolSetup pool;
        pool.command = workerCommand(options, shot.composite, shot.occlusion, common);
        pool.processes = processes;
        pool.removeLeftovers = [&shot](std::int32_t frame, pid_t worker) {
            std::error_code ignored;
            const std::string file = shot.output.name(frame);
            std::filesystem::remove(korvane::temporaryImageName(file, worker), ignored);
            for (const FlarePass& pass : kFlarePasses)
                std::filesystem::remove(
                    korvane::temporaryImageName(sideImageFile(file, std::string(pass.name)), worker), ignored);
            std::filesystem::remove(korvane::temporaryImageName(sideImageFile(file, "flare"), worker), ignored);
        };
        finished = renderInWorkerPool(pool, frames, tally);
    }
    tally.clear();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!finished) {
        std::cout.flush();
        const korvane::FrameList written = tally.writtenFrames();
        std::cerr << "glintwave: cancelled; " << written.size() << " of " << frames.size() << " frames were written"
                  << (written.empty() ? "" : " (" + frameText(written) + ")")
                  << "; the frames in progress were not and left no files\n";
        return InterruptCatcher::exitStatus();
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
