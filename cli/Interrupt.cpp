// Interrupt.cpp - SIGINT and SIGTERM raise a flag that the next progress
// report reads; a second one ends the process unless it is kept.

#include "Interrupt.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

namespace glintwave::cli {
namespace {

volatile std::sig_atomic_t firstSignal = 0;
volatile std::sig_atomic_t secondSignal = 0;
volatile std::sig_atomic_t secondIsKept = 0;

extern "C" void onSignal(int number)
{
    if (firstSignal == 0) {
        firstSignal = number;
        return;
    }
    if (secondIsKept) {
        secondSignal = 1;
        return;
    }
    // Both calls are async-signal-safe; the default action ends the process.
    std::signal(number, SIG_DFL);
    std::raise(number);
}

} // namespace

InterruptCatcher::InterruptCatcher()
{
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a blocking read or wait returns EINTR and looks at the flag.
    sigaction(SIGINT, &action, &previousInterrupt_);
    sigaction(SIGTERM, &action, &previousTerminate_);
}

InterruptCatcher::~InterruptCatcher()
{
    sigaction(SIGINT, &previousInterrupt_, nullptr);
    sigaction(SIGTERM, &previousTerminate_, nullptr);
}

bool InterruptCatcher::interrupted()
{
    return firstSignal != 0;
}

int InterruptCatcher::signalNumber()
{
    return firstSignal;
}

int InterruptCatcher::exitStatus()
{
    return 128 + (firstSignal != 0 ? firstSignal : SIGINT);
}

bool InterruptCatcher::interruptedAgain()
{
    return secondSignal != 0;
}

void InterruptCatcher::keepSecondSignal()
{
    secondIsKept = 1;
}

void InterruptCatcher::dieOfSignal()
{
    const int number = firstSignal != 0 ? firstSignal : SIGINT;
    std::signal(number, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, number);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(number);
    _exit(128 + number);
}

void InterruptCatcher::testHook()
{
    const char* hook = std::getenv("GLINTWAVE_TEST_INTERRUPT");
    if (hook && std::strcmp(hook, "1") == 0 && !interrupted())
        std::raise(SIGINT);
}

} // namespace glintwave::cli
