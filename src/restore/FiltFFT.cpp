#include "restore/FiltFFT.h"

#include <algorithm>
#include <bit>

void LFiltFFT::SetBlkSize(unsigned long B) {
    B_ = B;
    partitions_ = (taps_ + 1 + B - 1) / B;
    const unsigned long bins = B + 1;
    const unsigned long later = partitions_ - 1;
    ringMask_ = std::bit_ceil(partitions_) - 1;
    ringPos_ = 0;
    inPos_ = 0;

    part0_.assign(B, 0.0);
    partsRe_.assign(later * bins, 0.0);
    partsIm_.assign(later * bins, 0.0);
    ringRe_.assign((ringMask_ + 1) * bins, 0.0);
    ringIm_.assign((ringMask_ + 1) * bins, 0.0);
    accRe_.assign(2 * B, 0.0);
    accIm_.assign(2 * B, 0.0);
    workRe_.assign(2 * B, 0.0);
    workIm_.assign(2 * B, 0.0);
    input_.assign(2 * B, 0.0);
    fft_ = std::make_unique<LFFT>(static_cast<unsigned long>(std::countr_zero(2 * B)));
}

void LFiltFFT::SetCoeff(const double* coeffs, unsigned long lastIndex) {
    const unsigned long bins = B_ + 1;
    for (unsigned long j = 0; j < B_; ++j)
        part0_[B_ - 1 - j] = j <= lastIndex ? coeffs[j] : 0.0;

    // The forward transform scales by 1/2B; the factor 2B here undoes it, so that the product
    // with a (scaled) input spectrum transforms back to the plain convolution.
    const double scale = 2.0 * static_cast<double>(B_);
    for (unsigned long p = 1; p < partitions_; ++p) {
        std::fill(workRe_.begin(), workRe_.end(), 0.0);
        std::fill(workIm_.begin(), workIm_.end(), 0.0);
        for (unsigned long j = 0; j < B_ && p * B_ + j <= lastIndex; ++j)
            workRe_[j] = coeffs[p * B_ + j] * scale;
        fft_->DoFFT(workRe_.data(), workIm_.data());
        std::copy_n(workRe_.begin(), bins, partsRe_.begin() + (p - 1) * bins);
        std::copy_n(workIm_.begin(), bins, partsIm_.begin() + (p - 1) * bins);
    }
}

int LFiltFFT::Step(int x) {
    input_[B_ + inPos_] = x;

    // Direct part over the last B inputs: input_[inPos + 1 .. inPos + B] in time order.
    const double* in = input_.data() + inPos_ + 1;
    const double* c = part0_.data();
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
    unsigned long j = 0;
    for (; j + 4 <= B_; j += 4) {
        s0 += c[j] * in[j];
        s1 += c[j + 1] * in[j + 1];
        s2 += c[j + 2] * in[j + 2];
        s3 += c[j + 3] * in[j + 3];
    }
    for (; j < B_; ++j)
        s0 += c[j] * in[j];

    const double y = (s0 + s1) + (s2 + s3) + accRe_[B_ + inPos_];
    if (++inPos_ == B_) EndOfBlock();
    return static_cast<int>(std::clamp(y, -2147483648.0, 2147483647.0));
}

void LFiltFFT::EndOfBlock() {
    const unsigned long bins = B_ + 1;
    inPos_ = 0;
    if (partitions_ < 2) {
        std::copy_n(input_.begin() + B_, B_, input_.begin());
        return;
    }

    std::copy(input_.begin(), input_.end(), workRe_.begin());
    std::fill(workIm_.begin(), workIm_.end(), 0.0);
    fft_->DoFFT(workRe_.data(), workIm_.data());
    ringPos_ = (ringPos_ + 1) & ringMask_;
    double* newRe = ringRe_.data() + ringPos_ * bins;
    double* newIm = ringIm_.data() + ringPos_ * bins;
    std::copy_n(workRe_.begin(), bins, newRe);
    std::copy_n(workIm_.begin(), bins, newIm);

    // Partition p applies to the input spectrum of p - 1 blocks before the newest.
    for (unsigned long k = 0; k < bins; ++k) {
        accRe_[k] = newRe[k] * partsRe_[k] - newIm[k] * partsIm_[k];
        accIm_[k] = newRe[k] * partsIm_[k] + newIm[k] * partsRe_[k];
    }
    for (unsigned long p = 2; p < partitions_; ++p) {
        const unsigned long slot = (ringPos_ - (p - 1)) & ringMask_;
        const double* xr = ringRe_.data() + slot * bins;
        const double* xi = ringIm_.data() + slot * bins;
        const double* cr = partsRe_.data() + (p - 1) * bins;
        const double* ci = partsIm_.data() + (p - 1) * bins;
        for (unsigned long k = 0; k < bins; ++k) {
            accRe_[k] += xr[k] * cr[k] - xi[k] * ci[k];
            accIm_[k] += xr[k] * ci[k] + xi[k] * cr[k];
        }
    }
    for (unsigned long k = bins; k < 2 * B_; ++k) {
        accRe_[k] = accRe_[2 * B_ - k];
        accIm_[k] = -accIm_[2 * B_ - k];
    }
    fft_->DoInverseFFT(accRe_.data(), accIm_.data());

    std::copy_n(input_.begin() + B_, B_, input_.begin());
}

void LFiltFFT::Initialize(const int* input, int frames, int stride) {
    for (int i = 0; i < frames; ++i)
        Step(input[static_cast<long>(i) * stride]);
}

void LFiltFFT::ApplyFilter(int* out, const int* in, int frames, int stride) {
    for (int i = 0; i < frames; ++i)
        out[static_cast<long>(i) * stride] = Step(in[static_cast<long>(i) * stride]);
}
