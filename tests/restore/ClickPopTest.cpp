#include "restore/ClickPop.h"

#include "restore/HighPassIIR2.h"
#include "support/BufferSource.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace {

constexpr int kRate = 44100;
// Frames per analysis step at 44.1 kHz; clicks are placed well inside one step so that each is
// repaired in one piece.
constexpr int kStep = 416;
constexpr int kLag = 3;

// Repeatable uniform noise in [-amplitude, amplitude].
class Noise {
public:
    explicit Noise(uint32_t seed) : state_(seed) {}
    int Next(int amplitude) {
        state_ = state_ * 1664525u + 1013904223u;
        return static_cast<int>((state_ >> 8) % static_cast<uint32_t>(2 * amplitude + 1)) -
               amplitude;
    }

private:
    uint32_t state_;
};

// Surface hiss of a few 16-bit steps.
std::vector<int> Quiet(int frames, int channels, uint32_t seed = 1) {
    Noise noise(seed);
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int& s : samples)
        s = noise.Next(64);
    return samples;
}

// Loud chords (a different one per channel) over hiss, peaking near full scale, faded in and out
// over 20 ms (a sudden start or stop is a click of its own).
std::vector<int> Music(int frames, int channels, uint32_t seed = 2) {
    Noise noise(seed);
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    const double w = 2 * std::numbers::pi / kRate;
    const int fade = kRate / 50;
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c) {
            const double chord = 160000 * std::sin(w * (110 + 55 * c) * f) +
                                 110000 * std::sin(w * 440 * f + c) +
                                 60000 * std::sin(w * (990 + 20 * c) * f);
            samples[static_cast<size_t>(f) * channels + c] =
                static_cast<int>(chord *
                                 std::min({1.0, double(f) / fade, double(frames - f) / fade})) +
                noise.Next(64);
        }
    return samples;
}

void Add(std::vector<int>& samples, int channels, int channel, int frame,
         const std::vector<int>& values) {
    for (size_t k = 0; k < values.size(); ++k)
        samples[(frame + k) * channels + channel] += values[k];
}

// Alternating +amplitude, -amplitude, ...: a burst the detection filter passes unweakened.
std::vector<int> Burst(int frames, int amplitude) {
    std::vector<int> values(frames);
    for (int k = 0; k < frames; ++k)
        values[k] = k % 2 ? -amplitude : amplitude;
    return values;
}

// A tone at a third of the rate (amplitude, -amplitude / 2, -amplitude / 2, ...): over the
// 3-frame jump distance of 44.1 kHz it does not change, so only its start looks like a click.
std::vector<int> Buzz(int frames, int amplitude) {
    std::vector<int> values(frames);
    for (int k = 0; k < frames; ++k)
        values[k] = k % 3 ? -amplitude / 2 : amplitude;
    return values;
}

std::vector<int> RunClickPop(const std::vector<int>& input, int channels, int rate = kRate,
                             signed char sensitivity = 35, int maxWidthUs = 450) {
    LSoundSource source = MakeBufferSource(input, rate, channels);
    LSoundSource stage = LSPClickPop(sensitivity, maxWidthUs).OpenSource(source);
    // An odd read size, so that reads end inside analysis steps.
    return ReadAll(stage, static_cast<int>(input.size() / channels), 1000);
}

struct Span {
    int channel;
    int first; // the two clean frames the line is drawn between
    int last;
};

// Where a click starting at `frame` is repaired: from `lag` frames before it to `lag` frames
// after the first frame where the 1500 Hz high-passed signal falls below a third of its level
// at the click's start.
Span RepairSpan(const std::vector<int>& input, int channels, int channel, int frame,
                int rate = kRate, int lag = kLag) {
    std::vector<int> detection = input;
    LHighPassIIR2 filter(1500, rate, static_cast<unsigned char>(channels));
    filter.ApplyFilter(detection.data(), static_cast<int>(detection.size() / channels));
    const auto level = [&](int f) { return std::abs(detection[f * channels + channel]); };
    int end = frame + 1;
    while (level(end) >= level(frame) / 3)
        ++end;
    return {channel, frame - lag, end + lag};
}

// Inside each span the output lies on the straight line between the span's end samples
// (within the integer rounding); everything else is the input bit for bit.
void ExpectRepaired(const std::vector<int>& input, const std::vector<int>& output, int channels,
                    const std::vector<Span>& spans) {
    ASSERT_EQ(output.size(), input.size());
    std::vector<bool> repaired(input.size());
    for (const Span& span : spans) {
        const double a = input[span.first * channels + span.channel];
        const double b = input[span.last * channels + span.channel];
        const int n = span.last - span.first;
        for (int k = 1; k < n; ++k) {
            const size_t at = static_cast<size_t>(span.first + k) * channels + span.channel;
            repaired[at] = true;
            EXPECT_NEAR(output[at], a + (b - a) * k / n, 1.99)
                << "channel " << span.channel << " frame " << span.first + k;
        }
    }
    int changed = 0;
    for (size_t i = 0; i < input.size(); ++i)
        if (!repaired[i] && output[i] != input[i] && ++changed <= 5)
            ADD_FAILURE() << "channel " << i % channels << " frame " << i / channels
                          << " changed from " << input[i] << " to " << output[i];
    EXPECT_EQ(changed, 0);
}

