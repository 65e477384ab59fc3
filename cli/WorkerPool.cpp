// WorkerPool.cpp - starting workers, handing out frames one at a time, and
// what follows when a worker dies or a signal comes (rules in the header).

#include "WorkerPool.h"

#include "Interrupt.h"

#include "korvane/Error.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <map>
#include <optional>

namespace glintwave::cli {
namespace {

constexpr int kTriesPerFrame = 2;
// How soon a signal is seen while no worker says anything.
constexpr int kPollMilliseconds = 50;

std::string signalText(int number)
{
    const char* name = sigabbrev_np(number);
    return "signal " + std::to_string(number) + (name ? std::string(" (SIG") + name + ")" : "");
}

std::string endingText(int status)
{
    if (WIFSIGNALED(status))
        return "was killed by " + signalText(WTERMSIG(status));
    if (WIFEXITED(status))
        return "ended with status " + std::to_string(WEXITSTATUS(status));
    return "ended";
}

struct Worker {
    pid_t pid = -1;
    int socket = -1;
    std::optional<std::int32_t> frame;  // handed to it, not yet answered
    std::string pending;                // the start of a line not yet whole
    bool ended = false;
};

class Pool {
public:
    Pool(const WorkerPoolSetup& setup, const korvane::FrameList& frames, FrameReport& report)
        : setup_(setup), queue_(frames.begin(), frames.end()), report_(report)
    {
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool()
    {
        // Only reached through an exception: leave no worker behind.
        for (Worker& worker : workers_)
            kill(worker.pid, SIGKILL);
        reapAll();
    }

    bool run()
    {
        InterruptCatcher::keepSecondSignal();
        topUp();
        while (!workers_.empty()) {
            if (InterruptCatcher::interruptedAgain()) {
                for (Worker& worker : workers_)
                    kill(worker.pid, SIGKILL);
                reapAll();
                InterruptCatcher::dieOfSignal();
            }
            if (InterruptCatcher::interrupted() && !forwarded_) {
                forwarded_ = true;
                for (Worker& worker : workers_)
                    kill(worker.pid, InterruptCatcher::signalNumber());
            }
            waitForWorkers();
            std::erase_if(workers_, [](const Worker& worker) { return worker.ended; });
            topUp();
        }
        if (!fatal_.empty())
            throw korvane::Error(fatal_);
        if (InterruptCatcher::interrupted())
            return false;
        for (const std::int32_t frame : queue_)
            report_.failed(frame, "no worker process could take it: " + startFailure_);
        return true;
    }

private:
    bool stopping() const { return InterruptCatcher::interrupted() || !fatal_.empty(); }

    // Starts workers while there are frames for them and room in the pool.
    void topUp()
    {
        while (!stopping() && startFailure_.empty() && !queue_.empty() &&
               workers_.size() < static_cast<std::size_t>(std::max(1, setup_.processes)))
            start();
    }

    void start()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            startFailure_ = std::string("cannot make its socket: ") + std::strerror(errno);
            return;
        }
        // The worker's end stays open in it; the next worker is started only
        // after this one's end is closed here, so none inherits another's.
        fcntl(ends[1], F_SETFD, 0);
        std::vector<std::string> arguments = setup_.command;
        arguments.insert(arguments.end(), {"--worker-socket", std::to_string(ends[1])});
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        // A process group of its own: a terminal's Ctrl-C reaches this
        // process only, which passes it on once.
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes, 0);
        pid_t pid = -1;
        const int failure = posix_spawn(&pid, argv[0], nullptr, &attributes, argv.data(), environ);
        posix_spawnattr_destroy(&attributes);
        close(ends[1]);
        if (failure != 0) {
            close(ends[0]);
            startFailure_ = std::string("cannot start it: ") + std::strerror(failure);
            return;
        }
        workers_.push_back(Worker{pid, ends[0], std::nullopt, {}, false});
        handOut(workers_.back());
    }

    // The next frame for an idle worker, or the end of its work.
    void handOut(Worker& worker)
    {
        if (stopping() || queue_.empty()) {
            shutdown(worker.socket, SHUT_WR);
            return;
        }
        const std::int32_t frame = queue_.front();
        queue_.pop_front();
        tries_[frame]++;
        worker.frame = frame;
        const std::string line = std::to_string(frame) + "\n";
        // A worker that died meanwhile is found at its socket's end.
        while (send(worker.socket, line.data(), line.size(), MSG_NOSIGNAL) < 0 && errno == EINTR) {
        }
    }

    void waitForWorkers()
    {
        std::vector<pollfd> sockets;
        for (const Worker& worker : workers_)
            sockets.push_back(pollfd{worker.socket, POLLIN, 0});
        if (poll(sockets.data(), sockets.size(), kPollMilliseconds) <= 0)
            return;  // nothing yet, or a signal: the loop looks at the flags
        for (std::size_t i = 0; i < sockets.size(); i++)
            if (sockets[i].revents != 0)
                readFrom(workers_[i]);
    }

    void readFrom(Worker& worker)
    {
        char buffer[4096];
        const ssize_t got = read(worker.socket, buffer, sizeof buffer);
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (got <= 0) {
            reap(worker);
            return;
        }
        worker.pending.append(buffer, static_cast<std::size_t>(got));
        for (std::size_t end; (end = worker.pending.find('\n')) != std::string::npos;) {
            const std::string line = worker.pending.substr(0, end);
            worker.pending.erase(0, end + 1);
            answer(worker, line);
        }
    }

    void answer(Worker& worker, const std::string& line)
    {
        const std::size_t space = line.find(' ');
        const std::string word = line.substr(0, space);
        const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
        if (word == "fatal") {
            if (fatal_.empty())
                fatal_ = rest;
            worker.frame.reset();
            return;
        }
        if (!worker.frame || (word != "written" && word != "failed"))
            return;
        const std::int32_t frame = *worker.frame;
        worker.frame.reset();
        if (word == "written") {
            report_.written(frame);
        } else {
            const std::size_t gap = rest.find(' ');
            report_.failed(frame, gap == std::string::npos ? "" : rest.substr(gap + 1));
        }
        handOut(worker);
    }

    // The worker closed its socket: it has ended or is about to.
    void reap(Worker& worker)
    {
        close(worker.socket);
        int status = 0;
        while (waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) {
        }
        worker.ended = true;
        if (!worker.frame)
            return;
        const std::int32_t frame = *worker.frame;
        if (setup_.removeLeftovers)
            setup_.removeLeftovers(frame, worker.pid);
        if (stopping())
            return;
        if (tries_[frame] < kTriesPerFrame) {
            report_.retried(frame, endingText(status));
            queue_.push_front(frame);
        } else
            report_.failed(frame, "both worker processes that rendered it died; the second " + endingText(status));
    }

    void reapAll()
    {
        for (Worker& worker : workers_)
            if (!worker.ended)
                reap(worker);
        workers_.clear();
    }

    const WorkerPoolSetup& setup_;
    std::deque<std::int32_t> queue_;
    FrameReport& report_;
    std::vector<Worker> workers_;
    std::map<std::int32_t, int> tries_;
    std::string fatal_;
    std::string startFailure_;
    bool forwarded_ = false;
};

} // namespace

bool renderInWorkerPool(const WorkerPoolSetup& setup, const korvane::FrameList& frames, FrameReport& report)
{
    Pool pool(setup, frames, report);
    return pool.run();
}

} // namespace glintwave::cli
