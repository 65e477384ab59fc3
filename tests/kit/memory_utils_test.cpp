// Small block copies and word fills, and the platform clock.
#include <gtest/gtest.h>
#include <time.h>

#include <cstring>
#include <vector>

#include "KVSystem.h"
#include "MemoryUtils.h"

namespace {

std::vector<unsigned char> Counting(size_t n)
{
    std::vector<unsigned char> v(n);
    for (size_t i = 0; i < n; ++i) {
        v[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    return v;
}

TEST(SmallBlock, CopiesExactlyCountBytesAtAnyAlignment)
{
    const int32_t counts[] = {-4, 0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 12, 13, 64};
    for (int32_t count : counts) {
        for (size_t offset = 0; offset < 4; ++offset) {
            const std::vector<unsigned char> src = Counting(80);
            std::vector<unsigned char> fwd(80, 0xCC);
            std::vector<unsigned char> back(80, 0xCC);
            CopySmallBlockForwards(src.data() + offset, fwd.data() + 1, count);
            CopySmallBlockBackwards(src.data() + offset, back.data() + 1, count);
            const int32_t n = count > 0 ? count : 0;
            for (int32_t i = 0; i < 80; ++i) {
                const bool inside = i >= 1 && i <= n;
                EXPECT_EQ(fwd[i], inside ? src[offset + i - 1] : 0xCC) << count << "@" << i;
                // Reversing: the first source byte lands on the last byte.
                EXPECT_EQ(back[i], inside ? src[offset + n - i] : 0xCC) << count << "@" << i;
            }
        }
    }
}

TEST(WordFill, ZeroAndFill)
{
    const int32_t counts[] = {-1, 0, 1, 3, 9};
    for (int32_t count : counts) {
        std::vector<unsigned char> zero(48, 0xCC);
        std::vector<unsigned char> fill(48, 0xCC);
        ZeroMem(zero.data() + 2, count);
        FillMem(fill.data() + 2, count, 0x11223344u);
        uint32_t word = 0x11223344u;
        unsigned char pattern[4];
        std::memcpy(pattern, &word, 4);
        const int32_t n = count > 0 ? count * 4 : 0;
        for (int32_t i = 0; i < 48; ++i) {
            const bool inside = i >= 2 && i < 2 + n;
            EXPECT_EQ(zero[i], inside ? 0 : 0xCC) << count << "@" << i;
            EXPECT_EQ(fill[i], inside ? pattern[(i - 2) % 4] : 0xCC) << count << "@" << i;
        }
    }
}

int64_t Sixtieths()
{
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<int64_t>(t.tv_sec) * 60 + static_cast<int64_t>(t.tv_nsec) * 60 / 1000000000;
}

TEST(Clock, TickCountIsTheMonotonicClockInSixtieths)
{
    const int64_t before = Sixtieths();
    const int32_t tick = TickCount();
    const int64_t after = Sixtieths();
    // Compared in the 32 bits the tick keeps.
    const uint32_t sinceBefore = static_cast<uint32_t>(tick) - static_cast<uint32_t>(before);
    const uint32_t span = static_cast<uint32_t>(after - before);
    EXPECT_LE(sinceBefore, span);
}

}  // namespace