struct Click {
    int channel;
    int frame;
    std::vector<int> values;
};

// Adds the clicks to the input and returns where each is to be bridged.
std::vector<Span> AddClicks(std::vector<int>& input, int channels, const std::vector<Click>& clicks,
                            int rate = kRate, int lag = kLag) {
    for (const Click& click : clicks)
        Add(input, channels, click.channel, click.frame, click.values);
    std::vector<Span> spans;
    for (const Click& click : clicks)
        spans.push_back(RepairSpan(input, channels, click.channel, click.frame, rate, lag));
    return spans;
}

TEST(ClickPop, BlockSizesFollowTheRateAndClickWidth) {
    struct Case {
        int rate, maxWidthUs;
        int blockLen, lag, maxWidth, step;
    };
    for (const Case& c : {Case{8000, 450, 80, 1, 4, 74}, Case{44100, 450, 441, 3, 19, 416},
                          Case{48000, 450, 480, 3, 21, 453}, Case{96000, 450, 960, 5, 43, 907},
                          // So wide a click makes the analysis block twice its width.
                          Case{44100, 10000, 882, 3, 441, 882 - 441 - 6}}) {
        LSoundSource source = MakeBufferSource({}, c.rate, 2);
        const LSRCClickPop stage(source, 35, c.maxWidthUs);
        EXPECT_EQ(stage.GetBlockLen(), c.blockLen) << c.rate;
        EXPECT_EQ(stage.GetLag(), c.lag) << c.rate;
        EXPECT_EQ(stage.GetMaxWidth(), c.maxWidth) << c.rate;
        EXPECT_EQ(stage.GetStep(), c.step) << c.rate;
    }
}

// Clicks in quiet audio across three seconds (the held second of audio is moved on twice) and
// in loud music, in both channels at different places and once at the same frame: each is
// bridged by one straight line, and nothing else changes. The same holds for mono at 8 kHz,
// whose analysis steps are 74 frames.
TEST(ClickPop, ClicksInQuietAudioLoudMusicAndAtALowRateAreBridged) {
    std::vector<int> quiet = Quiet(3 * kRate, 2);
    const std::vector<Span> quietSpans =
        AddClicks(quiet, 2,
                  {{0, 10 * kStep + kLag + 100, {200000, -100000}},
                   {1, 11 * kStep + kLag + 40, {-180000, 90000}},
                   {0, 105 * kStep + kLag + 200, Burst(5, 150000)}, // after the buffer moved on
                   {1, 106 * kStep + kLag + 30, {150000, -110000, 40000}},
                   {0, 212 * kStep + kLag + 300, Burst(12, 100000)},
                   {1, 250 * kStep + kLag + 10, {-300000, 150000}}});
    ExpectRepaired(quiet, RunClickPop(quiet, 2), 2, quietSpans);

    std::vector<int> music = Music(2 * kRate, 2);
    const std::vector<Span> musicSpans =
        AddClicks(music, 2,
                  {{0, 20 * kStep + kLag + 150, {250000}},
                   {1, 20 * kStep + kLag + 150, {-250000}},
                   {0, 50 * kStep + kLag + 60, {250000}},
                   {1, 90 * kStep + kLag + 250, Burst(6, 200000)},
                   {0, 120 * kStep + kLag + 333, {-200000, 250000, -100000}}});
    ExpectRepaired(music, RunClickPop(music, 2), 2, musicSpans);

    std::vector<int> low = Quiet(8000 * 2, 1);
    const std::vector<Span> lowSpans = AddClicks(
        low, 1,
        {{0, 5 * 74 + 31, {150000}}, {0, 60 * 74 + 51, {150000}}, {0, 107 * 74 + 11, {-150000}}},
        8000, 1);
    ExpectRepaired(low, RunClickPop(low, 1, 8000), 1, lowSpans);
}

// A lone spike on near silence: the detection filter rings after it, and the ringing passes
// for a second click, bridged from inside the first line. Together the lines flatten the spike
// into the hiss within two click widths.
TEST(ClickPop, SingleSampleSpikeInQuietAudioIsFlattened) {
    std::vector<int> input = Quiet(kRate, 2);
    const std::vector<std::pair<int, int>> spikes = {
        {0, 10 * kStep + kLag + 100}, {1, 30 * kStep + kLag + 10}, {0, 50 * kStep + kLag + 200}};
    for (const auto& [channel, frame] : spikes)
        Add(input, 2, channel, frame, {channel ? -250000 : 200000});

    const std::vector<int> output = RunClickPop(input, 2);
    std::vector<bool> near(input.size());
    for (const auto& [channel, frame] : spikes) {
        for (int f = frame - kLag + 1; f < frame + 2 * 19 + kLag; ++f) {
            near[f * 2 + channel] = true;
            EXPECT_LE(std::abs(output[f * 2 + channel]), 64) << "frame " << f;
        }
    }
    for (size_t i = 0; i < input.size(); ++i) {
        if (near[i]) continue;
        ASSERT_EQ(output[i], input[i]) << "channel " << i % 2 << " frame " << i / 2;
    }
}

