#pragma once

#include <cstdint>

// Gains and filter coefficients in Q24 fixed point: 32-bit values with 0x1000000 = 1.0.
inline constexpr int kQ24One = 0x1000000;

// A sample times a Q24 value without 64-bit arithmetic: both are split at bit 12 and the
// low x low term is dropped. Products wrap as 32-bit values would.
inline int MulQ24(int sample, int q24)
{
    const int sampleHigh = sample >> 12;
    const int q24High = q24 >> 12;
    const auto wrapMul = [](int a, int b) {
        return static_cast<int>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
    };
    const uint32_t sum = static_cast<uint32_t>(wrapMul(sampleHigh, q24High)) +
                         static_cast<uint32_t>(wrapMul(sample & 0xFFF, q24High) >> 12) +
                         static_cast<uint32_t>(wrapMul(sampleHigh, q24 & 0xFFF) >> 12);
    return static_cast<int>(sum);
}
