#include "restore/FFT.h"
#include "restore/FiltFFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

TEST(FFT, ForwardTransformOfKnownSignalIsScaledByOneOverN) {
    // e^(+2 pi i 3n / 16) is all in bin 3 (not bin 13) with weight 1 after the 1/N scaling.
    LFFT fft(4);
    std::vector<double> re(16), im(16);
    for (int n = 0; n < 16; ++n) {
        re[n] = std::cos(2 * std::numbers::pi * 3 * n / 16);
        im[n] = std::sin(2 * std::numbers::pi * 3 * n / 16);
    }
    fft.DoFFT(re.data(), im.data());
    for (int k = 0; k < 16; ++k) {
        EXPECT_NEAR(re[k], k == 3 ? 1.0 : 0.0, 1e-12) << k;
        EXPECT_NEAR(im[k], 0.0, 1e-12) << k;
    }
}

namespace {

// The same FIR filter evaluated directly, truncated toward zero like the partitioned one.
std::vector<int> DirectFir(const std::vector<double>& coeffs, const std::vector<int>& input) {
    std::vector<int> out(input.size());
    for (size_t n = 0; n < input.size(); ++n) {
        double sum = 0;
        for (size_t j = 0; j < coeffs.size() && j <= n; ++j)
            sum += coeffs[j] * input[n - j];
        out[n] = static_cast<int>(sum);
    }
    return out;
}

} // namespace

TEST(FiltFFT, PartitionedConvolutionMatchesTheDirectFilterWithoutLatency) {
    // 301 coefficients in blocks of 16: a direct part and 18 partitions, the last one partial.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coeff(-0.5, 0.5);
    std::uniform_int_distribution<int> sample(-500000, 500000);
    std::vector<double> coeffs(301);
    for (double& c : coeffs)
        c = coeff(random);
    // Interleaved stereo; the filter runs on channel 1 only.
    const int frames = 2000;
    std::vector<int> stereo(2 * frames), mono(frames);
    for (int i = 0; i < frames; ++i) {
        stereo[2 * i] = 123;
        stereo[2 * i + 1] = mono[i] = sample(random);
    }
    const std::vector<int> expected = DirectFir(coeffs, mono);

    LFiltFFT filter;
    filter.SetTaps(300);
    filter.SetBlkSize(16);
    filter.SetCoeff(coeffs.data(), 300);
    // The first 500 frames only fill the history; the rest is run in uneven pieces that cross
    // block boundaries.
    filter.Initialize(stereo.data() + 1, 500, 2);
    std::vector<int> out(2 * frames, 0);
    int done = 500;
    for (int piece : {1, 15, 16, 17, 200, 1251}) {
        filter.ApplyFilter(out.data() + 2 * done + 1, stereo.data() + 2 * done + 1, piece, 2);
        done += piece;
    }
    ASSERT_EQ(done, frames);
    for (int i = 500; i < frames; ++i) {
        ASSERT_NEAR(out[2 * i + 1], expected[i], 1) << i;
        ASSERT_EQ(out[2 * i], 0) << i; // the other channel is left alone
    }
}