// A click may keep the detection level above a third of its start for at most 19 frames at
// 44.1 kHz (450 microseconds); one frame more and it is left alone.
TEST(ClickPop, WidestClickIsBridgedAndOneFrameMoreIsNot) {
    std::vector<int> input = Quiet(kRate, 2);
    std::vector<int> starts;
    for (int frames = 12; frames <= 24; ++frames) {
        starts.push_back((10 + 2 * frames) * kStep + kLag + 50);
        Add(input, 2, 0, starts.back(), Buzz(frames, 100000));
    }
    std::vector<Span> spans;
    for (int frame : starts) {
        const Span span = RepairSpan(input, 2, 0, frame);
        if (span.last - kLag - frame <= 19) spans.push_back(span);
    }
    // Some of the buzzes are short enough and some are not.
    EXPECT_GT(spans.size(), 0u);
    EXPECT_LT(spans.size(), starts.size());
    ExpectRepaired(input, RunClickPop(input, 2), 2, spans);
}

// A disturbance longer than the widest click is music or a scratch too long to bridge: it is
// left alone, and the rest of that step of that channel is judged with thresholds 1.5 times
// higher (2.25 times after a second one). The statistics of the step do not depend on the
// order of what is in it, so a moderate click is bridged before such a burst but not after it.
TEST(ClickPop, BurstLongerThanAClickIsLeftAloneAndRaisesTheThresholds) {
    const int step = 40 * kStep + kLag;
    const std::vector<int> longBurst = Buzz(40, 100000);
    // Places the events at their offsets into the step and returns the spans repaired: the
    // click's (in both channels, the right one without bursts) or the right one's alone.
    const auto run = [&](const std::vector<std::pair<int, std::vector<int>>>& events,
                         int clickOffset, int clickAmplitude, bool leftBridged) {
        std::vector<int> input = Quiet(kRate, 2);
        for (const auto& [offset, values] : events)
            Add(input, 2, 0, step + offset, values);
        const std::vector<int> click = {clickAmplitude, -clickAmplitude / 2};
        Add(input, 2, 0, step + clickOffset, click);
        Add(input, 2, 1, step + clickOffset, click);
        std::vector<Span> spans = {RepairSpan(input, 2, 1, step + clickOffset)};
        if (leftBridged) spans.push_back(RepairSpan(input, 2, 0, step + clickOffset));
        ExpectRepaired(input, RunClickPop(input, 2), 2, spans);
    };
    {
        SCOPED_TRACE("click before and after one burst");
        run({{250, longBurst}}, 40, 32000, true);
        run({{40, longBurst}}, 250, 32000, false);
    }
    SCOPED_TRACE("click after one and after two bursts");
    run({{20, longBurst}, {250, longBurst}}, 130, 72000, true);
    run({{20, longBurst}, {130, longBurst}}, 250, 72000, false);
}

TEST(ClickPop, ChainStepWrapsTheSourceAndPositionIsWhatHasBeenHandedOut) {
    std::vector<int> input = Quiet(kRate, 2);
    Add(input, 2, 0, 60 * kStep + kLag + 80, {200000});
    LSoundSource source = MakeBufferSource(input, kRate, 2);
    LSoundSource stage = source;
    RecordingProgress progress;
    EXPECT_EQ(ProcessClickPop(progress, stage), PROCESS_DONE);
    EXPECT_EQ(progress.statuses,
              (std::vector<std::pair<std::string, int>>{{"Click Pop Remover", 0}}));
    ASSERT_NE(dynamic_cast<const LSRCClickPop*>(stage.Get()), nullptr);
    EXPECT_EQ(source->GetPositionSample(), 0); // nothing read yet
    EXPECT_EQ(stage->GetPositionSample(), 0);
    EXPECT_EQ(stage->GetEndSample(), kRate);
    ReadAll(stage, 100);
    EXPECT_EQ(stage->GetPositionSample(), 100);
    EXPECT_GE(source->GetPositionSample(), 441);

    // After a seek the stage starts afresh there: the same as a new stage on a source that
    // was at that position.
    stage->Seek(20000);
    EXPECT_EQ(stage->GetPositionSample(), 20000);
    const std::vector<int> afterSeek = ReadAll(stage, 10000, 700);
    LSoundSource fresh = MakeBufferSource(input, kRate, 2);
    fresh->Seek(20000);
    LSoundSource freshStage = LSPClickPop(35, 450).OpenSource(fresh);
    EXPECT_EQ(afterSeek, ReadAll(freshStage, 10000));
    EXPECT_EQ(stage->GetPositionSample(), 30000);
}

} // namespace
