#include "restore/FiltFFT.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

int ToSample(double y) {
    return static_cast<int>(std::clamp(y, -2147483648.0, 2147483647.0));
}

// What one run of whole blocks works on.
struct BlockRun {
    const LFFT* fft;
    unsigned long B;
    const int* in;
    int* out; // null when the output is not wanted
    int stride;
    int blocks;
    double* previous; // the block before the first one; left holding the last one
    double* workRe;
    double* workIm;
    double* historyRe; // the new spectra go to slots first..first + Lanes - 1
    double* historyIm;
    unsigned long historyStride;
    unsigned long first;
    const double* partsRe;
    const double* partsIm;
    unsigned long partitions;
    double* productRe;
    double* productIm;
};

// The spectra of Count groups of lanes of type V, standing in history slots first, first + 1,
// ..., multiplied by the partitions from `firstPartition` on and summed per lane: partition p
// goes with the spectrum p slots earlier.
template <typename V, int Count>
[[gnu::always_inline]] inline void
MultiplyPartitions(const double* historyRe, const double* historyIm, unsigned long historyStride,
                   unsigned long first, const double* partsRe, const double* partsIm,
                   unsigned long partitions, unsigned long firstPartition, unsigned long bins,
                   double* productRe, double* productIm) {
    constexpr int kWidth = sizeof(V) / sizeof(double);
    for (unsigned long k = 0; k < bins; ++k) {
        const double* xr = historyRe + k * historyStride + first;
        const double* xi = historyIm + k * historyStride + first;
        const double* hr = partsRe + k * partitions;
        const double* hi = partsIm + k * partitions;
        V accRe[Count] = {};
        V accIm[Count] = {};
        for (unsigned long p = firstPartition; p < partitions; ++p) {
            const double cr = hr[p];
            const double ci = hi[p];
            for (int v = 0; v < Count; ++v) {
                V ar, ai;
                std::memcpy(&ar, xr - p + v * kWidth, sizeof ar);
                std::memcpy(&ai, xi - p + v * kWidth, sizeof ai);
                accRe[v] += ar * cr - ai * ci;
                accIm[v] += ar * ci + ai * cr;
            }
        }
        for (int v = 0; v < Count; ++v) {
            std::memcpy(productRe + (k * Count + v) * kWidth, &accRe[v], sizeof accRe[v]);
            std::memcpy(productIm + (k * Count + v) * kWidth, &accIm[v], sizeof accIm[v]);
        }
    }
}

// Filters run.blocks (at most Lanes) whole blocks, one per lane: packs each block with the one
// before it for the real transform, keeps the spectra, and when the output is wanted multiplies
// them by all partitions and transforms back.
template <typename V> [[gnu::always_inline]] inline void FilterBlocks(const BlockRun& run) {
    constexpr int Lanes = LFiltFFT::kLanes;
    const unsigned long B = run.B;
    const unsigned long rows = B; // N/2 rows of the 2B-point real transform
    for (int l = 0; l < Lanes; ++l) {
        double* re = run.workRe + l;
        double* im = run.workIm + l;
        if (l >= run.blocks) {
            for (unsigned long n = 0; n < rows; ++n)
                re[n * Lanes] = im[n * Lanes] = 0.0;
            continue;
        }
        const int* current = run.in + static_cast<long>(l) * B * run.stride;
        if (l == 0) {
            for (unsigned long n = 0; n < B / 2; ++n) {
                re[n * Lanes] = run.previous[2 * n];
                im[n * Lanes] = run.previous[2 * n + 1];
            }
        } else {
            const int* before = current - static_cast<long>(B) * run.stride;
            for (unsigned long n = 0; n < B / 2; ++n) {
                re[n * Lanes] = before[2 * n * run.stride];
                im[n * Lanes] = before[(2 * n + 1) * run.stride];
            }
        }
        for (unsigned long n = 0; n < B / 2; ++n) {
            re[(B / 2 + n) * Lanes] = current[2 * n * run.stride];
            im[(B / 2 + n) * Lanes] = current[(2 * n + 1) * run.stride];
        }
    }
    const int* last = run.in + static_cast<long>(run.blocks - 1) * B * run.stride;
    for (unsigned long n = 0; n < B; ++n)
        run.previous[n] = last[n * run.stride];

    run.fft->RealForward<V, Lanes>(run.workRe, run.workIm, run.historyRe + run.first,
                                   run.historyIm + run.first, run.historyStride);
    if (!run.out) return;

    MultiplyPartitions<V, Lanes * sizeof(double) / sizeof(V)>(
        run.historyRe, run.historyIm, run.historyStride, run.first, run.partsRe, run.partsIm,
        run.partitions, 0, B + 1, run.productRe, run.productIm);
    run.fft->RealInverse<V, Lanes>(run.productRe, run.productIm, Lanes, run.workRe, run.workIm);

    // Output sample n of a block is sample B + n of its circular convolution.
    for (int l = 0; l < run.blocks; ++l) {
        int* out = run.out + static_cast<long>(l) * B * run.stride;
        const double* re = run.workRe + (B / 2) * Lanes + l;
        const double* im = run.workIm + (B / 2) * Lanes + l;
        for (unsigned long n = 0; n < B / 2; ++n) {
            out[2 * n * run.stride] = ToSample(re[n * Lanes]);
            out[(2 * n + 1) * run.stride] = ToSample(im[n * Lanes]);
        }
    }
}

