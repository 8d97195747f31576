#include "sound/SoundTime.h"

#include <cstdio>
#include <cstdlib>

void LSoundTime::SetSamples(int samples, int rate)
{
    if (rate <= 0)
        return;
    ms_ = (samples / rate) * 1000 + ((samples % rate) * 1000) / rate;
}

int LSoundTime::GetSamples(int rate) const
{
    return (ms_ / 1000) * rate + static_cast<int>((int64_t(rate) * (ms_ % 1000)) / 1000);
}

void LSoundTime::_GetText(char* text) const
{
    const long total = std::labs(static_cast<long>(ms_));
    const long hours = total / 3600000;
    const long minutes = (total / 60000) % 60;
    const int seconds = static_cast<int>((total / 1000) % 60);
    const int millis = static_cast<int>(total % 1000);
    std::sprintf(text, "%s%ld:%.2ld:%.2d.%.3d", ms_ < 0 ? "-" : "", hours, minutes, seconds,
                 millis);
}

void LSoundTime::_GetText2(char* text) const
{
    const long total = std::labs(static_cast<long>(ms_)) + 5;
    const long hours = total / 3600000;
    const long minutes = (total / 60000) % 60;
    const int seconds = static_cast<int>((total / 1000) % 60);
    const int hundredths = static_cast<int>((total % 1000) / 10);
    std::sprintf(text, "%s%ld:%.2ld:%.2d.%.2d", ms_ < 0 ? "-" : "", hours, minutes, seconds,
                 hundredths);
}

void LSoundTime::SetText(const char* text)
{
    int32_t value = 0;
    int32_t multiplier = 1000;
    int32_t field = 0;
    int colons = 0;
    bool negative = false;
    for (const char* p = text; *p; ++p) {
        const char c = *p;
        if (c >= '0' && c <= '9') {
            const int32_t digit = c - '0';
            if (multiplier == 1000) {
                // The whole-seconds field grows as a decimal number: 10 * field + digit,
                // counted in milliseconds.
                const int32_t step = 1000 * digit + 9 * field;
                value += step;
                field += step;
            } else {
                value += multiplier * digit;
                multiplier /= 10;
            }
        } else if (c == ':') {
            ++colons;
            if (colons == 3) {
                multiplier = 100;
                field = 0;
            } else {
                value *= 60;
                field = 0;
            }
        } else if (c == '.') {
            if (multiplier == 1000)
                multiplier = 100;
        } else if (c == '-') {
            negative = true;
        }
    }
    ms_ = negative ? -value : value;
}
