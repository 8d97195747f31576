#include "restore/NoiseGates.h"

#include "sound/AudioBuffer.h"
#include "sound/FixedQ24.h"
#include "support/BufferSource.h"
#include "support/RecordingProgress.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr int kBlock = 1470; // frames per gain block at 44.1 kHz

// Tones in every band at -8 dB or so each, loud enough to open all four gates fully: 20 Hz
// (band 0 after the first stage's high-pass), 700, 1800 and 6000 Hz. Every channel carries the
// same mix.
std::vector<int> Chord(int frames, int channels, double scale = 1.0) {
    const double frequencies[] = {20, 700, 1800, 6000};
    const double w = 2 * std::numbers::pi / kRate;
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int f = 0; f < frames; ++f) {
        double value = 0;
        for (double frequency : frequencies)
            value += 60000 * scale * std::sin(w * frequency * f);
        for (int c = 0; c < channels; ++c)
            samples[static_cast<size_t>(f) * channels + c] = static_cast<int>(std::lround(value));
    }
    return samples;
}

// Repeatable uniform hiss in [-amplitude, amplitude], about -54 dB at 256.
std::vector<int> Hiss(int frames, int channels, int amplitude = 256) {
    uint32_t state = 7;
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int& s : samples) {
        state = state * 1664525u + 1013904223u;
        s = static_cast<int>((state >> 8) % static_cast<uint32_t>(2 * amplitude + 1)) - amplitude;
    }
    return samples;
}

LSoundSource Gates(std::vector<int> samples, int channels, int rate = kRate, int level = -36) {
    LSoundSource source =
        MakeBufferSource(std::move(samples), rate, static_cast<unsigned char>(channels));
    return LSPNoiseGates(static_cast<int8_t>(level)).OpenSource(source);
}

const LSRCNoiseGates& Stage(const LSoundSource& source) {
    return dynamic_cast<const LSRCNoiseGates&>(*source);
}

// The first stage of the band split as a transfer function: a one-pole low-pass with
// coefficient a = coef / 256 taken away from the input, H(z) = 1 - a z^-1 / (1 - (1 - a) z^-1).
std::complex<double> FirstStage(double frequency, double a) {
    const std::complex<double> z1 = std::polar(1.0, -2 * std::numbers::pi * frequency / kRate);
    return 1.0 - a * z1 / (1.0 - (1 - a) * z1);
}

TEST(NoiseGates, ThresholdsBlockLengthCoefficientsAndSilence) {
    const auto thresholds = [](int level) {
        const LSPNoiseGates gates(static_cast<int8_t>(level));
        return std::vector<int>(std::begin(gates.thresholds), std::end(gates.thresholds));
    };
    EXPECT_EQ(thresholds(-36), (std::vector<int>{-33, -36, -39, -36}));
    EXPECT_EQ(thresholds(125), (std::vector<int>{127, 125, 122, 125}));
    EXPECT_EQ(thresholds(-126), (std::vector<int>{-123, -126, -127, -126}));

    // A thirtieth of a second, within 20..8192 frames.
    const auto blockLen = [](int rate) { return Stage(Gates({}, 1, rate)).GetBlockLen(); };
    EXPECT_EQ(blockLen(44100), 1470);
    EXPECT_EQ(blockLen(8000), 266);
    EXPECT_EQ(blockLen(600), 20);
    EXPECT_EQ(blockLen(245760), 8192);

    const LSoundSource gates = Gates({}, 2);
    const int expected[] = {1, 14, 37, 79};
    for (int band = 0; band < LSRCNoiseGates::kBands; ++band)
        EXPECT_EQ(Stage(gates).GetCoef(band), expected[band]) << band;

    // Digital silence keeps every gate shut and stays silent.
    LSoundSource silence = Gates(std::vector<int>(kRate, 0), 2);
    EXPECT_EQ(ReadAll(silence, kRate / 2, 1000), std::vector<int>(kRate, 0));
    for (int band = 0; band < LSRCNoiseGates::kBands; ++band)
        EXPECT_EQ(Stage(silence).GetGain(band), 0);
}

