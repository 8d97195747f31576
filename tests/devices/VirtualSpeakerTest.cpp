#include "devices/DeviceTestUtil.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// Records which buffers the device reports played.
struct Played {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<void*> tags;

    static void Done(void* user, void* tag) {
        auto* self = static_cast<Played*>(user);
        const std::lock_guard lock(self->mutex);
        self->tags.push_back(tag);
        self->changed.notify_all();
    }
    bool WaitFor(size_t count) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10),
                                [&] { return tags.size() >= count; });
    }
};

// The file holds what was played with the volume applied; buffers flushed before they started
// are never played and report nothing.
TEST(VirtualSpeakerTest, WritesPlayedAudioWithVolumeAndDropsFlushedBuffers) {
    TempHome home;
    const std::string path = (home.Path() / "speaker.wav").string();
    const ScopedEnv env("VINORA_VIRTUAL_SPEAKER", path + ",speed=0");
    const std::vector<int16_t> a = Pattern(2 * 3000, 1), b = Pattern(2 * 4410, 2),
                               c = Pattern(2 * 500, 3), d = Pattern(2 * 4410, 4);
    Played played;
    std::string error;
    {
        std::unique_ptr<LSoundOutputStream> output =
            OpenSoundOutput(kVirtualSpeakerId, 44100, 2, Played::Done, &played, error);
        ASSERT_TRUE(output) << error;
        EXPECT_EQ(output->GetSampleRate(), 44100);
        EXPECT_EQ(output->GetChannels(), 2);
        output->SetVolume(128, 512);
        ASSERT_TRUE(output->Play(a.data(), 3000, (void*)1));
        ASSERT_TRUE(played.WaitFor(1));
        output->Pause();
        ASSERT_TRUE(output->Play(b.data(), 4410, (void*)2));
        ASSERT_TRUE(output->Play(c.data(), 500, (void*)3));
        output->Flush();
        output->Resume();
        ASSERT_TRUE(output->Play(d.data(), 4410, (void*)4));
        ASSERT_TRUE(played.WaitFor(2));
    }
    EXPECT_EQ(played.tags, (std::vector<void*>{(void*)1, (void*)4}));

    int rate = 0, channels = 0;
    const std::vector<int16_t> file = ReadWave16(path, &rate, &channels);
    EXPECT_EQ(rate, 44100);
    EXPECT_EQ(channels, 2);
    std::vector<int16_t> expected;
    for (const std::vector<int16_t>* buffer : {&a, &d})
        for (size_t i = 0; i < buffer->size(); i += 2) {
            expected.push_back(static_cast<int16_t>((*buffer)[i] * 128 / 256));
            expected.push_back(
                static_cast<int16_t>(std::clamp((*buffer)[i + 1] * 2, -32768, 32767)));
        }
    EXPECT_EQ(file, expected);
}

TEST(VirtualSpeakerTest, RefusesAFileItCannotWrite) {
    const ScopedEnv env("VINORA_VIRTUAL_SPEAKER", "/nonexistent-folder/out.wav");
    std::string error;
    EXPECT_FALSE(OpenSoundOutput(kVirtualSpeakerId, 44100, 2, Played::Done, nullptr, error));
    EXPECT_NE(error.find("/nonexistent-folder/out.wav"), std::string::npos) << error;
}

} // namespace
