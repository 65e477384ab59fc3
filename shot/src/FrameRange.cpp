// FrameRange.cpp - parsing frame ranges and numbered file names.

#include "korvane/FrameRange.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace korvane {
namespace {

constexpr int kMaxPadding = 10;

// Reads one part of a range list from the left; each step names what it
// wanted when it fails.
class RangeReader {
public:
    RangeReader(std::string_view whole, std::string_view part) : whole_(whole), text_(part) {}

    [[noreturn]] void fail(const std::string& reason) const
    {
        throw Error(ErrorPlace{"", 0, "frame range \"" + std::string(whole_) + "\""}, reason);
    }

    std::int64_t number(const char* after)
    {
        const bool negative = !text_.empty() && text_.front() == '-';
        std::size_t at = negative ? 1 : 0;
        std::int64_t value = 0;
        const std::size_t start = at;
        while (at < text_.size() && text_[at] >= '0' && text_[at] <= '9') {
            value = value * 10 + (text_[at] - '0');
            if (value > std::numeric_limits<std::int32_t>::max())
                fail("frame " + std::string(text_.substr(0, at + 1)) + "... does not fit 32 bits");
            at++;
        }
        if (at == start)
            fail(std::string("a frame number is missing ") + after);
        text_.remove_prefix(at);
        return negative ? -value : value;
    }

    bool take(char c)
    {
        if (text_.empty() || text_.front() != c)
            return false;
        text_.remove_prefix(1);
        return true;
    }

    bool done() const { return text_.empty(); }
    std::string rest() const { return std::string(text_); }

private:
    std::string_view whole_;
    std::string_view text_;
};

} // namespace

FrameList parseFrameRange(std::string_view text)
{
    FrameList frames;
    if (text.empty())
        throw Error("frame range is empty: give frames as 1-100, 1-100x2 or 1,5,9-12");
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const std::string_view part = text.substr(start, comma - start);
        RangeReader in(text, part);
        if (part.empty())
            in.fail("an empty part between commas");
        const std::int64_t first = in.number("at the start");
        std::int64_t last = first;
        std::int64_t step = 1;
        if (in.take('-')) {
            last = in.number("after '-'");
            if (in.take('x')) {
                step = in.number("after 'x'");
                if (step < 1)
                    in.fail("the step after 'x' must be 1 or more");
            }
        }
        if (!in.done())
            in.fail("unexpected \"" + in.rest() + "\" in \"" + std::string(part) + "\"");
        if (last < first)
            in.fail("\"" + std::string(part) + "\" ends before it starts");
        if (static_cast<std::uint64_t>((last - first) / step) + frames.size() >= kMaxFrames)
            in.fail("more than " + std::to_string(kMaxFrames) + " frames");
        for (std::int64_t frame = first; frame <= last; frame += step)
            frames.push_back(static_cast<std::int32_t>(frame));
        start = comma + 1;
    }
    // Ranges are mostly given in order; millions of frames then need no sort.
    if (!std::is_sorted(frames.begin(), frames.end()))
        std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
}

FramePattern::FramePattern(std::string_view pattern)
{
    std::size_t at = 0;
    while (at < pattern.size()) {
        const char c = pattern[at];
        std::size_t length = 0;
        int padding = 0;
        if (c == '#' || c == '@') {
            while (at + length < pattern.size() && pattern[at + length] == c)
                length++;
            padding = (c == '#' && length == 1) ? 4 : static_cast<int>(length);
        } else if (c == '%') {
            // %d or %0Nd; any other percent sign is part of the name.
            std::size_t end = at + 1;
            while (end < pattern.size() && end - at <= 3 && pattern[end] >= '0' && pattern[end] <= '9') {
                padding = padding * 10 + (pattern[end] - '0');
                end++;
            }
            if (end >= pattern.size() || pattern[end] != 'd') {
                at++;
                continue;
            }
            length = end + 1 - at;
        } else {
            at++;
            continue;
        }
        if (padding > kMaxPadding)
            throw Error("file name \"" + std::string(pattern) + "\" pads frames to more than " +
                        std::to_string(kMaxPadding) + " digits");
        if (numbered_)
            throw Error("file name \"" + std::string(pattern) + "\" holds more than one frame number");
        numbered_ = true;
        padding_ = padding;
        prefix_ = std::string(pattern.substr(0, at));
        suffix_ = std::string(pattern.substr(at + length));
        at += length;
    }
    if (!numbered_)
        prefix_ = std::string(pattern);
}

std::string FramePattern::name(std::int32_t frame) const
{
    if (!numbered_)
        return prefix_;
    char digits[32];
    std::snprintf(digits, sizeof digits, "%0*d", padding_, static_cast<int>(frame));
    return prefix_ + digits + suffix_;
}

std::optional<std::int32_t> FramePattern::frameOf(std::string_view fileName) const
{
    if (!numbered_ || fileName.size() <= prefix_.size() + suffix_.size() || !fileName.starts_with(prefix_) ||
        !fileName.ends_with(suffix_))
        return std::nullopt;
    const std::string_view digits = fileName.substr(prefix_.size(), fileName.size() - prefix_.size() - suffix_.size());
    const bool negative = digits.front() == '-';
    const std::string_view bare = negative ? digits.substr(1) : digits;
    if (bare.empty() || bare.size() > 10 || static_cast<int>(digits.size()) < padding_ ||
        bare.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    std::int64_t value = 0;
    for (const char c : bare)
        value = value * 10 + (c - '0');
    value = negative ? -value : value;
    if (value < INT32_MIN || value > INT32_MAX || name(static_cast<std::int32_t>(value)) != fileName)
        return std::nullopt;
    return static_cast<std::int32_t>(value);
}

} // namespace korvane
