// Interrupt.h - Ctrl-C as a cancel.
//
// While an InterruptCatcher lives, SIGINT only raises a flag (the one global
// of the command: a signal handler can do nothing else safely). The render's
// progress callback reads it and answers the plug-in's next 'STAT' with 4
// (cancelled); the command then stops and writes nothing.
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
    // A function pointer for korvane::writeImageReplacing: keep the file
    // unless interrupted.
    static bool notInterrupted() { return !interrupted(); }
    // Raises SIGINT when the test hook asks for it and none came yet.
    static void testHook();

private:
    struct sigaction previous_ {};
};

} // namespace glintwave::cli
