#include "devices/DeviceTestUtil.h"
#include "support/PulseServer.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>

namespace {

using namespace std::chrono_literals;

constexpr double kAmplitude = 16384; // -6 dBFS

std::vector<int16_t> Tone(int frames, double frequency) {
    std::vector<int16_t> samples(2 * static_cast<size_t>(frames));
    for (int f = 0; f < frames; ++f)
        samples[2 * f] = samples[2 * f + 1] = static_cast<int16_t>(
            std::lround(kAmplitude * std::sin(2 * std::numbers::pi * frequency * f / 44100)));
    return samples;
}

// One channel of interleaved stereo 16-bit audio around its loudest 100 ms, as doubles.
std::vector<double> LoudestBlock(const std::vector<int16_t>& samples, int channel) {
    const size_t frames = samples.size() / 2;
    size_t best = 0;
    double bestEnergy = -1;
    for (size_t at = 0; at + 4410 <= frames; at += 2205) {
        double energy = 0;
        for (size_t f = at; f < at + 4410; ++f)
            energy += double(samples[2 * f + channel]) * samples[2 * f + channel];
        if (energy > bestEnergy) {
            bestEnergy = energy;
            best = at;
        }
    }
    std::vector<double> values;
    for (size_t f = best; f < best + 4410 && f < frames; ++f)
        values.push_back(samples[2 * f + channel]);
    return values;
}

const LSoundDeviceInfo* Find(const std::vector<LSoundDeviceInfo>& devices,
                             const std::string& name) {
    for (const LSoundDeviceInfo& device : devices)
        if (device.serverName == name) return &device;
    return nullptr;
}

class DevicesE2ETest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.IsRunning()) << server_.Error(); }

    TempHome home_;
    PulseServer server_;
};

// The server's null sink and its monitor are listed by description with their server names,
// as defaults, ahead of the virtual devices; the command-line tool prints the same.
TEST_F(DevicesE2ETest, ListsTheServersSinkAndMonitorBeforeTheVirtualDevices) {
    std::vector<LSoundDeviceInfo> inputs, outputs;
    ASSERT_TRUE(GetSoundInputDevices(inputs));
    ASSERT_TRUE(GetSoundOutputDevices(outputs));
    const LSoundDeviceInfo* monitor = Find(inputs, "turntable.monitor");
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->name, "Monitor of Null Output");
    EXPECT_TRUE(monitor->isDefault);
    EXPECT_EQ(inputs.back().serverName, "virtual-turntable");
    EXPECT_FALSE(inputs.back().isDefault);
    const LSoundDeviceInfo* sink = Find(outputs, "turntable");
    ASSERT_TRUE(sink);
    EXPECT_TRUE(sink->isDefault);
    EXPECT_EQ(outputs.back().serverName, "virtual-speaker");

    LSoundDeviceInfo fallback;
    ASSERT_TRUE(GetDefaultSoundInputDevice(fallback));
    EXPECT_EQ(fallback.serverName, "turntable.monitor");

    int status = -1;
    const std::string listing = RunCommand(std::string(VINORA_CLI) + " devices", &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(listing.find("  Monitor of Null Output [turntable.monitor] (default)\n"),
              std::string::npos)
        << listing;
    EXPECT_NE(listing.find("Output devices:\n  Null Output [turntable] (default)\n"),
              std::string::npos)
        << listing;
    EXPECT_NE(listing.find("  Virtual Speaker [virtual-speaker]\n"), std::string::npos) << listing;

    const std::string alone = RunCommand(
        "PULSE_SERVER=unix:/nonexistent/native " + std::string(VINORA_CLI) + " devices", &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(alone, "Input devices:\n  Virtual Turntable [virtual-turntable] (default)\n"
                     "Output devices:\n  Virtual Speaker [virtual-speaker] (default)\n");
}

// A tone paplay plays into the sink comes back through the sink's monitor at its frequency
// and level.
TEST_F(DevicesE2ETest, RecordsWhatIsPlayedIntoTheSinkFromItsMonitor) {
    const std::string tone = (home_.Path() / "tone.wav").string();
    WriteWave16(tone, 44100, 2, Tone(22050, 1000));
    std::vector<LSoundDeviceInfo> inputs;
    ASSERT_TRUE(GetSoundInputDevices(inputs));
    const LSoundDeviceInfo* monitor = Find(inputs, "turntable.monitor");
    ASSERT_TRUE(monitor);

    std::string error;
    std::unique_ptr<LSoundInputStream> input = OpenSoundInput(monitor->id, 44100, 2, error);
    ASSERT_TRUE(input) << error;
    EXPECT_EQ(input->GetSampleRate(), 44100);
    EXPECT_EQ(input->GetChannels(), 2);
    EXPECT_TRUE(input->SelectInputSource(0));
    EXPECT_TRUE(input->SetInputGain(1.25));
    InputCapture capture(*input, 2 * 4410);
    ASSERT_TRUE(capture.Start());

    std::atomic<bool> played{false};
    std::thread player([&] {
        RunCommand("paplay --latency-msec=50 --device=turntable " + ShellQuote(tone));
        played = true;
    });
    // Everything paplay played, and 300 ms more.
    std::vector<int16_t> recorded;
    bool collected = true;
    while (collected && !played)
        collected = capture.Next(recorded);
    collected = collected && capture.Collect(recorded, recorded.size() + 2 * 13230);
    player.join();
    input->Stop();
    ASSERT_TRUE(collected);

    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> block = LoudestBlock(recorded, channel);
        EXPECT_NEAR(DB(ToneAmplitude(block, 44100, 1000) / kAmplitude), 0, 0.5) << channel;
        EXPECT_LT(ResidualDB(block, 44100, 1000), -40) << channel;
    }
}

