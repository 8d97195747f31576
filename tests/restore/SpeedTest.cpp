#include "restore/CueSpeed.h"
#include "restore/PitchSpeed.h"

#include "support/RecordingProgress.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

// A ramp: frame i of channel c holds (i + 1) * 16 + c, zeros outside the stream.
constexpr int kRampFrames = 2000000;

class RampSource : public LSoundSourceBase {
public:
    RampSource() : LSoundSourceBase(44100, 2, 524272) {}
    void Read(int* buffer, int frames) override {
        for (int f = 0; f < frames; ++f, ++position_)
            for (int c = 0; c < 2; ++c)
                *buffer++ =
                    position_ >= 0 && position_ < kRampFrames ? (position_ + 1) * 16 + c : 0;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return kRampFrames; }
    void Seek(int frame) override { position_ = frame; }

private:
    int position_ = 0;
};

int RampFrame(int value) {
    return value / 16 - 1;
}

// Splits cue output of the stereo ramp into segments and checks that each is made of forward
// audio: its first half plays one stream at full weight, its second half crossfades into the
// stream the next segment continues. Returns the source frame each segment starts from.
std::vector<int> SegmentStarts(const std::vector<int>& out, int segFrames) {
    const int segments = static_cast<int>(out.size()) / 2 / segFrames;
    std::vector<int> starts;
    for (int k = 0; k < segments; ++k)
        starts.push_back(RampFrame(out[2 * k * segFrames]));
    for (int k = 0; k + 1 < segments; ++k) {
        const int* seg = out.data() + 2 * k * segFrames;
        const int to = starts[k + 1] - segFrames; // where the fading-in stream started
        for (int i = 0; i < segFrames; ++i) {
            for (int c = 0; c < 2; ++c) {
                const int a = (starts[k] + i + 1) * 16 + c;
                const int b = (to + i + 1) * 16 + c;
                const int v = seg[2 * i + c];
                if (i < segFrames / 2)
                    EXPECT_EQ(v, a) << "segment " << k << " frame " << i;
                else
                    EXPECT_TRUE(v >= std::min(a, b) - 4 && v <= std::max(a, b) + 4)
                        << "segment " << k << " frame " << i;
            }
        }
        // The fade ends on the new stream (within half a frame), which the next segment continues.
        EXPECT_NEAR(seg[2 * segFrames - 2], (to + segFrames) * 16, 8) << "segment " << k;
    }
    return starts;
}

} // namespace

TEST(PitchSpeed, RecordingSpeedStepsChangeDurationAndPitchLikeTheWrongTurntableSpeed) {
    struct Case {
        LProcessResult (*step)(LProcessInterface&, LSoundSource&);
        const char* status;
        double seconds;
        int frequency;
    };
    for (const Case& test : {Case{ProcessConvert45To33RPM, "45To33RPM convert", 81.86, 733},
                             Case{ProcessConvert78To45RPM, "78To45RPM convert", 34.62, 1733}}) {
        // 60 s of a 1 kHz tone.
        LSoundSource source = MakeSineSource(44100, 2, 1000, 200000, 60 * 44100);
        RecordingProgress progress;
        EXPECT_EQ(test.step(progress, source), PROCESS_DONE);
        ASSERT_EQ(progress.statuses.size(), 1u);
        EXPECT_EQ(progress.statuses[0], std::make_pair(std::string(test.status), 0));
        EXPECT_EQ(source->GetSampleRate(), 44100);
        EXPECT_EQ(source->GetChannels(), 2);
        EXPECT_NEAR(source->GetEndSample() / 44100.0, test.seconds, 0.01) << test.status;

        const std::vector<int> out = ReadFrames(source, 3 * 44100);
        EXPECT_NEAR(RisingCrossings(ChannelValues(out, 2, 0, 44100, 44100)), test.frequency, 1)
            << test.status;
    }
}

TEST(PitchSpeed, FactorIsLimitedAndAnUnchangedRateNeedsNoStage) {
    LSoundSource source = MakeSineSource(44100, 1, 1000, 1000, 1000);
    LSoundSource slowest = LSPPitchSpeed(0.01).OpenSource(source);
    EXPECT_EQ(slowest->GetEndSample(), 10000); // as for 0.1
    EXPECT_EQ(LSPPitchSpeed(1.0).OpenSource(source).Get(), source.Get());
}

TEST(CueSpeed, PlaysForwardAndBackwardInSegmentsOfForwardAudio) {
    // 490 frames per segment at 44.1 kHz; speeds from slow to beyond the buffer in both
    // directions, each segment starting `speed` segments after the one before. At speed 1 the
    // segments join into the source itself.
    struct Case {
        double speed;
        int step; // source frames from one segment's start to the next
    };
    for (const Case test : {Case{-1.0, -490}, Case{-0.5, -245}, Case{-7.0, -3430}, Case{1.0, 490},
                            Case{1.5, 735}, Case{7.5, 3675}, Case{0.1, 49}}) {
        // The stage starts where its source is, and a seek starts it afresh at the frame.
        LSoundSource ramp(new RampSource());
        ramp->Seek(400000);
        LSoundSource speed = LSPSpeed(test.speed, test.speed, LSoundTime(0)).OpenSource(ramp);
        EXPECT_EQ(speed->GetPositionSample(), 400000);
        speed->Seek(500000);
        EXPECT_EQ(speed->GetPositionSample(), 500000);
        const std::vector<int> out = ReadFrames(speed, 60 * 490);
        const std::vector<int> starts = SegmentStarts(out, 490);
        EXPECT_EQ(starts[0], 500000) << test.speed;
        for (size_t k = 1; k < starts.size(); ++k)
            ASSERT_EQ(starts[k] - starts[k - 1], test.step) << test.speed << " segment " << k;
        if (test.speed < 0)
            EXPECT_EQ(speed->GetEndSample(), 2 * speed->GetPositionSample());
        else
            EXPECT_EQ(speed->GetEndSample(), kRampFrames);
    }
}

TEST(CueSpeed, SpeedRampsLinearlyOverTheRampTime) {
    // 0.1 to 3.0 over 500 ms: 22050 frames, 45 segments of 490 frames.
    LSoundSource ramp(new RampSource());
    ramp->Seek(100000);
    LSoundSource speed = LSPSpeed(0.1, 3.0, LSoundTime(500)).OpenSource(ramp);
    const std::vector<int> starts = SegmentStarts(ReadFrames(speed, 70 * 490), 490);
    std::vector<int> steps;
    for (size_t k = 1; k < starts.size(); ++k)
        steps.push_back(starts[k] - starts[k - 1]);
    EXPECT_EQ(steps.front(), 49);
    for (size_t k = 1; k < steps.size(); ++k) {
        EXPECT_GE(steps[k], steps[k - 1]);
        EXPECT_LE(steps[k] - steps[k - 1], 33); // (1470 - 49) / 45 each, give or take a frame
    }
    EXPECT_EQ(steps[46], 1470);
    EXPECT_EQ(steps.back(), 1470);
}