__attribute__((target("avx512f"))) void FilterLanesAvx512(const BlockRun& run) {
    FilterBlocks<LFFTLanes8>(run);
}

__attribute__((target("avx2"))) void FilterLanesAvx2(const BlockRun& run) {
    FilterBlocks<LFFTLanes4>(run);
}

void FilterLanesBaseline(const BlockRun& run) {
    FilterBlocks<LFFTLanes2>(run);
}

// The variant built for the widest vectors the processor has; all give the same samples.
using FilterLanesFunction = void (*)(const BlockRun&);

FilterLanesFunction ChooseFilterLanes() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f")) return &FilterLanesAvx512;
    if (__builtin_cpu_supports("avx2")) return &FilterLanesAvx2;
    return &FilterLanesBaseline;
}

} // namespace

void LFiltFFT::SetBlkSize(unsigned long B) {
    B_ = B;
    partitions_ = (taps_ + 1 + B - 1) / B;
    const unsigned long bins = B + 1;
    inPos_ = 0;
    tailReady_ = false;

    part0_.assign(B, 0.0);
    partsRe_.assign(bins * partitions_, 0.0);
    partsIm_.assign(bins * partitions_, 0.0);
    // Room for four runs of lanes before the history is moved back.
    historyStride_ = partitions_ - 1 + 4 * kLanes;
    historyRe_.assign(bins * historyStride_, 0.0);
    historyIm_.assign(bins * historyStride_, 0.0);
    // The input starts after silence.
    historyLen_ = partitions_ - 1;
    tail_.assign(B, 0.0);
    workRe_.assign(B * kLanes, 0.0);
    workIm_.assign(B * kLanes, 0.0);
    productRe_.assign(bins * kLanes, 0.0);
    productIm_.assign(bins * kLanes, 0.0);
    input_.assign(2 * B, 0.0);
    fft_ = std::make_unique<LFFT>(static_cast<unsigned long>(std::countr_zero(2 * B)));
}

void LFiltFFT::SetCoeff(const double* coeffs, unsigned long lastIndex) {
    const unsigned long bins = B_ + 1;
    for (unsigned long j = 0; j < B_; ++j)
        part0_[B_ - 1 - j] = j <= lastIndex ? coeffs[j] : 0.0;

    // The input spectra are unscaled and doubled (2 DFT(x)); the inverse is unscaled. Half the
    // 1/2B-scaled transform of the coefficients makes the product transform back to the plain
    // convolution. All these factors are powers of two and change no digit.
    std::vector<double> re(2 * B_), im(2 * B_);
    for (unsigned long p = 0; p < partitions_; ++p) {
        std::fill(re.begin(), re.end(), 0.0);
        std::fill(im.begin(), im.end(), 0.0);
        for (unsigned long j = 0; j < B_ && p * B_ + j <= lastIndex; ++j)
            re[j] = coeffs[p * B_ + j] * 0.5;
        fft_->DoFFT(re.data(), im.data());
        // Bins 0 and B of a real sequence are real.
        im[0] = im[B_] = 0.0;
        for (unsigned long k = 0; k < bins; ++k) {
            partsRe_[k * partitions_ + p] = re[k];
            partsIm_[k * partitions_ + p] = im[k];
        }
    }
}

