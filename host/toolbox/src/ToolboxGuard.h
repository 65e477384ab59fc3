// ToolboxGuard.h - the one error boundary of every toolbox function.
//
// Toolbox functions are called from plug-ins through a C interface: nothing
// may be thrown across it. Each body runs inside guarded(), which turns an
// exception into a report (korvane::toolbox::reportError) and the function's
// neutral result.
#pragma once

#include "korvane/ResourceToolbox.h"

#include <exception>
#include <string>

namespace korvane::toolbox {

template <typename Result, typename Body>
Result guarded(const char* function, Result fallback, Body&& body) noexcept
{
    try {
        return body();
    } catch (const std::exception& e) {
        try {
            reportError(std::string(function) + ": " + e.what());
        } catch (...) {
        }
    } catch (...) {
        try {
            reportError(std::string(function) + ": unexpected failure");
        } catch (...) {
        }
    }
    return fallback;
}

// For functions without a result.
template <typename Body>
void guardedVoid(const char* function, Body&& body) noexcept
{
    guarded(function, 0, [&] {
        body();
        return 0;
    });
}

} // namespace korvane::toolbox
