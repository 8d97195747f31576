#include "codecs/MP3File.h"
#include "devices/DeviceTestUtil.h"
#include "devices/VirtualDeviceSetting.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>

namespace {

// A recognisable pattern: every value differs from its neighbours and from the next buffer's.
std::vector<int16_t> Pattern(int samples) {
    std::vector<int16_t> values(samples);
    uint32_t state = 12345;
    for (int16_t& value : values) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<int16_t>(state >> 16);
    }
    return values;
}

class VirtualTurntableTest : public ::testing::Test {
protected:
    std::string Path(const char* name) const { return (home_.Path() / name).string(); }

    TempHome home_;
};

// At "as fast as the consumer reads" a slow consumer still gets every buffer intact: the
// file bit for bit in pieces of the armed size, then silence once HasEnded turns true.
TEST_F(VirtualTurntableTest, DeliversTheFileBitForBitThenSilence) {
    const std::string path = Path("side.wav");
    const int frames = 44100 + 1234; // not a whole number of buffers
    const std::vector<int16_t> file = Pattern(2 * frames);
    WriteWave16(path, 44100, 2, file);
    const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", path + ",speed=0");

    std::string error;
    std::unique_ptr<LSoundInputStream> input = OpenSoundInput(kVirtualTurntableId, 48000, 1, error);
    ASSERT_TRUE(input) << error;
    EXPECT_EQ(input->GetSampleRate(), 44100);
    EXPECT_EQ(input->GetChannels(), 2);
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
    const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", path + ",speed=25");

    std::string error;
    std::unique_ptr<LSoundInputStream> input = OpenSoundInput(kVirtualTurntableId, 44100, 2, error);
    ASSERT_TRUE(input) << error;
    EXPECT_EQ(input->GetSampleRate(), 48000);
    EXPECT_EQ(input->GetChannels(), 1);
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
    const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", path + ",speed=0");

    std::string error;
    std::unique_ptr<LSoundInputStream> input = OpenSoundInput(kVirtualTurntableId, 44100, 2, error);
    ASSERT_TRUE(input) << error;
    EXPECT_EQ(input->GetSampleRate(), 32000);
    EXPECT_EQ(input->GetChannels(), decoder->GetChannels());

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
    std::string error;
    {
        const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", Path("missing.wav"));
        EXPECT_FALSE(OpenSoundInput(kVirtualTurntableId, 44100, 2, error));
        EXPECT_NE(error.find("missing.wav"), std::string::npos) << error;
        EXPECT_NE(error.find("could not be opened"), std::string::npos) << error;
    }
    {
        const ScopedEnv env("VINORA_VIRTUAL_TURNTABLE", Path("x.wav") + ",speed=fast");
        EXPECT_FALSE(OpenSoundInput(kVirtualTurntableId, 44100, 2, error));
        EXPECT_NE(error.find("\"fast\""), std::string::npos) << error;
    }
}

TEST(VirtualDeviceSettingTest, ReadsPathAndSpeed) {
    LVirtualDeviceSetting setting;
    std::string error;
    {
        const ScopedEnv env("VINORA_TEST_DEVICE", "/tmp/a,b.wav,speed=2.5");
        ASSERT_TRUE(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error));
        EXPECT_EQ(setting.path, "/tmp/a,b.wav");
        EXPECT_EQ(setting.speed, 2.5);
    }
    {
        const ScopedEnv env("VINORA_TEST_DEVICE", "/tmp/side.mp3");
        ASSERT_TRUE(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error));
        EXPECT_EQ(setting.path, "/tmp/side.mp3");
        EXPECT_EQ(setting.speed, 1);
    }
    {
        const ScopedEnv env("VINORA_TEST_DEVICE", ",speed=0");
        ASSERT_TRUE(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error));
        EXPECT_EQ(setting.path, "");
        EXPECT_EQ(setting.speed, 0);
    }
    {
        const ScopedEnv env("VINORA_TEST_DEVICE", "/tmp/x.wav,speed=-1");
        EXPECT_FALSE(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error));
    }
    unsetenv("VINORA_TEST_DEVICE");
    ASSERT_TRUE(LReadVirtualDeviceSetting("VINORA_TEST_DEVICE", setting, error));
    EXPECT_EQ(setting.path, "");
    EXPECT_EQ(setting.speed, 1);
}

} // namespace
