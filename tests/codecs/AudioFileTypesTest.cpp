#include "codecs/AudioFileTypes.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(AudioFileTypes, FileNamesFindTheirTypeByExtension) {
    const struct {
        const char* path;
        LNameMatch match;
        const char* extension; // nullptr: no type
    } cases[] = {
        {"/music/Song.WAV", LNameMatch::anyCase, ".wav"},
        {"/music/Song.WAV", LNameMatch::exact, nullptr},
        {"track.mp3", LNameMatch::exact, ".mp3"},
        {"/a.b/track.Mp3", LNameMatch::anyCase, ".mp3"},
        {"/music/notes.txt", LNameMatch::anyCase, nullptr},
        {"/music/.wav", LNameMatch::anyCase, ".wav"},
        {".wav", LNameMatch::anyCase, nullptr},
        {"/music/wav", LNameMatch::anyCase, nullptr},
    };
    for (const auto& c : cases) {
        const LAudioFileType* type = LFindAudioFileType(c.path, c.match);
        if (!c.extension) {
            EXPECT_EQ(type, nullptr) << c.path;
            continue;
        }
        ASSERT_NE(type, nullptr) << c.path;
        EXPECT_STREQ(type->extension, c.extension) << c.path;
    }
    EXPECT_EQ(LFindAudioFileType("x.mp3")->tags, LAudioTagKind::id3);
    EXPECT_EQ(LFindAudioFileType("x.wav")->tags, LAudioTagKind::riff);
    const LFileFilter filter = LAudioFilesFilter();
    EXPECT_EQ(filter.name, "Audio Files");
    EXPECT_EQ(filter.patterns, (std::vector<std::string>{"*.wav", "*.mp3"}));
}
