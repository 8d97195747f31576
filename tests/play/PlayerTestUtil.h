#pragma once

#include "codecs/WaveFile.h"
#include "devices/DeviceTestUtil.h"
#include "jobs/PlainMainQueue.h"
#include "play/SoundPlayer.h"
#include "support/BufferSource.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

// What a player told its listener, in order.
struct PlayerEvent {
    enum Kind { Play, Stop, Time, Level } kind;
    int value; // ms for Time, dB for Level
};

class RecordingListener : public LSoundPlayerNotify {
public:
    void spntfPlay(long) override { events.push_back({PlayerEvent::Play, 0}); }
    void spntfStop(long) override { events.push_back({PlayerEvent::Stop, 0}); }
    void spntfTime(LSoundTime time, long) override {
        events.push_back({PlayerEvent::Time, time.GetMS()});
    }
    void spntfLevel(const LDBMC& level, long) override {
        events.push_back({PlayerEvent::Level, level.values[0]});
    }

    int Count(PlayerEvent::Kind kind) const {
        int count = 0;
        for (const PlayerEvent& event : events)
            count += event.kind == kind;
        return count;
    }
    bool Stopped() const { return Count(PlayerEvent::Stop) > 0; }

    std::vector<PlayerEvent> events;
};

// A private home, a main-thread queue, and the Virtual Speaker writing as fast as it can into a
// wave file of the test's own; no sound server is reachable, so the default output is the
// Virtual Speaker too.
class PlayerTest : public testing::Test {
protected:
    PlayerTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        player_ = std::make_unique<LSoundPlayer>();
        player_->SetListener(&listener_, 7);
    }
    ~PlayerTest() override {
        player_.reset();
        LMainThreadQueue::SetCurrent(nullptr);
    }

    // Plays `speed` times real time from now on (0: as fast as it can).
    void SetSpeakerSpeed(int speed) {
        setenv("VINORA_VIRTUAL_SPEAKER",
               (output_.string() + ",speed=" + std::to_string(speed)).c_str(), 1);
    }

    // Runs the main-thread queue until the player has stopped (a minute at most, so that a
    // broken player fails instead of hanging).
    bool RunUntilStopped() {
        return queue_.RunUntil([this] { return listener_.Stopped(); }, 60000);
    }

    bool PlayToEnd(LSoundSource source) { return player_->Start(source) && RunUntilStopped(); }

    // The samples the Virtual Speaker wrote, as internal samples.
    std::vector<int> Output(int* rate = nullptr, int* channels = nullptr) {
        LSoundSource wave = LWaveFile::OpenSource(output_.c_str());
        EXPECT_EQ(wave->GetError(), sndErrNone);
        if (rate) *rate = wave->GetSampleRate();
        if (channels) *channels = wave->GetChannels();
        return ReadFrames(wave, wave->GetEndSample());
    }

    TempHome home_;
    std::filesystem::path output_ = home_.Path() / "speaker.wav";
    ScopedEnv speaker_{"VINORA_VIRTUAL_SPEAKER", output_.string() + ",speed=0"};
    ScopedEnv server_{"PULSE_SERVER", "unix:" + (home_.Path() / "no-server").string()};
    LPlainMainQueue queue_;
    RecordingListener listener_;
    std::unique_ptr<LSoundPlayer> player_;
};

// Random 16-bit audio in internal samples, so that every frame is told apart from its
// neighbours.
inline std::vector<int> RandomSamples(int frames, int channels, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> value(-32767, 32767);
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int& sample : samples)
        sample = value(random) * 16;
    return samples;
}
