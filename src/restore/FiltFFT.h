#pragma once

#include "restore/FFT.h"

#include <memory>
#include <vector>

// A long FIR filter with no added latency, by uniformly partitioned overlap-save convolution:
// the coefficients are cut into partitions of B, and each 2B-point spectrum of an input block
// (this block and the previous one) is multiplied by the spectra of the partitions.
//
// A block whose inputs are all at hand when it is filtered is done wholly in the frequency
// domain, eight blocks at a time side by side. A block that is filtered sample by sample (at the
// ends of a call) takes its first partition directly in the time domain, so every output is
// ready as soon as its input sample is; the rest of it comes from the spectra of older blocks.
//
// Use: SetTaps, SetBlkSize, SetCoeff, optionally Initialize, then ApplyFilter.
class LFiltFFT {
public:
    // Blocks transformed side by side.
    static constexpr int kLanes = 8;

    LFiltFFT() = default;

    // Index of the last coefficient in use; taps + 1 coefficients are convolved.
    void SetTaps(unsigned long taps) { taps_ = taps; }
    // Allocates the partitions, the transform and the delay line; B must be a power of two of
    // at least 2.
    void SetBlkSize(unsigned long B);
    // Loads coefficients 0..lastIndex (those beyond lastIndex count as 0).
    void SetCoeff(const double* coeffs, unsigned long lastIndex);

    // Runs the filter over one channel of interleaved data and discards the output, to fill the
    // filter's history. When `frames` covers the filter's length, the history before them is
    // taken as silence (it cannot reach any later output).
    void Initialize(const int* input, int frames, int stride);
    // Filters one channel of interleaved data: reads in[i * stride], writes out[i * stride].
    // `out` may be `in`.
    void ApplyFilter(int* out, const int* in, int frames, int stride);

private:
    // Filters (or with no `out`, only takes in) `frames` samples, block by block.
    void Run(int* out, const int* in, int frames, int stride);
    // Takes one input sample; with `wanted`, returns the output for it.
    double Step(double x, bool wanted);
    // Filters up to kLanes whole blocks starting at a block boundary.
    void RunBlocks(int* out, const int* in, int blocks, int stride);
    // Time-domain output of the older blocks' partitions for the current block.
    void PrepareTail();
    // Appends the spectrum of the block in input_ to the history.
    void EndOfBlock();
    // Makes room for `count` more spectra at the end of the history.
    void ReserveSpectra(unsigned long count);

    std::vector<double> part0_; // coefficients 0..B-1, stored in reverse order
    // Spectra (bins 0..B) of all partitions, bin-major: bin k of partition p at k * P + p.
    // They are the transforms of the coefficients scaled for the doubled, unscaled input
    // spectra, so that the products transform back to the plain convolution.
    std::vector<double> partsRe_;
    std::vector<double> partsIm_;
    // Spectra of the latest input blocks, oldest first, bin-major: bin k of block s at
    // k * historyStride_ + s. Holds at least the P - 1 blocks before the current one.
    std::vector<double> historyRe_;
    std::vector<double> historyIm_;
    unsigned long historyStride_ = 0;
    unsigned long historyLen_ = 0;
    // Output of the older blocks' partitions for the current block, when it runs sample by
    // sample.
    std::vector<double> tail_;
    bool tailReady_ = false;
    // Transform scratch (B rows of kLanes) and the product spectra (B + 1 rows of kLanes).
    std::vector<double> workRe_;
    std::vector<double> workIm_;
    std::vector<double> productRe_;
    std::vector<double> productIm_;
    std::vector<double> input_; // the previous input block followed by the current one
    std::unique_ptr<LFFT> fft_;
    unsigned long inPos_ = 0;
    unsigned long taps_ = 0;
    unsigned long B_ = 0;
    unsigned long partitions_ = 0;
};
