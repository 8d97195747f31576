#include "sound/ConvertRateBase.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace {

// Zeroth-order modified Bessel function of the first kind, from the first seven terms of its
// power series; enough for the Kaiser window's small arguments.
long double BesselI0(long double x) {
    long double sum = 0;
    long double term = 1; // (x/2)^k / k!
    for (int k = 0; k <= 6; ++k) {
        if (k > 0) term *= x / 2 / k;
        sum += term * term;
    }
    return sum;
}

int RoundHalfAway(long double value) {
    return static_cast<int>(value < 0 ? value - 0.5L : value + 0.5L);
}

} // namespace

LConvertRateBase::LConvertRateBase(int inputRate, int outputRate, int taps, bool narrow)
    : taps_(taps) {
    const auto in = static_cast<uint32_t>(inputRate);
    const auto out = static_cast<uint32_t>(outputRate);
    phases_ = static_cast<int>(out / std::gcd(in % out, out));
    step_ = std::max<int>(static_cast<int>(uint64_t{in} * phases_ / out), 1);

    // Cut-off as a fraction of the input's Nyquist frequency, and the Kaiser window's beta.
    long double cutoff = 0.975L;
    long double beta = 2.12L;
    if (inputRate >= outputRate) {
        cutoff = static_cast<long double>(outputRate) / inputRate - (narrow ? 0.09375L : 0.046875L);
        beta = 4.538L;
    }

    const int centre = taps / 2;
    const long double half = taps / 2 + 1;
    const long double pi = std::numbers::pi_v<long double>;
    const long double windowScale = BesselI0(beta);
    coefficients_.resize(static_cast<size_t>(phases_) * taps);
    int* coef = coefficients_.data();
    for (int p = 0; p < phases_; ++p) {
        for (int t = 0; t < taps; ++t) {
            const long double x = (t - centre) - static_cast<long double>(p) / phases_;
            long double value = cutoff * 65536;
            if (x != 0) {
                const long double window = BesselI0(beta * std::sqrt(1 - x * x / (half * half)));
                const long double arg = pi * cutoff * x;
                value = window * std::sin(arg) / arg * cutoff * 65536 / windowScale;
            }
            *coef++ = RoundHalfAway(value);
        }
    }
}

int LConvertRateBase::InputToOutput(int inputFrame) const {
    const int64_t f = inputFrame;
    return static_cast<int>(f / step_ * phases_ + f % step_ * phases_ / step_);
}
