// SequenceRender.h - `glintwave render --project P`: the frames of a shot,
// each to its own numbered file.
//
// Every frame is independent: the plug-in registers the project's channels
// once per process, then each frame loads its channel values ('LCHN'), sets
// the frame and the light from the light track ('SETF') and paints
// ('GENF'). Files record only what makes the frame (no times, hosts or
// paths), so a frame rendered alone, in any order, in any process or on any
// machine of the same build is byte for byte the frame of a whole run.
//
// Parallel frames run in worker processes (this program again, see
// WorkerPool.h), each with its own plug-in and so its own module state,
// taking one frame at a time. A frame that fails (a missing background
// frame, a refused write, the plug-in's error, a worker that died twice) is
// reported and the others still render; the command then fails naming every
// failed frame. SIGINT or SIGTERM stops the run: exit 130 or 143, naming the
// frames that were written.
#pragma once

#include "CommandLine.h"
#include "Compose.h"
#include "Occluders.h"

#include <filesystem>
#include <string>

namespace glintwave::cli {

struct SequenceOptions {
    std::filesystem::path project;
    std::string frames;  // a frame range; empty: the project's frames
    std::string output;  // a numbered name, "out.####.exr"
    std::string over;    // a background, numbered or one for every frame; empty: black
    int depth = 48;
    CompositeOptions composite;
    // Which of them the command line gave: those it did not come from the
    // project's output settings (scene.output), exposure keyed per frame.
    struct Given {
        bool blend = false, exposure = false, flareOnly = false, flareAlpha = false, passes = false;
        bool ocio = false, inputSpace = false, workingSpace = false, outputSpace = false;
    } given;
    OcclusionOptions occlusion;
    int threads = 0;     // processes; 0: the CPUs this process may use
    bool skipExisting = false;
    int workerSocket = -1;  // a worker of another run: frames in and reports out on this socket
};

int renderSequence(const SequenceOptions& options, const CommonOptions& common);

// The CPUs this process may run on (its affinity mask), at least 1.
int usableCpus();

} // namespace glintwave::cli