void LFiltFFT::ReserveSpectra(unsigned long count) {
    if (historyLen_ + count <= historyStride_) return;
    // Keep the P - 1 newest spectra, at the start of each bin's row.
    const unsigned long keep = partitions_ - 1;
    const unsigned long from = historyLen_ - keep;
    for (unsigned long k = 0; k <= B_; ++k) {
        double* re = historyRe_.data() + k * historyStride_;
        double* im = historyIm_.data() + k * historyStride_;
        std::memmove(re, re + from, keep * sizeof(double));
        std::memmove(im, im + from, keep * sizeof(double));
    }
    historyLen_ = keep;
}

void LFiltFFT::EndOfBlock() {
    ReserveSpectra(1);
    for (unsigned long n = 0; n < B_; ++n) {
        workRe_[n] = input_[2 * n];
        workIm_[n] = input_[2 * n + 1];
    }
    fft_->RealForward<double, 1>(workRe_.data(), workIm_.data(), historyRe_.data() + historyLen_,
                                 historyIm_.data() + historyLen_, historyStride_);
    ++historyLen_;
    std::copy_n(input_.begin() + B_, B_, input_.begin());
    inPos_ = 0;
    tailReady_ = false;
}

void LFiltFFT::PrepareTail() {
    // The current block would stand in slot historyLen_; partitions 1.. reach back from there.
    MultiplyPartitions<double, 1>(historyRe_.data(), historyIm_.data(), historyStride_, historyLen_,
                                  partsRe_.data(), partsIm_.data(), partitions_, 1, B_ + 1,
                                  productRe_.data(), productIm_.data());
    fft_->RealInverse<double, 1>(productRe_.data(), productIm_.data(), 1, workRe_.data(),
                                 workIm_.data());
    for (unsigned long n = 0; n < B_ / 2; ++n) {
        tail_[2 * n] = workRe_[B_ / 2 + n];
        tail_[2 * n + 1] = workIm_[B_ / 2 + n];
    }
    tailReady_ = true;
}

double LFiltFFT::Step(double x, bool wanted) {
    input_[B_ + inPos_] = x;
    double y = 0.0;
    if (wanted) {
        if (!tailReady_) PrepareTail();
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
        y = (s0 + s1) + (s2 + s3) + tail_[inPos_];
    }
    if (++inPos_ == B_) EndOfBlock();
    return y;
}

void LFiltFFT::RunBlocks(int* out, const int* in, int blocks, int stride) {
    static const FilterLanesFunction filterLanes = ChooseFilterLanes();
    ReserveSpectra(kLanes);
    const BlockRun run{fft_.get(),
                       B_,
                       in,
                       out,
                       stride,
                       blocks,
                       input_.data(),
                       workRe_.data(),
                       workIm_.data(),
                       historyRe_.data(),
                       historyIm_.data(),
                       historyStride_,
                       historyLen_,
                       partsRe_.data(),
                       partsIm_.data(),
                       partitions_,
                       productRe_.data(),
                       productIm_.data()};
    filterLanes(run);
    historyLen_ += static_cast<unsigned long>(blocks);
}

void LFiltFFT::Run(int* out, const int* in, int frames, int stride) {
    const auto B = static_cast<int>(B_);
    for (int i = 0; i < frames;) {
        const long at = static_cast<long>(i) * stride;
        if (inPos_ == 0 && frames - i >= B) {
            const int blocks = std::min(kLanes, (frames - i) / B);
            RunBlocks(out ? out + at : nullptr, in + at, blocks, stride);
            i += blocks * B;
        } else {
            const double y = Step(in[at], out != nullptr);
            if (out) out[at] = ToSample(y);
            ++i;
        }
    }
}

void LFiltFFT::Initialize(const int* input, int frames, int stride) {
    if (frames >= static_cast<long>(taps_)) {
        // Nothing before these samples can reach an output any more: start afresh after
        // silence, with blocks that end where these samples end, so that the filtering that
        // follows runs in whole blocks.
        std::fill(historyRe_.begin(), historyRe_.end(), 0.0);
        std::fill(historyIm_.begin(), historyIm_.end(), 0.0);
        std::fill(input_.begin(), input_.end(), 0.0);
        historyLen_ = partitions_ - 1;
        inPos_ = 0;
        tailReady_ = false;
        const unsigned long silence = (B_ - frames % B_) % B_;
        for (unsigned long i = 0; i < silence; ++i)
            Step(0.0, false);
    }
    Run(nullptr, input, frames, stride);
}

void LFiltFFT::ApplyFilter(int* out, const int* in, int frames, int stride) {
    Run(out, in, frames, stride);
}
