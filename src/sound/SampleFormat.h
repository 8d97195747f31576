#pragma once

#include <algorithm>
#include <cstdint>

// Stored PCM sample formats and their conversion to and from internal samples.
// Internal samples are 32-bit integers with 16 units per 16-bit step: 16-bit full scale is
// +-524,288. Writing saturates: a sample beyond the stored range becomes its largest value of
// that sign instead of wrapping around to the other sign.

// An internal sample rounded to 16 bits and held within the 16-bit range. The sum cannot
// overflow: internal samples stay far inside the 32-bit range.
inline int Saturate16(int x)
{
    return std::clamp((x + 8) >> 4, -32768, 32767);
}

// 16-bit signed, little-endian.
struct LSF16 {
    using Stored = int16_t;
    static int In(const uint8_t* p) { return static_cast<int16_t>(p[0] | (p[1] << 8)) * 16; }
    static void Out(uint8_t* p, int x)
    {
        const int v = Saturate16(x);
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
    }
    static constexpr int kBytes = 2;
};

// 16-bit signed, big-endian.
struct LSFBE16 {
    using Stored = int16_t;
    static int In(const uint8_t* p) { return static_cast<int16_t>((p[0] << 8) | p[1]) * 16; }
    static void Out(uint8_t* p, int x)
    {
        const int v = Saturate16(x);
        p[0] = static_cast<uint8_t>(v >> 8);
        p[1] = static_cast<uint8_t>(v);
    }
    static constexpr int kBytes = 2;
};

// 8-bit unsigned, 128 = zero.
struct LSFU8 {
    using Stored = uint8_t;
    static int In(const uint8_t* p) { return (p[0] - 128) * 4096; }
    static void Out(uint8_t* p, int x)
    {
        p[0] = static_cast<uint8_t>(std::clamp((x + 2048) >> 12, -128, 127) + 128);
    }
    static constexpr int kBytes = 1;
};

// From a stored format into internal samples; count is frames x channels.
template <typename Format>
void ConvertSamplesIn(int* out, const void* stored, int count)
{
    const uint8_t* p = static_cast<const uint8_t*>(stored);
    for (int i = 0; i < count; ++i, p += Format::kBytes)
        out[i] = Format::In(p);
}

// From internal samples into a stored format; count is frames x channels.
template <typename Format>
void ConvertSamplesOut(void* stored, const int* in, int count)
{
    uint8_t* p = static_cast<uint8_t*>(stored);
    for (int i = 0; i < count; ++i, p += Format::kBytes)
        Format::Out(p, in[i]);
}
