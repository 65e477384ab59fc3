/*
 * PStringTime.cpp - durations and moments as Pascal strings.
 *
 * Each routine returns one temporary from the ring (PStrNext).
 */
#include "PString.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Local time of a platform second; false when the platform cannot represent
// or convert it.
bool BreakLocal(int64_t second, struct tm* out)
{
    const time_t t = static_cast<time_t>(second);
    if (static_cast<int64_t>(t) != second) {
        return false;  // a narrower time_t cannot hold this moment
    }
    tzset();
    return localtime_r(&t, out) != nullptr;
}

int64_t Now()
{
    return static_cast<int64_t>(time(nullptr));
}

// The day of second + delta equals day d (day, month and year alike).
bool SameDay(const struct tm& d, int64_t second, int64_t delta)
{
    int64_t moved = 0;
    if (__builtin_add_overflow(second, delta, &moved)) {
        return false;
    }
    struct tm other;
    if (!BreakLocal(moved, &other)) {
        return false;
    }
    return d.tm_mday == other.tm_mday && d.tm_mon == other.tm_mon && d.tm_year == other.tm_year;
}

}  // namespace

extern "C" {

unsigned char* PStrTimeStr(int32_t seconds)
{
    const uint32_t magnitude =
        seconds < 0 ? 0u - static_cast<uint32_t>(seconds) : static_cast<uint32_t>(seconds);
    const uint32_t s = magnitude % 60u;
    const uint32_t m = (magnitude / 60u) % 60u;
    const uint32_t h = (magnitude / 3600u) % 24u;
    const uint32_t d = magnitude / 86400u;
    const char* sign = seconds < 0 ? "-" : "";

    char text[64];
    if (d >= 1u) {
        snprintf(text, sizeof text, "%s%" PRIu32 "D %" PRIu32 "H %" PRIu32 "M %" PRIu32 "S", sign, d, h,
                 m, s);
    } else if (h >= 1u) {
        snprintf(text, sizeof text, "%s%" PRIu32 "Hr %" PRIu32 "Min %" PRIu32 "Sec", sign, h, m, s);
    } else if (m >= 1u) {
        snprintf(text, sizeof text, "%s%" PRIu32 " Min.  %" PRIu32 " Sec.", sign, m, s);
    } else if (s != 1u) {
        snprintf(text, sizeof text, "%s%" PRIu32 " Seconds", sign, s);
    } else {
        snprintf(text, sizeof text, "%s1 Second", sign);
    }
    return PStrCToP(text, nullptr);
}

unsigned char* PStrDateStr(int64_t theSecond, int64_t curSecond)
{
    if (curSecond == 1) {
        curSecond = Now();
    }
    if (theSecond == 0) {
        theSecond = curSecond != 0 ? curSecond : Now();
    }

    struct tm when;
    if (!BreakLocal(theSecond, &when)) {
        return PStrNext();  // a moment the platform cannot place: empty text
    }

    int hour = when.tm_hour;
    char half = 'A';
    if (hour == 0) {
        hour = 12;
    } else if (hour == 12) {
        half = 'P';
    } else if (hour > 12) {
        hour -= 12;
        half = 'P';
    }

    char text[128];
    int len = snprintf(text, sizeof text, "%d:%02d:%02d%cM", hour, when.tm_min, when.tm_sec, half);

    const char* relative = nullptr;
    if (SameDay(when, curSecond, 0)) {
        relative = " Today";
    } else if (SameDay(when, curSecond, kSecondsPerDay)) {
        relative = " Tomorrow";
    } else if (SameDay(when, curSecond, -kSecondsPerDay)) {
        relative = " Yesterday";
    }

    if (relative != nullptr) {
        snprintf(text + len, sizeof text - static_cast<size_t>(len), "%s", relative);
    } else {
        // The month as the local-time record holds it (January is 0) and,
        // for the year, the characters from the third on of the years since
        // 1900 (126 for 2026 gives 6). Both are long-standing output that
        // existing texts and tests match, so they stay exactly like this.
        char years[16];
        snprintf(years, sizeof years, "%d", when.tm_year);
        const size_t yearsLen = strlen(years);
        const char* yearPart = yearsLen > 2 ? years + 2 : "";
        snprintf(text + len, sizeof text - static_cast<size_t>(len), " %d/%d/%.2s", when.tm_mon,
                 when.tm_mday, yearPart);
    }
    return PStrCToP(text, nullptr);
}

}  // extern "C"
