/*
 * PluginUtilsNumbers.cpp - numbers to and from the text of edit fields.
 */
#include "PluginUtils.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "PString.h"

extern "C" {

unsigned char* CharStr(unsigned char theChar)
{
    unsigned char* theText = PStrNext();
    theText[0] = 1;
    theText[1] = theChar;
    return theText;
}

unsigned char* NumStr(int32_t theNum)
{
    return PStrNum(theNum);
}

double Str2Num(const unsigned char* s)
{
    char buffer[256];
    PStrPToC(s, buffer);
    double theValue = 0.0;
    if (sscanf(buffer, "%lf", &theValue) != 1)
        theValue = 0.0;
    return theValue;
}

int32_t Str2Int(const unsigned char* s)
{
    char buffer[256];
    PStrPToC(s, buffer);
    // What sscanf "%d" reads, with out-of-range values saturated instead of
    // undefined.
    const long long theValue = strtoll(buffer, nullptr, 10);
    if (theValue > INT32_MAX)
        return INT32_MAX;
    if (theValue < INT32_MIN)
        return INT32_MIN;
    return static_cast<int32_t>(theValue);
}

void Num2Str(int16_t digits, double x, unsigned char* s)
{
    if (s == nullptr)
        return;
    // At most 255 characters are written: a Pascal string's worth.
    char buffer[256];
    if (digits < 0)
        snprintf(buffer, sizeof buffer, "%#1.*f", -static_cast<int>(digits), x);
    else
        snprintf(buffer, sizeof buffer, "%1.*f", static_cast<int>(digits), x);
    PStrCToP(buffer, s);
}

unsigned char* RealTrimStr(double theNum, int16_t theDigits)
{
    unsigned char* s = PStrNext();
    Num2Str(theDigits, theNum, s);
    if (theDigits >= 0) {
        if (memchr(s + 1, '.', s[0]) != nullptr) {
            while (s[0] > 0 && s[s[0]] == '0')
                s[0]--;
            if (s[0] > 0 && s[s[0]] == '.')
                s[0]--;
        }
        if (s[0] == 2 && s[1] == '-' && s[2] == '0') {
            s[0] = 1;
            s[1] = '0';
        }
    }
    return s;
}

double FixDouble(double x)
{
    if (x == 0.0 || !isfinite(x))
        return 0.0;
    return x;
}

} // extern "C"
