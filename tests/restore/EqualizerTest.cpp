#include "restore/Equalizer.h"

#include "SpeedEqSignals.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

using namespace speedeq_test;

namespace {

// A single sample of the given value at source frame 0, silence elsewhere.
class ImpulseSource : public LSoundSourceBase {
public:
    explicit ImpulseSource(int value) : LSoundSourceBase(44100, 1, 524272), value_(value) {}
    void Read(int* buffer, int frames) override {
        for (int f = 0; f < frames; ++f, ++position_)
            buffer[f] = position_ == 0 ? value_ : 0;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return 1; }
    void Seek(int frame) override { position_ = frame; }

private:
    int value_;
    int position_ = 0;
};

// Reads in uneven blocks so that reads straddle the equaliser's 8192-frame chunks.
std::vector<int> ReadUneven(LSoundSource& source, int frames) {
    std::vector<int> samples(static_cast<size_t>(frames) * source->GetChannels());
    const int blocks[] = {1000, 7000, 8192, 333};
    for (int done = 0, b = 0; done < frames; ++b) {
        const int n = std::min(frames - done, blocks[b % 4]);
        source->Read(samples.data() + static_cast<size_t>(done) * source->GetChannels(), n);
        done += n;
    }
    return samples;
}

// Frequency of bin k of the 4096-point curve at 44.1 kHz.
double BinFrequency(int k) {
    return k * 44100.0 / 4096;
}

} // namespace

TEST(Equalizer, FlatCurvePassesAudioUnchangedWithoutDelay) {
    LSoundSource input = Sine(44100, 2, 1234.5, 400000, 30000);
    LSoundSource eq = LSPEq().OpenSource(input);
    EXPECT_EQ(eq->GetPositionSample(), 0);
    const std::vector<int> out = ReadUneven(eq, 30000);
    EXPECT_EQ(eq->GetPositionSample(), 30000);

    LSoundSource reference = Sine(44100, 2, 1234.5, 400000, 30000);
    const std::vector<int> expected = ReadFrames(reference, 30000);
    for (size_t i = 0; i < out.size(); ++i)
        ASSERT_NEAR(out[i], expected[i], 1) << i;
}

TEST(Equalizer, ImpulseComesOutAsTheSymmetricResponseCentredOnItsFrame) {
    // A low-pass curve: unity up to bin 300, a tenth above.
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = k < 300 ? 100 : 10;
    const std::vector<double> coeffs = LSRCEq::ImpulseResponse(curve);
    for (int j = 1; j < 2047; ++j)
        ASSERT_NEAR(coeffs[2047 - j], coeffs[2047 + j], 1e-12) << j;

    LSoundSource impulse(new ImpulseSource(1 << 22));
    LSoundSource eq = LSPEq(curve).OpenSource(impulse);
    const std::vector<int> out = ReadFrames(eq, 4000);
    for (int n = 0; n < 2048; ++n)
        ASSERT_NEAR(out[n], coeffs[2047 + n] * (1 << 22), 1.0) << n;
    for (int n = 2048; n < 4000; ++n)
        ASSERT_EQ(out[n], 0) << n;
}

TEST(Equalizer, ShapedCurveSetsTheLevelOfEachFrequency) {
    // 2.0 up to bin 199, 0.5 from bin 200 on, 1.0 from bin 1000 on.
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = k < 200 ? 200 : k < 1000 ? 50 : 100;
    struct Probe {
        int bin;
        double gain;
    };
    for (const Probe probe : {Probe{46, 2.0}, Probe{400, 0.5}, Probe{1500, 1.0}}) {
        const double frequency = BinFrequency(probe.bin);
        LSoundSource input = Sine(44100, 1, frequency, 100000, 60000);
        LSoundSource eq = LSPEq(curve).OpenSource(input);
        // 16384 frames hold a whole number of cycles of a bin frequency.
        const std::vector<int> out = ReadFrames(eq, 40000);
        const double amplitude = ToneAmplitude(out, 1, 20000, 16384, 44100, frequency);
        EXPECT_NEAR(DB(amplitude / 100000), DB(probe.gain), 0.05) << frequency;
    }
}

TEST(Equalizer, SeekGivesTheFilteredFrameAtTheNewPosition) {
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = static_cast<unsigned char>(255 - k / 10);
    LSoundSource input = Sine(44100, 2, 3000, 200000, 100000);
    LSoundSource eq = LSPEq(curve).OpenSource(input);
    const std::vector<int> straight = ReadFrames(eq, 50000);

    eq->Seek(30000);
    EXPECT_EQ(eq->GetPositionSample(), 30000);
    const std::vector<int> sought = ReadFrames(eq, 20000);
    for (int i = 0; i < 2 * 20000; ++i)
        ASSERT_NEAR(sought[i], straight[2 * 30000 + i], 1) << i;
}
