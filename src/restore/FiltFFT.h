#pragma once

#include "restore/FFT.h"

#include <memory>
#include <vector>

// A long FIR filter with no added latency: the first block of B coefficients is applied directly
// in the time domain, the rest by uniformly partitioned overlap-save convolution in the frequency
// domain, one 2B-point transform pair per B input samples.
//
// Use: SetTaps, SetBlkSize, SetCoeff, optionally Initialize, then ApplyFilter.
class LFiltFFT {
public:
    LFiltFFT() = default;

    // Index of the last coefficient in use; taps + 1 coefficients are convolved.
    void SetTaps(unsigned long taps) { taps_ = taps; }
    // Allocates the partitions, the transform and the delay line; B must be a power of two.
    void SetBlkSize(unsigned long B);
    // Loads coefficients 0..lastIndex (those beyond lastIndex count as 0).
    void SetCoeff(const double* coeffs, unsigned long lastIndex);

    // Runs the filter over one channel of interleaved data and discards the output, to fill the
    // filter's history.
    void Initialize(const int* input, int frames, int stride);
    // Filters one channel of interleaved data: reads in[i * stride], writes out[i * stride].
    void ApplyFilter(int* out, const int* in, int frames, int stride);

private:
    // Takes one input sample and returns the output for it.
    int Step(int x);
    // Transforms the block just completed and prepares the frequency-domain output of the next.
    void EndOfBlock();

    std::vector<double> part0_;   // coefficients 0..B-1, stored in reverse order
    std::vector<double> partsRe_; // spectra (bins 0..B) of partitions 1..P-1, partition-major
    std::vector<double> partsIm_;
    std::vector<double> ringRe_; // spectra (bins 0..B) of the latest input blocks
    std::vector<double> ringIm_;
    unsigned long ringMask_ = 0;
    unsigned long ringPos_ = 0;  // slot of the newest input spectrum
    std::vector<double> accRe_;  // next block's output: spectrum, then after the inverse
    std::vector<double> accIm_;  // transform its time-domain samples at B..2B-1
    std::vector<double> workRe_; // transform scratch
    std::vector<double> workIm_;
    std::vector<double> input_; // the previous input block followed by the current one
    std::unique_ptr<LFFT> fft_;
    unsigned long inPos_ = 0;
    unsigned long taps_ = 0;
    unsigned long B_ = 0;
    unsigned long partitions_ = 0;
};
