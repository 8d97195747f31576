// The sound devices over a private PulseAudio server: the listing, and playing into its null
// sink as parec hears it from the monitor.
#include "E2ETestUtil.h"

#include "devices/SoundDevices.h"
#include "support/ToneSignals.h"

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

// One channel of interleaved stereo 16-bit audio around its loudest 100 ms.
std::vector<double> LoudestBlock(const std::vector<int16_t>& samples, int channel) {
    size_t best = 0;
    double bestEnergy = -1;
    for (size_t at = 0; at + 4410 <= samples.size() / 2; at += 2205) {
        const double energy = RMS(Channel16(samples, channel, at, 4410));
        if (energy > bestEnergy) {
            bestEnergy = energy;
            best = at;
        }
    }
    return Channel16(samples, channel, best, 4410);
}

const LSoundDeviceInfo* Find(const std::vector<LSoundDeviceInfo>& devices,
                             const std::string& name) {
    for (const LSoundDeviceInfo& device : devices)
        if (device.serverName == name) return &device;
    return nullptr;
}

using DevicesE2ETest = PulseE2E;

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
    const std::string listing = Cli("devices", &status, "", "2>/dev/null");
    EXPECT_EQ(status, 0);
    EXPECT_NE(listing.find("  Monitor of Null Output [turntable.monitor] (default)\n"),
              std::string::npos)
        << listing;
    EXPECT_NE(listing.find("Output devices:\n  Null Output [turntable] (default)\n"),
              std::string::npos)
        << listing;
    EXPECT_NE(listing.find("  Virtual Speaker [virtual-speaker]\n"), std::string::npos) << listing;

    const std::string alone =
        Cli("devices", &status, "PULSE_SERVER=unix:/nonexistent/native ", "2>/dev/null");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(alone, "Input devices:\n  Virtual Turntable [virtual-turntable] (default)\n"
                     "Output devices:\n  Virtual Speaker [virtual-speaker] (default)\n");
}

// A tone played through the sink is heard in full (parec records it at the set volume), and
// every buffer's completion comes in order once it has been played, never sooner; quiet and
// flush drop what was queued.
TEST_F(DevicesE2ETest, PlaysIntoTheSinkWithVolumeAndCompletesBuffersWhenPlayed) {
    std::vector<LSoundDeviceInfo> outputs;
    ASSERT_TRUE(GetSoundOutputDevices(outputs));
    const LSoundDeviceInfo* sink = Find(outputs, "turntable");
    ASSERT_TRUE(sink);

    MonitorRecording heard(home_.Path() / "heard.raw", 4);
    heard.Listen();
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
    // Waits until the completions seen so far satisfy `done`.
    const auto waitFor = [&played](auto done) {
        std::unique_lock lock(played.mutex);
        return played.changed.wait_for(lock, 10s, [&] { return done(played.tags); });
    };
    output->SetVolume(128, 256);
    const auto start = std::chrono::steady_clock::now();
    for (intptr_t b = 0; b < 10; ++b)
        ASSERT_TRUE(output->Play(tone.data() + 2 * 4410 * b, 4410, reinterpret_cast<void*>(b)));
    ASSERT_TRUE(waitFor([](const auto& tags) { return tags.size() == 10; }));
    EXPECT_EQ(played.tags, (std::vector<intptr_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    // One second of audio cannot have been played in less than a second.
    EXPECT_GE(played.last - start, 980ms);

    // Paused, quieted and flushed, the queue is gone: only what is queued afterwards plays.
    const std::vector<int16_t> silence(2 * 4410);
    for (intptr_t b = 10; b < 30; ++b)
        ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(b)));
    ASSERT_TRUE(waitFor([](const auto& tags) { return tags.size() > 10; }));
    output->Pause();
    output->Quiet();
    output->Flush();
    output->Resume();
    ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(50)));
    ASSERT_TRUE(output->Play(silence.data(), 4410, reinterpret_cast<void*>(51)));
    ASSERT_TRUE(waitFor([](const auto& tags) { return tags.back() == 51; }));
    // At most the buffer after the one seen played may have slipped in before the pause.
    EXPECT_LE(played.tags.size(), 14u);
    EXPECT_EQ(played.tags[played.tags.size() - 2], 50);
    output.reset();
    const std::vector<int16_t> samples = heard.Heard();
    const std::vector<double> left = LoudestBlock(samples, 0), right = LoudestBlock(samples, 1);
    EXPECT_NEAR(DB(ToneAmplitude(left, 44100, 440) / (kAmplitude / 2)), 0, 0.5);
    EXPECT_NEAR(DB(ToneAmplitude(right, 44100, 440) / kAmplitude), 0, 0.5);
    EXPECT_LT(ResidualDB(right, 44100, 440), -40);
}

} // namespace
