// ProgressLine.h - a progress bar on one line of stderr, shown only when
// stderr is a terminal (never in a log or a pipe) and not silenced.
#pragma once

#include <string>

namespace korvane {

class ProgressLine {
public:
    // Shown when `wanted` and stderr is a terminal.
    explicit ProgressLine(bool wanted);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // "label [#########           ]  45%"; `fraction` is clamped to 0..1.
    void show(const std::string& label, float fraction);
    // Wipes the line, so the next output starts clean.
    void clear();

private:
    bool shown_;
    bool dirty_ = false;
};

} // namespace korvane
