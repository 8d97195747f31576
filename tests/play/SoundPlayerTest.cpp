#include "play/PlayerTestUtil.h"

#include <algorithm>

namespace {

std::vector<int> Frames(const std::vector<int>& samples, int channels, int first, int count) {
    const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(first) * channels;
    return {begin, begin + static_cast<std::ptrdiff_t>(count) * channels};
}

// Eight seconds, more than the 64 buffers of the ring, played at 20 times real time so that the
// ring fills and the feeder has to wait for played buffers; and a source shorter than one
// buffer. Each plays once, whole and in order, its positions only move on, and the end
// position comes last before the stop.
TEST_F(PlayerTest, PlaysASourceWholeAndInOrderThenTheEndPositionThenStop) {
    struct Case {
        int frames, channels, speed, endMs;
    };
    for (const Case& c : {Case{44100 * 8, 2, 20, 8000}, Case{1000, 1, 0, 22}}) {
        SCOPED_TRACE(c.frames);
        listener_.events.clear();
        SetSpeakerSpeed(c.speed);
        const std::vector<int> samples = RandomSamples(c.frames, c.channels);
        ASSERT_TRUE(PlayToEnd(MakeBufferSource(samples, 44100, c.channels)));
        EXPECT_FALSE(player_->IsPlaying());

        int rate = 0, channels = 0;
        EXPECT_EQ(Output(&rate, &channels), samples);
        EXPECT_EQ(rate, 44100);
        EXPECT_EQ(channels, c.channels);

        const std::vector<PlayerEvent>& events = listener_.events;
        ASSERT_GE(events.size(), 3u);
        EXPECT_EQ(events.front().kind, PlayerEvent::Play);
        EXPECT_EQ(listener_.Count(PlayerEvent::Play), 1);
        EXPECT_EQ(listener_.Count(PlayerEvent::Stop), 1);
        int last = -1;
        for (const PlayerEvent& event : events)
            if (event.kind == PlayerEvent::Time) {
                EXPECT_GE(event.value, last);
                last = event.value;
            }
        EXPECT_EQ(events[events.size() - 2].kind, PlayerEvent::Time);
        EXPECT_EQ(events[events.size() - 2].value, c.endMs);
        EXPECT_EQ(events.back().kind, PlayerEvent::Stop);
    }
}

TEST_F(PlayerTest, BufferIsATenthOfASecondWithinItsLimitsAndFastSourcesAreSlowedTo64k) {
    struct Case {
        int rate;
        int playedRate;
        int bufferFrames;
    };
    for (const Case& c : {Case{96000, 64000, 6400}, Case{44100, 44100, 4410}, Case{8000, 8000, 800},
                          Case{100, 100, 20}}) {
        SCOPED_TRACE(c.rate);
        listener_.events.clear();
        // Two seconds of a tone at a twentieth of the rate.
        const double frequency = c.rate / 20.0;
        LSoundSource source = MakeSineSource(c.rate, 1, frequency, 262144, 2 * c.rate);
        ASSERT_TRUE(player_->Start(source));
        EXPECT_EQ(player_->GetGeneric().Device().GetBufferFrames(), c.bufferFrames);
        ASSERT_TRUE(RunUntilStopped());

        int rate = 0;
        const std::vector<int> out = Output(&rate);
        EXPECT_EQ(rate, c.playedRate);
        ASSERT_EQ(out.size(), static_cast<size_t>(2 * c.playedRate));
        // The tone keeps its frequency and level: a middle second holds it cleanly.
        const std::vector<double> middle = ChannelValues(out, 1, 0, c.playedRate / 2, c.playedRate);
        EXPECT_NEAR(ToneAmplitude(middle, c.playedRate, frequency), 262144, 262144 * 0.02);
        EXPECT_LT(ResidualDB(middle, c.playedRate, frequency), -40);
    }
}

TEST_F(PlayerTest, VolumeInDecibelsBecomesTheChannelVolumeOfTheOutput) {
    EXPECT_EQ(LSoundPlayerLLQT::ChannelVolume(0), 256);
    EXPECT_EQ(LSoundPlayerLLQT::ChannelVolume(20), 356);
    EXPECT_EQ(LSoundPlayerLLQT::ChannelVolume(-127), 0);

    // -6 dB: every sample is scaled by 226/256 on its way out; -60 dB silences it.
    const std::vector<int> samples = RandomSamples(8000, 2);
    player_->SetPlayVolume(-6);
    ASSERT_TRUE(PlayToEnd(MakeBufferSource(samples, 8000, 2)));
    const std::vector<int> out = Output();
    ASSERT_EQ(out.size(), samples.size());
    for (size_t i = 0; i < out.size(); i += 97)
        EXPECT_NEAR(out[i] / 16, samples[i] / 16 * 226 / 256, 1) << i;

    listener_.events.clear();
    player_->SetPlayVolume(-60);
    ASSERT_TRUE(PlayToEnd(MakeBufferSource(samples, 8000, 2)));
    const std::vector<int> silent = Output();
    EXPECT_TRUE(std::all_of(silent.begin(), silent.end(), [](int x) { return x == 0; }));
}

// Every level the listener hears is the tone's, or silence before the first buffer has been
// played (a fast output may finish before any is reported); GetDB() holds the last buffer's.
void ExpectLevels(const RecordingListener& listener, const LDBMC& last, int level) {
    bool heard = false;
    for (const PlayerEvent& event : listener.events) {
        if (event.kind != PlayerEvent::Level || (event.value == LDB::kSilence && !heard)) continue;
        heard = true;
        EXPECT_EQ(event.value, level);
    }
    EXPECT_EQ(last.count, 1);
    EXPECT_EQ(last.values[0], level);
}

TEST_F(PlayerTest, LevelsAreMeanSquareDecibelsAndSilenceReports129) {
    // A full-scale sine has a mean square 16 times the 0 dB level: 12 dB; half of it 6 dB.
    for (const auto& [amplitude, level] : {std::pair{524272.0, 12}, std::pair{262136.0, 6}}) {
        SCOPED_TRACE(level);
        listener_.events.clear();
        ASSERT_TRUE(PlayToEnd(MakeSineSource(8000, 2, 400, amplitude, 8000)));
        ExpectLevels(listener_, player_->GetDB(), level);
    }
    // 129 in the signed byte of a level is -127, silence.
    listener_.events.clear();
    ASSERT_TRUE(PlayToEnd(MakeBufferSource(std::vector<int>(16000, 0), 8000, 2)));
    ExpectLevels(listener_, player_->GetDB(),
                 static_cast<int8_t>(LSoundPlayerLLQT::kNoSignalLevel));
    EXPECT_EQ(static_cast<int8_t>(LSoundPlayerLLQT::kNoSignalLevel), LDB::kSilence);
}

// Neither a stop with nothing playing nor a source in error reaches the listener.
TEST_F(PlayerTest, NothingToPlayTellsTheListenerNothing) {
    player_->Stop();
    LSoundSource closed;
    EXPECT_FALSE(player_->Start(closed));
    EXPECT_FALSE(player_->IsPlaying());
    queue_.RunPending();
    EXPECT_TRUE(listener_.events.empty());

    ASSERT_TRUE(PlayToEnd(MakeBufferSource(RandomSamples(100, 1), 8000, 1)));
    listener_.events.clear();
    player_->Stop();
    queue_.RunPending();
    EXPECT_TRUE(listener_.events.empty());
}

TEST_F(PlayerTest, SeekGoesOnFromTheNewFrame) {
    constexpr int kFrames = 44100 * 3;
    constexpr int kSeekFrame = 100000;
    const std::vector<int> samples = RandomSamples(kFrames, 2);
    LSoundSource source = MakeBufferSource(samples, 44100, 2);
    ASSERT_TRUE(player_->Start(source));
    player_->Seek(kSeekFrame);
    ASSERT_TRUE(RunUntilStopped());

    // Whatever had been played before the seek is the start of the file; then comes everything
    // from the new frame on.
    const std::vector<int> out = Output();
    const int tail = kFrames - kSeekFrame;
    ASSERT_GE(out.size(), static_cast<size_t>(tail) * 2);
    const int before = static_cast<int>(out.size() / 2) - tail;
    EXPECT_EQ(Frames(out, 2, 0, before), Frames(samples, 2, 0, before));
    EXPECT_EQ(Frames(out, 2, before, tail), Frames(samples, 2, kSeekFrame, tail));

    const auto firstTime =
        std::find_if(listener_.events.begin(), listener_.events.end(),
                     [](const PlayerEvent& e) { return e.kind == PlayerEvent::Time; });
    ASSERT_NE(firstTime, listener_.events.end());
    EXPECT_EQ(firstTime->value, LSoundTime::FromSamples(kSeekFrame, 44100).GetMS());
}

TEST_F(PlayerTest, LouderThanSixteenBitSourcesAreLimitedNotClipped) {
    // A sine at twice 16-bit full scale comes out as a clean sine just under full scale.
    LSoundSource loud = MakeSineSource(8000, 1, 200, 1048544, 16000);
    ASSERT_TRUE(PlayToEnd(MakeBufferSource(ReadFrames(loud, 16000), 8000, 1, 1048544)));
    const std::vector<int> out = Output();
    ASSERT_EQ(out.size(), 16000u);
    const std::vector<double> middle = ChannelValues(out, 1, 0, 4000, 8000);
    EXPECT_NEAR(ToneAmplitude(middle, 8000, 200), 524272, 524272 * 0.05);
    EXPECT_LT(ResidualDB(middle, 8000, 200), -30);
}

// A feeder that never runs: the device layer is driven by hand.
class IdleThread : public LThread {
public:
    ~IdleThread() override { StopThreadNow(); }

protected:
    void ThreadFunction() override {}
};

// Started paused, the layer prepares one buffer at the cue point and plays it when the cue is
// released.
TEST_F(PlayerTest, ACuePreparesOneBufferThatPlaysWhenReleased) {
    const std::vector<int> samples = RandomSamples(8000, 1);
    LSoundSource source = MakeBufferSource(samples, 8000, 1);
    source->Seek(3000);
    IdleThread feeder;
    LSoundPlayerLLQT layer;
    ASSERT_TRUE(layer.Init(source, LSoundPlayerLLQT::kStartPaused, &feeder));
    layer.Start();
    EXPECT_EQ(layer.GetState(), LSoundPlayerLLQT::kStateStarted | LSoundPlayerLLQT::kStatePaused);
    layer.Cue();
    EXPECT_TRUE(layer.IsCued());
    EXPECT_TRUE(layer.PlayRemainingBuffer());
    layer.Cue();
    EXPECT_EQ(layer.GetState(), LSoundPlayerLLQT::kStateStarted | LSoundPlayerLLQT::kStateCued);
    ASSERT_TRUE(layer.WaitForEmptyBuffer());
    EXPECT_EQ(layer.GetPosition(), 3800);
    layer.Stop();
    EXPECT_EQ(Output(), std::vector<int>(samples.begin() + 3000, samples.begin() + 3800));
}

} // namespace
