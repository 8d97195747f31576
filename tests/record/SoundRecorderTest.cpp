#include "record/SoundRecorder.h"
#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"

#include "support/CaptureSink.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr int kBuffer = kRate / 10; // frames in one recorder buffer at 44.1 kHz
constexpr double kToneHz = 441;
constexpr int kSilence = -127;

// A stretch of the test recording: a tone whose peak is at `db` on the recorder's level scale
// (0 dB = a quarter of full scale), or digital silence.
struct Stretch {
    int frames;
    double db;
};

// Writes a stereo 16-bit wave file of tone stretches with one continuous phase.
void WriteStretches(const std::string& path, int rate, double hz,
                    const std::vector<Stretch>& stretches) {
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), rate, 2, 16, 0);
    ASSERT_EQ(sink->GetError(), 0);
    int frame = 0;
    for (const Stretch& stretch : stretches) {
        const double amplitude =
            stretch.db <= kSilence ? 0 : 131072 * std::pow(10, stretch.db / 20);
        std::vector<int> samples(static_cast<size_t>(stretch.frames) * 2);
        for (int i = 0; i < stretch.frames; ++i, ++frame) {
            const double value = amplitude * std::sin(2 * std::numbers::pi * hz * frame / rate);
            samples[2 * i] = samples[2 * i + 1] = static_cast<int>(std::lround(value));
        }
        sink->Write(samples.data(), stretch.frames);
    }
}

std::vector<int> ReadWave(const std::string& path) {
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    EXPECT_EQ(source->GetError(), sndErrNone) << path;
    return ReadFrames(source, source->GetEndSample());
}

// Interleaved stereo frames [first, first + count) of a recording.
std::vector<int> Frames(const std::vector<int>& samples, int first, int count) {
    return {samples.begin() + 2 * first, samples.begin() + 2 * (first + count)};
}

// Keeps what the recorder reports.
class NotifyLog : public LSoundRecorderNotify {
public:
    std::vector<char> states; // 'W' wait, 'R' record, 'S' stop, in order
    bool stopped = false;
    int levelCalls = 0;
    LDBMC levels;

    void srntfRecord(long) override { states.push_back('R'); }
    void srntfWait(long) override { states.push_back('W'); }
    void srntfStop(long) override {
        states.push_back('S');
        stopped = true;
    }
    void srntfLevel(const LDBMC& values, long) override {
        ++levelCalls;
        levels = values;
    }
};

// Records from the Virtual Turntable playing test files as fast as the recorder reads.
class SoundRecorderTest : public testing::Test {
protected:
    SoundRecorderTest() { LMainThreadQueue::SetCurrent(&queue_); }
    ~SoundRecorderTest() override {
        unsetenv("VINORA_VIRTUAL_TURNTABLE");
        LMainThreadQueue::SetCurrent(nullptr);
    }

    std::string TempPath(const char* name) const { return (home_.Path() / name).string(); }

    void PlayOnTurntable(const std::string& path) {
        setenv("VINORA_VIRTUAL_TURNTABLE", (path + ",speed=0").c_str(), 1);
    }

    // Records into `sink` until the recorder stops by itself (maximum length or end of input).
    void RecordUntilStopped(LSoundSink sink, NotifyLog& log, int32_t maxLengthMs, LDB threshold) {
        LSoundRecorder recorder(&log);
        recorder.GetLowLevel().SetDevice(turntable_);
        ASSERT_TRUE(recorder.Start(sink, LSoundTime(maxLengthMs), threshold, LSoundTime(4000), 0));
        sink.Close();
        ASSERT_TRUE(queue_.RunUntil([&] { return log.stopped; }, 120000));
        EXPECT_EQ(recorder.GetState(), 0);
    }

    TempHome home_;
    LPlainMainQueue queue_;
    const LSoundRecordDevice turntable_{"Virtual Turntable", 0};
};

} // namespace

// Threshold -127: every buffer counts as loud, so five seconds of digital silence never pause
// the recording; the maximum length stops it after the first buffer past it.
TEST_F(SoundRecorderTest, ThresholdSilenceRecordsEverythingUntilTheMaximumLength) {
    const std::string input = TempPath("in.wav");
    WriteStretches(input, kRate, kToneHz,
                   {{5 * kBuffer, -20}, {50 * kBuffer, kSilence}, {5 * kBuffer, -20}});
    PlayOnTurntable(input);
    const std::string output = TempPath("out.wav");
    NotifyLog log;
    RecordUntilStopped(LWaveFile::OpenSinkPCM(output.c_str(), kRate, 2, 16, 0), log, 5800,
                       kSilence);

    // 5.9 s is the first buffer end past 5.8 s.
    EXPECT_EQ(ReadWave(output), Frames(ReadWave(input), 0, 59 * kBuffer));
    ASSERT_FALSE(log.states.empty());
    EXPECT_EQ(log.states.back(), 'S');
    const auto firstRecord = std::find(log.states.begin(), log.states.end(), 'R');
    ASSERT_NE(firstRecord, log.states.end());
    EXPECT_EQ(std::count(firstRecord, log.states.end(), 'W'), 0);
    EXPECT_GT(log.levelCalls, 0);
    EXPECT_EQ(log.levels.count, 2);
}

