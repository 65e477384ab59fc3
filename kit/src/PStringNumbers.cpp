/*
 * PStringNumbers.cpp - numbers as Pascal strings: decimal, grouped with
 * commas, in units of 1024, and real numbers with a chosen count of decimals.
 *
 * Each routine returns one temporary from the ring (PStrNext).
 */
#include "PString.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <vector>

namespace {

// The magnitude of n as an unsigned value; safe for the most negative n.
inline uint32_t Magnitude(int32_t n)
{
    return n < 0 ? 0u - static_cast<uint32_t>(n) : static_cast<uint32_t>(n);
}

// Decimal digits of v into buf (no terminator); returns their count.
int32_t DecimalDigits(uint32_t v, char* buf)
{
    char rev[10];
    int32_t n = 0;
    do {
        rev[n++] = static_cast<char>('0' + v % 10u);
        v /= 10u;
    } while (v != 0u);
    for (int32_t i = 0; i < n; ++i) {
        buf[i] = rev[n - 1 - i];
    }
    return n;
}

unsigned char* SignedDecimal(int32_t n)
{
    char text[16];
    snprintf(text, sizeof text, "%" PRId32, n);
    return PStrCToP(text, nullptr);
}

}  // namespace

extern "C" {

unsigned char* PStrNum(int32_t n)
{
    return SignedDecimal(n);
}

unsigned char* PStrLongStr(int32_t n)
{
    return SignedDecimal(n);
}

unsigned char* PStrULongStr(uint32_t n)
{
    // Digits are produced while the value is non-zero, so 0 gives the empty
    // string. Callers rely on that, so it stays.
    unsigned char* s = PStrNext();
    if (n != 0u) {
        char digits[10];
        const int32_t count = DecimalDigits(n, digits);
        memcpy(s + 1, digits, static_cast<size_t>(count));
        s[0] = static_cast<unsigned char>(count);
    }
    return s;
}

unsigned char* PStrNumericalStr(int32_t n)
{
    char digits[10];
    const int32_t count = DecimalDigits(Magnitude(n), digits);
    unsigned char* s = PStrNext();
    int32_t len = 0;
    if (count < 4) {
        // Short numbers come back as their bare digits: a negative number
        // of one to three digits loses its sign. Long-standing behaviour
        // that callers expect, kept as it is.
        memcpy(s + 1, digits, static_cast<size_t>(count));
        len = count;
    } else {
        if (n < 0) {
            s[++len] = '-';
        }
        for (int32_t i = 0; i < count; ++i) {
            if (i > 0 && (count - i) % 3 == 0) {
                s[++len] = ',';
            }
            s[++len] = static_cast<unsigned char>(digits[i]);
        }
    }
    s[0] = static_cast<unsigned char>(len);
    return s;
}

unsigned char* PStrKStr(uint32_t n)
{
    return PStrAppendChar(PStrNumericalStr(static_cast<int32_t>(n >> 10)), 'K');
}

unsigned char* PStrKSStr(int32_t n)
{
    return PStrAppendChar(PStrNumericalStr(n / 1024), 'K');
}

unsigned char* PStrFloatStr(double x, int16_t digits)
{
    // The full text is formatted first and trimmed before it is cut to a
    // Pascal string, so that the trimming sees the real trailing zeros even
    // when the number has hundreds of digits.
    const bool keepPoint = digits < 0;
    const int decimals = keepPoint ? -static_cast<int>(digits) : static_cast<int>(digits);
    const char* format = keepPoint ? "%#1.*lf" : "%1.*lf";

    char small[64];
    std::vector<char> large;
    char* text = small;
    int len = snprintf(small, sizeof small, format, decimals, x);
    if (len < 0) {
        return PStrNext();
    }
    if (static_cast<size_t>(len) >= sizeof small) {
        large.resize(static_cast<size_t>(len) + 1);
        len = snprintf(large.data(), large.size(), format, decimals, x);
        if (len < 0) {
            return PStrNext();
        }
        text = large.data();
    }

    if (!keepPoint && memchr(text, '.', static_cast<size_t>(len)) != nullptr) {
        while (len > 0 && text[len - 1] == '0') {
            --len;
        }
        if (len > 0 && text[len - 1] == '.') {
            --len;
        }
        text[len] = '\0';
    }
    if (!keepPoint && strcmp(text, "-0") == 0) {
        text[0] = '0';
        text[1] = '\0';
    }
    return PStrCToP(text, nullptr);
}

}  // extern "C"
