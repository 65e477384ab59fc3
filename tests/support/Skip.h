// Skip.h - the GoogleTest side of skip.sh: a test that needs what only the
// machine can give and finds it missing records "GROUP: why" in
// $GLINTWAVE_SKIP_LOG (the test command's closing summary) and skips.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace testsupport {

inline void noteSkip(const std::string& group, const std::string& why)
{
    if (const char* log = std::getenv("GLINTWAVE_SKIP_LOG"); log && *log)
        std::ofstream(log, std::ios::app) << group << ": " << why << "\n";
}

} // namespace testsupport

// Skips the current test, noting why in the test command's summary.
#define GLINTWAVE_SKIP(group, why)                 \
    do {                                           \
        const std::string reason_ = (why);         \
        testsupport::noteSkip((group), reason_);   \
        GTEST_SKIP() << reason_;                   \
    } while (false)
