// ProgressLine.cpp - a progress bar on a terminal's stderr.

#include "ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace korvane {
namespace {

constexpr int kBarWidth = 30;

} // namespace

ProgressLine::ProgressLine(bool wanted) : shown_(wanted && isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::show(const std::string& label, float fraction)
{
    if (!shown_)
        return;
    const float clamped = fraction > 0.0f ? (fraction < 1.0f ? fraction : 1.0f) : 0.0f;  // NaN: 0
    const int filled = static_cast<int>(clamped * kBarWidth);
    char bar[kBarWidth + 1];
    for (int i = 0; i < kBarWidth; ++i)
        bar[i] = i < filled ? '#' : ' ';
    bar[kBarWidth] = '\0';
    std::fprintf(stderr, "\r%s [%s] %3d%%", label.c_str(), bar, static_cast<int>(clamped * 100.0f));
    std::fflush(stderr);
    dirty_ = true;
}

void ProgressLine::clear()
{
    if (!dirty_)
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    dirty_ = false;
}

} // namespace korvane
