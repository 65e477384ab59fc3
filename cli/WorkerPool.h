// WorkerPool.h - the frames of a sequence shared among worker processes.
//
// Each worker is this program again, started with the given command line and
// `--worker-socket FD`, in a process group of its own. It takes one frame at
// a time on its socket ("F\n") and answers "written F", "failed F WHY" or,
// when it cannot render at all, "fatal WHY"; the end of the socket tells it
// to finish. A worker gets its next frame as soon as it answers, so a slow
// frame holds up nobody else.
//
// A worker that dies (a signal, the kernel's out-of-memory killer) has its
// temporary file removed (`removeLeftovers`) and its frame handed once more
// to a fresh worker; a frame whose second worker dies too is reported
// failed. SIGINT or SIGTERM stops handing out frames and passes the signal
// to every worker, which stops at its next progress report; a second signal
// kills the workers at once, removes their leftovers and ends this process
// by the signal.
#pragma once

#include "FrameReport.h"

#include "korvane/FrameRange.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace glintwave::cli {

struct WorkerPoolSetup {
    std::vector<std::string> command;  // the worker's program and arguments
    int processes = 2;
    // What a worker that died while rendering `frame` may have left behind.
    std::function<void(std::int32_t frame, pid_t worker)> removeLeftovers;
};

// Renders the frames in workers, reporting each. Returns false when a
// signal stopped it. Throws korvane::Error when a worker cannot render at
// all (its "fatal" line) or no worker process can be started.
bool renderInWorkerPool(const WorkerPoolSetup& setup, const korvane::FrameList& frames, FrameReport& report);

} // namespace glintwave::cli
