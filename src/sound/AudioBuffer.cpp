#include "sound/AudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

int PeakStrided(const int* buffer, int count, int stride)
{
    int high = 0;
    int low = 0;
    for (int i = 0; i < count; ++i) {
        const int x = buffer[i * stride];
        if (x > high)
            high = x;
        if (x < low)
            low = x;
    }
    return high > -low ? high : -low;
}

// Squares are split at bit 13 so that the sums fit 32 bits.
unsigned int MeanSquareStrided(const int* buffer, int count, int stride)
{
    if (count <= 0)
        return 0;
    uint32_t lowSum = 0;
    int32_t highSum = 0;
    for (int i = 0; i < count; ++i) {
        const int32_t y = buffer[i * stride] >> 5;
        const int32_t q = static_cast<int32_t>(static_cast<uint32_t>(y) * static_cast<uint32_t>(y));
        lowSum += static_cast<uint32_t>(q & 8191);
        highSum += q >> 13;
    }
    const uint32_t total = (lowSum >> 13) + static_cast<uint32_t>(highSum);
    const uint32_t n = static_cast<uint32_t>(count);
    return (total / n) * 8192 + ((total % n) * 8192) / n;
}

LDB ClampDB(double value)
{
    const long db = static_cast<long>(value);
    if (db > 127)
        return 127;
    if (db <= -128)
        return -127;
    return static_cast<int8_t>(db);
}

} // namespace

void ClearAudioBuffer(int* buffer, int frames, unsigned char channels)
{
    ClearAudioBuffer(buffer, frames * channels);
}

void ClearAudioBuffer(int* buffer, int count)
{
    if (count > 0)
        std::memset(buffer, 0, sizeof(int) * static_cast<size_t>(count));
}

namespace {

// Kept apart from GetBufferPeak: clang resolves a function with clones only for callers in the
// same file.
__attribute__((target_clones("avx2", "default"))) int SamplesPeak(const int* samples, int count)
{
    // The same as PeakStrided with a stride of 1, in a loop the compiler turns into vector
    // instructions.
    int high = 0;
    int low = 0;
    for (int i = 0; i < count; ++i) {
        high = std::max(high, samples[i]);
        low = std::min(low, samples[i]);
    }
    return high > -low ? high : -low;
}

} // namespace

int GetBufferPeak(const int* buffer, int frames, unsigned char channels)
{
    return SamplesPeak(buffer, frames * channels);
}

int GetBufferPeakChan(unsigned char channel, const int* buffer, int frames, unsigned char channels)
{
    return PeakStrided(buffer + channel, frames, channels);
}

unsigned int GetBufferMeanSquare(const int* buffer, int frames, unsigned char channels)
{
    return MeanSquareStrided(buffer, frames * channels, 1);
}

int GetBufferMeanSquareChan(unsigned char channel, const int* buffer, int frames,
                            unsigned char channels)
{
    return static_cast<int>(MeanSquareStrided(buffer + channel, frames, channels));
}

LDB GetBufferPeakDBChan(unsigned char channel, const int* buffer, int frames,
                        unsigned char channels)
{
    const int peak = GetBufferPeakChan(channel, buffer, frames, channels);
    if (peak == 0)
        return LDB::kSilence;
    const double db = 20.0 * std::log10(peak * (1.0 / 131072.0));
    return ClampDB(peak >= 131072 ? db + 0.5 : db - 0.5);
}

LDB GetBufferRMSDBChan(unsigned char channel, const int* buffer, int frames,
                       unsigned char channels)
{
    const unsigned int meanSquare =
        static_cast<unsigned int>(GetBufferMeanSquareChan(channel, buffer, frames, channels));
    if (meanSquare == 0)
        return LDB::kSilence;
    const double db = 10.0 * std::log10(meanSquare / 8388626.0);
    return ClampDB(meanSquare >= 8388626 ? db + 0.5 : db - 0.5);
}

void GainAudioBufferQuick(int gain, int* buffer, int count)
{
    for (int i = 0; i < count; ++i)
        buffer[i] = static_cast<int>(static_cast<uint32_t>(gain) * static_cast<uint32_t>(buffer[i])) >> 9;
}
