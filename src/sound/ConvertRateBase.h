#pragma once

#include <cstdint>
#include <utility>
#include <vector>

// Coefficients of a polyphase windowed-sinc filter that converts one sample rate into another.
// Output frame k sits at input frame k * M / L: the filter has L phases (the interpolation
// factor) and steps M / L input frames per output frame (M is the decimation factor), so
// in / out = M / L exactly. Coefficients are 16.16 fixed point, each phase summing to about
// 65,536, stored phase-major.
class LConvertRateBase {
public:
    // Rates must be 1 or more. The narrow flag moves the cut-off further below the output's
    // Nyquist frequency, for a first stage that a second one follows.
    LConvertRateBase(int inputRate, int outputRate, int taps, bool narrow);

    int GetPhases() const { return phases_; }
    int GetStep() const { return step_; }
    int GetTaps() const { return taps_; }
    const int* GetCoefficients(int phase) const { return coefficients_.data() + phase * taps_; }

    // The output frame at an input frame: (f / M) * L + ((f % M) * L) / M.
    int InputToOutput(int inputFrame) const;

private:
    int phases_;
    int step_;
    int taps_;
    std::vector<int> coefficients_;
};

namespace convert_rate_detail {

// Sum of coef[t] * x[t * Stride] over the taps, accumulated in 32 bits (wrapping like the
// 32-bit accumulator it is) and fully unrolled.
template <int Stride, int... T>
inline int32_t TapSum(const int* coef, const int* x, std::integer_sequence<int, T...>) {
    return static_cast<int32_t>(
        (0u + ... + (static_cast<uint32_t>(coef[T]) * static_cast<uint32_t>(x[T * Stride]))));
}

} // namespace convert_rate_detail

// One filtered value, 2^15 times the input scale: the taps are summed as two halves
// (taps 0 to Taps / 2 and the rest), each halved before they are added, so that the products
// of 16-bit samples and 16.16 coefficients cannot overflow the sum.
template <int Taps, int Channels> inline int FilterTaps(const int* coef, const int* x) {
    constexpr int kFirst = Taps / 2 + 1;
    using convert_rate_detail::TapSum;
    const int32_t first = TapSum<Channels>(coef, x, std::make_integer_sequence<int, kFirst>());
    const int32_t second = TapSum<Channels>(coef + kFirst, x + kFirst * Channels,
                                            std::make_integer_sequence<int, Taps - kFirst>());
    return (first >> 1) + (second >> 1);
}
