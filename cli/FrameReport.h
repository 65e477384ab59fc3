// FrameReport.h - where the frames of a sequence are reported as they end:
// the progress line of the command, or the socket to the process that
// handed the frames to a worker.
#pragma once

#include <cstdint>
#include <string>

namespace glintwave::cli {

class FrameReport {
public:
    virtual ~FrameReport() = default;
    virtual void written(std::int32_t frame) = 0;
    virtual void failed(std::int32_t frame, const std::string& why) = 0;
    // The process rendering the frame died; the frame is handed out again.
    virtual void retried(std::int32_t, const std::string&) {}
    virtual void progress(float) {}
};

} // namespace glintwave::cli
