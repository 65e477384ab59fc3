// Interrupt.cpp - SIGINT raises a flag that the next progress report reads.

#include "Interrupt.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

namespace glintwave::cli {
namespace {

volatile std::sig_atomic_t interruptFlag = 0;

extern "C" void onInterrupt(int)
{
    interruptFlag = 1;
}

} // namespace

InterruptCatcher::InterruptCatcher()
{
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &previous_);
}

InterruptCatcher::~InterruptCatcher()
{
    sigaction(SIGINT, &previous_, nullptr);
}

bool InterruptCatcher::interrupted()
{
    return interruptFlag != 0;
}

void InterruptCatcher::testHook()
{
    const char* hook = std::getenv("GLINTWAVE_TEST_INTERRUPT");
    if (hook && std::strcmp(hook, "1") == 0 && !interrupted())
        std::raise(SIGINT);
}

} // namespace glintwave::cli
