#include "restore/FFT.h"

#include <cmath>
#include <numbers>
#include <utility>

LFFT::LFFT(unsigned long order)
    : order_(order), N_(1ul << order), bitReverse_(N_), cos_(N_), sin_(N_) {
    for (unsigned long k = 0; k < N_; ++k) {
        unsigned long reversed = 0;
        for (unsigned long bit = 0; bit < order_; ++bit)
            reversed |= ((k >> bit) & 1) << (order_ - 1 - bit);
        bitReverse_[k] = reversed;
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(k) / N_;
        cos_[k] = std::cos(angle);
        sin_[k] = std::sin(angle);
    }
}

void LFFT::Permute(double* re, double* im) const {
    for (unsigned long k = 0; k < N_; ++k) {
        const unsigned long r = bitReverse_[k];
        if (r > k) {
            std::swap(re[k], re[r]);
            std::swap(im[k], im[r]);
        }
    }
}

void LFFT::Butterflies(double* re, double* im, double sign) const {
    for (unsigned long half = 1; half < N_; half <<= 1) {
        const unsigned long step = N_ / (half << 1);
        for (unsigned long start = 0; start < N_; start += half << 1) {
            for (unsigned long j = 0; j < half; ++j) {
                const double wr = cos_[j * step];
                const double wi = sign * sin_[j * step];
                const unsigned long a = start + j;
                const unsigned long b = a + half;
                const double tr = re[b] * wr - im[b] * wi;
                const double ti = re[b] * wi + im[b] * wr;
                re[b] = re[a] - tr;
                im[b] = im[a] - ti;
                re[a] += tr;
                im[a] += ti;
            }
        }
    }
}

void LFFT::DoFFT(double* re, double* im) const {
    Permute(re, im);
    Butterflies(re, im, -1.0);
    const double scale = 1.0 / static_cast<double>(N_);
    for (unsigned long k = 0; k < N_; ++k) {
        re[k] *= scale;
        im[k] *= scale;
    }
}

void LFFT::DoInverseFFT(double* re, double* im) const {
    Permute(re, im);
    Butterflies(re, im, 1.0);
}