// Records the sink's monitor with parec for as long as it runs: from the moment it has
// delivered its first audio until 300 ms of audio after Stop was asked for.
class MonitorRecorder {
public:
    ~MonitorRecorder() {
        if (pipe_) Stop();
    }

    bool Start() {
        pipe_ = popen("echo $$; exec parec --device=turntable.monitor --format=s16le --rate=44100 "
                      "--channels=2 --latency-msec=20 --process-time-msec=10 --raw 2>/dev/null",
                      "r");
        if (!pipe_ || std::fscanf(pipe_, "%d\n", &pid_) != 1) return false;
        reader_ = std::thread([this] {
            int16_t block[512];
            size_t got;
            while ((got = std::fread(block, sizeof(int16_t), 512, pipe_)) > 0) {
                const std::lock_guard lock(mutex_);
                samples_.insert(samples_.end(), block, block + got);
                arrived_.notify_all();
            }
        });
        return WaitFor(4410 * 2);
    }

    std::vector<int16_t> Stop() {
        {
            std::unique_lock lock(mutex_);
            const size_t enough = samples_.size() + 2 * 13230;
            arrived_.wait_for(lock, 10s, [&] { return samples_.size() >= enough; });
        }
        kill(pid_, SIGTERM);
        reader_.join();
        pclose(pipe_);
        pipe_ = nullptr;
        return samples_;
    }

private:
    bool WaitFor(size_t samples) {
        std::unique_lock lock(mutex_);
        return arrived_.wait_for(lock, 10s, [&] { return samples_.size() >= samples; });
    }

    FILE* pipe_ = nullptr;
    int pid_ = 0;
    std::thread reader_;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<int16_t> samples_;
};

// A tone played through the sink is heard in full (parec records it at the set volume), and
// every buffer's completion comes in order once it has been played, never sooner; quiet and
// flush drop what was queued.
TEST_F(DevicesE2ETest, PlaysIntoTheSinkWithVolumeAndCompletesBuffersWhenPlayed) {
    std::vector<LSoundDeviceInfo> outputs;
    ASSERT_TRUE(GetSoundOutputDevices(outputs));
    const LSoundDeviceInfo* sink = Find(outputs, "turntable");
    ASSERT_TRUE(sink);

    MonitorRecorder heard;
    ASSERT_TRUE(heard.Start());
    struct Played {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<intptr_t> tags;
        std::chrono::steady_clock::time_point last;
        static void Done(void* user, void* tag) {
            auto* self = static_cast<Played*>(user);
            const std::lock_guard lock(self->mutex);
            self->tags.push_back(reinterpret_cast<intptr_t>(tag));
            self->last = std::chrono::steady_clock::now();
            self->changed.notify_all();
        }
    } played;
    const std::vector<int16_t> tone = Tone(44100, 440);
    std::string error;
    std::unique_ptr<LSoundOutputStream> output =
        OpenSoundOutput(sink->id, 44100, 2, Played::Done, &played, error);
    ASSERT_TRUE(output) << error;
    output->SetVolume(128, 256);
    const auto start = std::chrono::steady_clock::now();
    for (intptr_t b = 0; b < 10; ++b)
        ASSERT_TRUE(output->Play(tone.data() + 2 * 4410 * b, 4410, reinterpret_cast<void*>(b)));
    {
        std::unique_lock lock(played.mutex);
        ASSERT_TRUE(played.changed.wait_for(lock, 10s, [&] { return played.tags.size() == 10; }));
        EXPECT_EQ(played.tags, (std::vector<intptr_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
        // One second of audio cannot have been played in less than a second.
        EXPECT_GE(played.last - start, 980ms);
    }

    // Paused, quieted and flushed, the queue is gone: only what is queued afterwards plays.
    const std::vector<int16_t> silence(2 * 4410);
    for (intptr_t b = 10; b < 30; ++b)
        ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(b)));
    {
        std::unique_lock lock(played.mutex);
        ASSERT_TRUE(played.changed.wait_for(lock, 10s, [&] { return played.tags.size() > 10; }));
    }
    output->Pause();
    output->Quiet();
    output->Flush();
    output->Resume();
    ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(50)));
    ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(51)));
    {
        std::unique_lock lock(played.mutex);
        ASSERT_TRUE(played.changed.wait_for(lock, 10s, [&] { return played.tags.back() == 51; }));
        // At most the buffer after the one seen played may have slipped in before the pause.
        EXPECT_LE(played.tags.size(), 14u);
        EXPECT_EQ(played.tags[played.tags.size() - 2], 50);
    }
    output.reset();
    const std::vector<int16_t> samples = heard.Stop();
    const std::vector<double> left = LoudestBlock(samples, 0), right = LoudestBlock(samples, 1);
    EXPECT_NEAR(DB(ToneAmplitude(left, 44100, 440) / (kAmplitude / 2)), 0, 0.5);
    EXPECT_NEAR(DB(ToneAmplitude(right, 44100, 440) / kAmplitude), 0, 0.5);
    EXPECT_LT(ResidualDB(right, 44100, 440), -40);
}

} // namespace
