/*
 * KVSystem.cpp - the platform clock shared by host and plug-in.
 */
#include "KVSystem.h"

#include <time.h>

extern "C" {

int32_t TickCount(void)
{
    struct timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
        return 0;
    }
    // Whole sixtieths: seconds times 60 plus the sixtieths in the fraction.
    // The count keeps its low 32 bits, like any 32-bit tick counter: it
    // turns negative after about 414 days of uptime and wraps after 2.3
    // years.
    const int64_t ticks =
        static_cast<int64_t>(now.tv_sec) * 60 + static_cast<int64_t>(now.tv_nsec) * 60 / 1000000000;
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(ticks)));
}

}  // extern "C"
