// Interrupt.h - SIGINT and SIGTERM as a cancel.
//
// While an InterruptCatcher lives, the first SIGINT or SIGTERM only raises a
// flag (the one global of the command: a signal handler can do nothing else
// safely). The render's progress callback reads it and answers the
// plug-in's next 'STAT' with 4 (cancelled); the command then stops, removes
// what it had half written and exits 128 + the signal's number (130 for
// SIGINT, 143 for SIGTERM), as a shell reports a process the signal ended.
//
// A second signal ends the process at once, by the signal itself. A process
// that runs workers asks for the second one to be left to it
// (keepSecondSignal): it kills its workers and cleans up after them first.
//
// Test hook: with GLINTWAVE_TEST_INTERRUPT=1 in the environment the command
// raises SIGINT itself at the first progress report, so tests can cancel a
// render without racing a timer.
#pragma once

#include "korvane/Error.h"

#include <signal.h>

namespace glintwave::cli {

// The render stopped because the user asked it to.
struct Cancelled : korvane::Error {
    Cancelled() : korvane::Error("cancelled") {}
};

class InterruptCatcher {
public:
    InterruptCatcher();
    ~InterruptCatcher();
    InterruptCatcher(const InterruptCatcher&) = delete;
    InterruptCatcher& operator=(const InterruptCatcher&) = delete;

    static bool interrupted();
    // The signal that interrupted (SIGINT or SIGTERM), 0 while none came.
    static int signalNumber();
    // The exit status of a process the signal stopped: 128 + its number.
    static int exitStatus();
    // True once a second signal came to a process that keeps it.
    static bool interruptedAgain();
    // From now on a second signal only raises interruptedAgain().
    static void keepSecondSignal();
    // Ends the process by the signal that interrupted it, as if uncaught.
    [[noreturn]] static void dieOfSignal();

    // A keep function for korvane::writeImageReplacing: keep the file
    // unless interrupted.
    static bool notInterrupted() { return !interrupted(); }
    // Raises SIGINT when the test hook asks for it and none came yet.
    static void testHook();

private:
    struct sigaction previousInterrupt_ {};
    struct sigaction previousTerminate_ {};
};

} // namespace glintwave::cli