// Threshold -30 (pauses below -34): the recording starts at the buffer that reaches -20 without
// the buffer before it when that buffer's first half was still quiet; 4.1 s below the silence
// threshold rewind the file to 450 ms after the last loud buffer; the next loud buffer, already
// loud in its first half, continues the file there with the last 50 ms before it; at the end of
// the input the stop keeps 50 ms after the last loud buffer.
TEST_F(SoundRecorderTest, SoundActivatedRecordingStartsPausesResumesAndTrims) {
    constexpr int kHalf = kBuffer / 2;
    const std::string input = TempPath("in.wav");
    WriteStretches(input, kRate, kToneHz,
                   {
                       {5 * kBuffer, -50},  // buffers 0-4: waiting
                       {kHalf, -40},        // buffer 5: quiet first half
                       {kHalf, -20},        //   then loud: recording starts here
                       {4 * kBuffer, -20},  // buffers 6-9: loud, last loud ends at 500 ms
                       {45 * kBuffer, -50}, // buffers 10-54: 4.1 s later the pause (at 50)
                       {kHalf, -25},        // buffer 55: loud in its first half already
                       {kHalf, -20},        //
                       {4 * kBuffer, -20},  // buffers 56-59: last loud ends at 1500 ms
                       {10 * kBuffer, -50}, // buffers 60-69: one second of quiet, then the end
                   });
    PlayOnTurntable(input);
    const std::string output = TempPath("out.wav");
    NotifyLog log;
    RecordUntilStopped(LWaveFile::OpenSinkPCM(output.c_str(), kRate, 2, 16, 0), log, 0, -30);

    const std::vector<int> in = ReadWave(input);
    // Buffers 5-9 and the quiet after them up to 950 ms (500 + 450) ...
    std::vector<int> expected = Frames(in, 5 * kBuffer, 950 * kRate / 1000);
    // ... then the second half of buffer 54, buffers 55-59 and 50 ms of buffer 60.
    const std::vector<int> resumed = Frames(in, 54 * kBuffer + kHalf, kHalf + 5 * kBuffer + kHalf);
    expected.insert(expected.end(), resumed.begin(), resumed.end());
    const std::vector<int> out = ReadWave(output);
    ASSERT_EQ(out.size(), expected.size());
    EXPECT_TRUE(out == expected);
    EXPECT_EQ(log.states.back(), 'S');
}

// A device that delivers 48 kHz still fills a 44.1 kHz sink with the same tone.
TEST_F(SoundRecorderTest, A48kHzInputIsConvertedToTheSinksRate) {
    const std::string input = TempPath("in48.wav");
    WriteStretches(input, 48000, 1000, {{48000, -20}});
    PlayOnTurntable(input);
    std::vector<int> samples;
    NotifyLog log;
    RecordUntilStopped(LSoundSink(new CaptureSink(kRate, 2, samples)), log, 0, kSilence);

    const int frames = static_cast<int>(samples.size() / 2);
    EXPECT_NEAR(frames, kRate, 16);
    const double amplitude = 131072 * std::pow(10, -20 / 20.0);
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> middle = ChannelValues(samples, 2, channel, kRate / 4, kRate / 2);
        EXPECT_NEAR(DB(ToneAmplitude(middle, kRate, 1000) / amplitude), 0, 0.1);
        EXPECT_LT(ResidualDB(middle, kRate, 1000), -40);
    }
}

TEST_F(SoundRecorderTest, StartFailsOnASinkInErrorOrADeviceThatCannotOpen) {
    NotifyLog log;
    LSoundRecorder recorder(&log);
    recorder.GetLowLevel().SetDevice(turntable_);
    LSoundSink broken;
    EXPECT_FALSE(recorder.Start(broken, LSoundTime(0), kSilence, LSoundTime(4000), 0));

    std::vector<int> samples;
    LSoundSink sink(new CaptureSink(kRate, 2, samples));
    setenv("VINORA_VIRTUAL_TURNTABLE", (home_.Path() / "missing.wav").c_str(), 1);
    EXPECT_FALSE(recorder.Start(sink, LSoundTime(0), kSilence, LSoundTime(4000), 0));
    EXPECT_EQ(recorder.GetState(), 0);
    EXPECT_FALSE(recorder.GetLowLevel().GetError().empty());
    EXPECT_TRUE(log.states.empty());
    EXPECT_TRUE(samples.empty());
}
