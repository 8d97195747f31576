#include "codecs/MP3File.h"
#include "devices/DeviceTestUtil.h"
#include "devices/VirtualDeviceSetting.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <optional>

namespace {

class VirtualTurntableTest : public ::testing::Test {
protected:
    std::string Path(const char* name) const { return (home_.Path() / name).string(); }

    // Opens the turntable on `setting`, asking for another format than the file's: the device
    // takes the file's own rate and channel count.
    std::unique_ptr<LSoundInputStream> Open(const std::string& setting, int rate, int channels) {
        env_.emplace("VINORA_VIRTUAL_TURNTABLE", setting);
        std::string error;
        std::unique_ptr<LSoundInputStream> input =
            OpenSoundInput(kVirtualTurntableId, 22050, channels == 1 ? 2 : 1, error);
        EXPECT_TRUE(input) << error;
        if (input) {
            EXPECT_EQ(input->GetSampleRate(), rate);
            EXPECT_EQ(input->GetChannels(), channels);
        }
        return input;
    }

    TempHome home_;
    std::optional<ScopedEnv> env_;
};

// At "as fast as the consumer reads" a slow consumer still gets every buffer intact: the
// file bit for bit in pieces of the armed size, then silence once HasEnded turns true.
TEST_F(VirtualTurntableTest, DeliversTheFileBitForBitThenSilence) {
    const std::string path = Path("side.wav");
    const int frames = 44100 + 1234; // not a whole number of buffers
    const std::vector<int16_t> file = Pattern(2 * frames);
    WriteWave16(path, 44100, 2, file);
    const std::unique_ptr<LSoundInputStream> input = Open(path + ",speed=0", 44100, 2);
    ASSERT_TRUE(input);
    EXPECT_TRUE(input->SetInputGain(1.25));

    const int bufferSamples = 2 * 4410;
    InputCapture capture(*input, bufferSamples);
    ASSERT_TRUE(capture.Start());
    std::vector<int16_t> got;
    while (got.size() < file.size()) {
        // Every other buffer is read late, giving an overwrite the chance to show.
        ASSERT_TRUE(capture.Next(got, std::chrono::milliseconds(got.size() % 2 ? 0 : 3)));
    }
    EXPECT_TRUE(input->HasEnded());
    ASSERT_TRUE(capture.Next(got));
    ASSERT_EQ(got.size(), static_cast<size_t>(12 * bufferSamples));
    EXPECT_TRUE(std::equal(file.begin(), file.end(), got.begin()));
    EXPECT_TRUE(std::all_of(got.begin() + static_cast<long>(file.size()), got.end(),
                            [](int16_t v) { return v == 0; }));
}

// At a speed above zero the turntable completes buffers on its own clock; the content is the
// same and the gain scales it (1.25 is unity, so 0.625 halves it).
TEST_F(VirtualTurntableTest, PacedDeliveryKeepsTheContentAndAppliesTheGain) {
    const std::string path = Path("mono48k.wav");
    const std::vector<int16_t> file = Pattern(48000 / 2);
    WriteWave16(path, 48000, 1, file);
    const std::unique_ptr<LSoundInputStream> input = Open(path + ",speed=25", 48000, 1);
    ASSERT_TRUE(input);
    EXPECT_TRUE(input->SetInputGain(0.625));

    // Keeps each buffer from inside the completion and re-arms it until the file has ended.
    struct Collected {
        LSoundInputStream* input = nullptr;
        std::vector<int16_t> buffer = std::vector<int16_t>(4800);
        std::vector<int16_t> samples;
        std::atomic<bool> ended{false};

        static void Done(void* user, int16_t* buffer) {
            auto* c = static_cast<Collected*>(user);
            c->samples.insert(c->samples.end(), buffer, buffer + c->buffer.size());
            if (c->input->HasEnded())
                c->ended = true;
            else
                c->input->Record(buffer, static_cast<int>(c->buffer.size()), Done, c);
        }
    } collected;
    collected.input = input.get();
    ASSERT_TRUE(input->Record(collected.buffer.data(), 4800, Collected::Done, &collected));
    for (int wait = 0; wait < 1000 && !collected.ended; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    input->Stop();
    ASSERT_TRUE(collected.ended);
    ASSERT_EQ(collected.samples.size(), file.size());
    for (size_t i = 0; i < file.size(); ++i)
        ASSERT_EQ(collected.samples[i], static_cast<int16_t>((file[i] * 32768 + 32768) >> 16)) << i;
}

// A file named .mp3 is decoded: the device takes the stream's own rate and channel count and
// delivers what the decoder makes of it.
TEST_F(VirtualTurntableTest, PlaysMP3FilesAtTheirOwnFormat) {
    const std::string path = Path("side.mp3");
    std::filesystem::copy_file(VINORA_TESTDATA "/mp3-conformance/l3-he_32khz.bit", path);
    LSoundSource decoder = LMP3File::OpenSource(path.c_str());
    ASSERT_EQ(decoder->GetError(), sndErrNone);
    const std::unique_ptr<LSoundInputStream> input = Open(path + ",speed=0", 32000, decoder->GetChannels());
    ASSERT_TRUE(input);

    const int bufferSamples = 3200 * decoder->GetChannels();
    InputCapture capture(*input, bufferSamples);
    ASSERT_TRUE(capture.Start());
    std::vector<int16_t> got;
    ASSERT_TRUE(capture.Collect(got, 3 * static_cast<size_t>(bufferSamples)));
    std::vector<int> expected(got.size());
    decoder->Read(expected.data(), static_cast<int>(got.size()) / decoder->GetChannels());
    for (size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(got[i], std::clamp((expected[i] + 8) >> 4, -32768, 32767)) << i;
}

TEST_F(VirtualTurntableTest, RefusesFilesItCannotPlayWithTheReason) {
    const struct {
        std::string setting;
        std::vector<const char*> reason;
    } cases[] = {
        {Path("missing.wav"), {"missing.wav", "could not be opened"}},
        {Path("x.wav") + ",speed=fast", {"\"fast\""}},
    };
    for (const auto& c : cases) {
        const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", c.setting);
        std::string error;
        EXPECT_FALSE(OpenSoundInput(kVirtualTurntableId, 44100, 2, error)) << c.setting;
        for (const char* part : c.reason) EXPECT_NE(error.find(part), std::string::npos) << error;
    }
}

TEST(VirtualDeviceSettingTest, ReadsPathAndSpeed) {
    const struct {
        const char* value; // nullptr: not set
        bool valid;
        const char* path;
        double speed;
    } cases[] = {
        {"/tmp/a,b.wav,speed=2.5", true, "/tmp/a,b.wav", 2.5},
        {"/tmp/side.mp3", true, "/tmp/side.mp3", 1},
        {",speed=0", true, "", 0},
        {"/tmp/x.wav,speed=-1", false, "", 0},
        {nullptr, true, "", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value ? c.value : "not set");
        const ScopedEnv env("VINORA_TEST_DEVICE");
        if (c.value) setenv("VINORA_TEST_DEVICE", c.value, 1);
        LVirtualDeviceSetting setting;
        std::string error;
        ASSERT_EQ(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error), c.valid);
        if (c.valid) {
            EXPECT_EQ(setting.path, c.path);
            EXPECT_EQ(setting.speed, c.speed);
        }
    }
}

} // namespace