// With every gate open the bands add up to the input less the first stage's low-pass part:
// a first-order high-pass near 27 Hz that takes about 4.6 dB off a 20 Hz tone.
TEST(NoiseGates, OpenGatesPassTheInputThroughTheFirstStageHighPass) {
    const int frames = 2 * kRate;
    LSoundSource gates = Gates(Chord(frames, 2), 2);
    const std::vector<int> output = ReadAll(gates, frames - 2 * kBlock, 1000);
    for (int band = 0; band < LSRCNoiseGates::kBands; ++band)
        EXPECT_EQ(Stage(gates).GetGain(band), kQ24One) << band;

    // One second (a whole number of cycles of every tone) after the filters have settled.
    const std::vector<double> left = ChannelValues(output, 2, 0, kRate / 2, kRate);
    const double a = Stage(gates).GetCoef(0) / 256.0;
    EXPECT_NEAR(DB(ToneAmplitude(left, kRate, 20) / 60000), -4.6, 0.1);
    for (double frequency : {20.0, 700.0, 1800.0, 6000.0}) {
        const std::complex<double> expected = 60000.0 * FirstStage(frequency, a);
        const std::complex<double> measured =
            ToneFit(left, kRate, frequency) * std::complex(0.0, 1.0);
        EXPECT_NEAR(std::abs(measured - expected), 0, 30) << frequency;
    }
    EXPECT_EQ(ChannelValues(output, 2, 1, 0, frames - 2 * kBlock),
              ChannelValues(output, 2, 0, 0, frames - 2 * kBlock));
}

// A gate opens in proportion to how far its band's peak exceeds the threshold: the gain is
// 2^22 x (peak / threshold amplitude - 1), closed at the threshold and open at five times it.
// A 10 kHz tone falls mostly in band 3.
TEST(NoiseGates, GateOpensInProportionAboveTheThreshold) {
    const auto gain = [](double amplitude, int level) {
        LSoundSource tone = MakeSineSource(kRate, 1, 10000, amplitude, kRate);
        LSoundSource gates = LSPNoiseGates(static_cast<int8_t>(level)).OpenSource(tone);
        ReadFrames(gates, 5 * kBlock);
        return Stage(gates).GetGain(3);
    };
    const auto amplitude = [](double db) { return 131072 * std::pow(10, db / 20); };
    constexpr double kQuarter = 1 << 22;

    const int at27 = gain(amplitude(-27), -36);
    const int at24 = gain(amplitude(-24), -36);
    ASSERT_GT(at27, 0);
    ASSERT_LT(at24, kQ24One);
    EXPECT_NEAR((at24 + kQuarter) / (at27 + kQuarter), std::pow(10, 3 / 20.0), 0.005);

    // Where the gate starts to open, from the partly open point.
    const double closedUpTo = amplitude(-27) * kQuarter / (at27 + kQuarter);
    EXPECT_EQ(gain(closedUpTo * 0.97, -36), 0);
    EXPECT_GT(gain(closedUpTo * 1.05, -36), 0);
    EXPECT_LT(gain(closedUpTo * 5 * 0.97, -36), kQ24One);
    EXPECT_EQ(gain(closedUpTo * 5 * 1.03, -36), kQ24One);
    EXPECT_EQ(gain(amplitude(-6), -36), kQ24One);

    // A threshold 6 dB higher needs a tone 6 dB louder.
    EXPECT_NEAR(gain(amplitude(-21), -30), at27, kQ24One / 200);
}

// Mono, stereo and wider streams have their own output loops; the same audio in every
// channel must come out the same.
TEST(NoiseGates, ChannelLayoutsGiveTheSameOutput) {
    const int frames = 20 * kBlock;
    std::vector<int> mono = Hiss(frames, 1, 3000);
    const std::vector<int> chord = Chord(frames / 2, 1, 0.3);
    for (int f = 0; f < frames / 2; ++f)
        mono[f + frames / 4] += chord[f];
    LSoundSource monoGates = Gates(mono, 1);
    const std::vector<int> expected = ReadAll(monoGates, frames, 999);
    for (int channels : {2, 3}) {
        std::vector<int> wide;
        for (int s : mono)
            wide.insert(wide.end(), channels, s);
        LSoundSource gates = Gates(wide, channels);
        const std::vector<int> output = ReadAll(gates, frames, 999);
        for (int c = 0; c < channels; ++c)
            EXPECT_EQ(ChannelValues(output, channels, c, 0, frames),
                      ChannelValues(expected, 1, 0, 0, frames))
                << channels << " channels, channel " << c;
    }
}

