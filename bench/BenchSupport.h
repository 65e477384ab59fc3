/*
 * BenchSupport.h - what every render benchmark shares: frames as plain
 * memory, the memory floor (one read-modify-write pass over the same
 * buffer), checksums for the equality checks, and the timing of one
 * iteration beside its floor.
 */
#ifndef GLINTWAVE_BENCH_SUPPORT_H
#define GLINTWAVE_BENCH_SUPPORT_H

#include <benchmark/benchmark.h>

#include <stdint.h>
#include <time.h>

#include <algorithm>
#include <string>
#include <vector>

namespace flarebench {

struct FrameSize {
    int32_t width;
    int32_t height;
    const char* name;
};

constexpr FrameSize kFrame4K = {3840, 2160, "3840x2160"};
constexpr FrameSize kFrameHD = {1920, 1080, "1920x1080"};

inline int32_t PixelBytes(int16_t depth)
{
    return depth == 48 ? 6 : depth == 32 ? 4 : 1;
}

/* A frame buffer: rows of width pixels, no padding, 8-byte aligned. */
class Frame {
public:
    Frame(FrameSize size, int16_t depth)
        : size_(size), depth_(depth), rowBytes_(size.width * PixelBytes(depth)),
          words_(((size_t)rowBytes_ * size.height + 7) / 8, 0)
    {
    }
    unsigned char* base() { return reinterpret_cast<unsigned char*>(words_.data()); }
    int32_t rowBytes() const { return rowBytes_; }
    int16_t depth() const { return depth_; }
    FrameSize size() const { return size_; }
    size_t bytes() const { return words_.size() * 8; }
    void Clear() { std::fill(words_.begin(), words_.end(), 0); }

    /* The memory floor: every word read, changed and written back once. */
    void ReadModifyWrite()
    {
        uint64_t* w = words_.data();
        const size_t n = words_.size();
        for (size_t i = 0; i < n; ++i)
            w[i] ^= 0x0001000100010001ull;
        benchmark::ClobberMemory();
    }

    uint64_t Checksum() const
    {
        uint64_t h = 14695981039346656037ull;
        for (uint64_t w : words_) {
            h ^= w;
            h *= 1099511628211ull;
        }
        return h;
    }

private:
    FrameSize size_;
    int16_t depth_;
    int32_t rowBytes_;
    std::vector<uint64_t> words_;
};

/* The thread's own processor time: the machine is shared, and time spent
   waiting for the processor would count against neither render nor floor. */
inline double Now()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return (double)t.tv_sec + (double)t.tv_nsec * 1e-9;
}

/* Times each iteration's render (manual time, processor time of the thread) and one memory pass over the
   same frame right after it; reports the floor and the ratio. */
template <class Render>
void TimeAgainstFloor(benchmark::State& state, Frame& frame, Render render)
{
    double renderSeconds = 0, floorSeconds = 0;
    for (auto _ : state) {
        double t0 = Now();
        render();
        double t1 = Now();
        frame.ReadModifyWrite();
        double t2 = Now();
        state.SetIterationTime(t1 - t0);
        renderSeconds += t1 - t0;
        floorSeconds += t2 - t1;
    }
    double n = (double)state.iterations();
    state.counters["floor_ms"] = floorSeconds / n * 1e3;
    state.counters["ratio"] = floorSeconds > 0 ? renderSeconds / floorSeconds : 0;
}

/* Reports an equality check: every path's checksum must match the first. */
inline bool ReportEquality(benchmark::State& state, const std::vector<uint64_t>& checksums,
                           const std::string& what)
{
    for (size_t i = 1; i < checksums.size(); ++i) {
        if (checksums[i] != checksums[0]) {
            state.SkipWithError((what + ": the fast and the plain paths differ").c_str());
            return false;
        }
    }
    state.counters["paths_equal"] = (double)checksums.size();
    return true;
}

}  // namespace flarebench

#endif /* GLINTWAVE_BENCH_SUPPORT_H */