// Hiss, then a loud passage, then hiss again, each a whole number of blocks. A gate opens fully
// during the block before the sound (it looks one block ahead); after the sound it closes half
// the remaining way per block, the lowest band a quarter.
TEST(NoiseGates, GatesOpenAheadOfTheSoundAndCloseGradually) {
    const int hissBlocks = 4;
    const int loudBlocks = 8;
    const int totalBlocks = 30;
    std::vector<int> input = Hiss(totalBlocks * kBlock, 2);
    const std::vector<int> chord = Chord(loudBlocks * kBlock, 2);
    for (size_t i = 0; i < chord.size(); ++i)
        input[hissBlocks * kBlock * 2 + i] += chord[i];
    LSoundSource gates = Gates(input, 2);
    const LSRCNoiseGates& stage = Stage(gates);

    // Gains at the end of each block of output.
    std::vector<std::vector<int>> gains;
    std::vector<int> output;
    std::vector<int> block(kBlock * 2);
    for (int b = 0; b < totalBlocks - 2; ++b) {
        gates->Read(block.data(), kBlock);
        output.insert(output.end(), block.begin(), block.end());
        gains.emplace_back();
        for (int band = 0; band < LSRCNoiseGates::kBands; ++band)
            gains.back().push_back(stage.GetGain(band));
    }

    for (int band = 0; band < LSRCNoiseGates::kBands; ++band) {
        SCOPED_TRACE(band);
        for (int b = 0; b < hissBlocks - 1; ++b)
            EXPECT_EQ(gains[b][band], 0);
        EXPECT_NEAR(gains[hissBlocks - 1][band], kQ24One, kBlock);
        const int lastLoud = hissBlocks + loudBlocks - 1;
        EXPECT_NEAR(gains[lastLoud - 1][band], kQ24One, kBlock);
        // The band filters ring on into the first block of hiss; from the block before the
        // second one on, every target is closed.
        const double keep = band == 0 ? 0.75 : 0.5;
        for (int b = lastLoud + 1; b < totalBlocks - 2; ++b)
            EXPECT_NEAR(gains[b][band], gains[b - 1][band] * keep, kBlock) << "block " << b;
    }

    // The closed gates leave far less than the hiss that went in (only the rounding of the
    // products, a unit or two).
    const int tail = (totalBlocks - 6) * kBlock;
    const double hissIn = RMS(ChannelValues(input, 2, 0, tail, 4 * kBlock));
    const double hissOut = RMS(ChannelValues(output, 2, 0, tail, 4 * kBlock));
    EXPECT_LT(hissOut, hissIn / 30);
}

TEST(NoiseGates, ChainStepWrapsTheSourceAtTheClampedLevelAndSeeks) {
    RecordingProgress progress;
    LSoundSource source = MakeBufferSource(Chord(10 * kBlock, 2), kRate, 2);
    EXPECT_EQ(ProcessNoiseReduction(progress, source, -36), PROCESS_DONE);
    ASSERT_EQ(progress.statuses.size(), 1u);
    EXPECT_EQ(progress.statuses[0].first, "Noise Reduction");
    EXPECT_EQ(progress.statuses[0].second, 0);
    ASSERT_NE(dynamic_cast<LSRCNoiseGates*>(source.Get()), nullptr);
    EXPECT_EQ(source->GetPositionSample(), 0);
    ReadAll(source, 1000);
    EXPECT_EQ(source->GetPositionSample(), 1000);

    // After a seek the stage starts afresh there, as a new stage on a source at that position.
    source->Seek(5000);
    EXPECT_EQ(source->GetPositionSample(), 5000);
    const std::vector<int> afterSeek = ReadAll(source, 6000, 700);
    LSoundSource fresh = MakeBufferSource(Chord(10 * kBlock, 2), kRate, 2);
    fresh->Seek(5000);
    LSoundSource freshGates = LSPNoiseGates(-36).OpenSource(fresh);
    EXPECT_EQ(afterSeek, ReadAll(freshGates, 6000));

    // A level past the decibel range is held at its end rather than wrapping around: at
    // +127 dB every gate stays shut, at -127 dB every gate opens.
    const auto peakThrough = [&](int level) {
        LSoundSource loud = MakeBufferSource(Chord(10 * kBlock, 2), kRate, 2);
        EXPECT_EQ(ProcessNoiseReduction(progress, loud, level), PROCESS_DONE);
        const std::vector<int> output = ReadAll(loud, 6 * kBlock);
        return GetBufferPeak(output.data(), 6 * kBlock, 2);
    };
    EXPECT_EQ(peakThrough(300), 0);
    EXPECT_GT(peakThrough(-300), 200000);

    LSoundSource broken;
    LSoundSourceBase* error = broken.Get();
    EXPECT_EQ(ProcessNoiseReduction(progress, broken, -36), PROCESS_FAILED);
    EXPECT_EQ(broken.Get(), error);
    EXPECT_EQ(LSPNoiseGates(-36).OpenSource(broken).Get(), error);
}

} // namespace
