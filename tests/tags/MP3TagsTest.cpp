// MP3 tags on real files, checked against what ffprobe, mutagen and id3lib read and write.

#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"
#include "support/FileSizeLimit.h"
#include "tags/TagTestFiles.h"

#include <gtest/gtest.h>

#include <cstring>

#include <tuple>

using namespace tagtest;

namespace {

// The ID3v1 block of the file as mutagen parses it: "FRAME=text" lines.
std::string MutagenID3v1(const std::filesystem::path& path) {
    return RunMutagen("import sys\n"
                      "from mutagen.id3._id3v1 import ParseID3v1\n"
                      "data = open(sys.argv[1], 'rb').read()[-128:]\n"
                      "frames = ParseID3v1(data, 3)\n"
                      "for key in sorted(frames): print(key + '=' + str(frames[key]))\n",
                      path);
}

std::size_t ID3v2TagSize(const std::vector<uint8_t>& bytes) {
    return kID3v2HeaderSize + ID3v2DecodeTagSize(bytes.data() + 6);
}

// Each test starts from a tagless MP3 file in a private home.
class MP3Tags : public testing::Test {
protected:
    TempHome home_;
    const std::filesystem::path path_ = MakeMp3(home_.Path());
};

} // namespace

TEST_F(MP3Tags, WhatThisSystemWritesOtherProgramsRead) {
    // Our name, ffprobe's name, the value.
    const std::tuple<const char*, const char*, const char*> written[] = {
        {"TITLE", "title", kCafe},
        {"ARTIST", "artist", "Pina Bausch"},
        {"ALBUM", "album", "Tanztheater"},
        {"YEAR", "date", "1978"},
        {"TRACKNUMBER", "track", "3/12"},
        {"GENRE", "genre", "Jazz"},
        {"COMMENT", "comment", "Erste Seite \xC3\xA0 gauche"}};
    LAudioTagData tags;
    for (const auto& [name, probeName, value] : written)
        tags.SetTag(name, value, true);
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeAll, false));

    auto probed = FFprobeTags(path_);
    for (const auto& [name, probeName, value] : written)
        EXPECT_EQ(probed[probeName], value) << probeName;
    // The ID3v1 block holds the texts as stored, the track number and genre 8 (Jazz).
    const std::string id3v1 = MutagenID3v1(path_);
    for (const std::string& line : {std::string("TPE1=Pina Bausch"), std::string("TRCK=3"),
                                    std::string("TCON=8"), std::string("TYER=1978")})
        EXPECT_NE(id3v1.find(line + "\n"), std::string::npos) << id3v1;
    const std::vector<uint8_t> bytes = ReadFileBytes(path_);
    EXPECT_EQ(std::string(bytes.end() - 125, bytes.end() - 125 + std::strlen(kCafe)), kCafe);

    const LAudioTagData read = Read(path_);
    EXPECT_EQ(read.GetID3v2Version(), 3);
    for (const LHashTable::LHashNode& node : tags)
        EXPECT_EQ(read.GetTag(node.name.c_str()), node.value) << node.name;
    EXPECT_EQ(read.GetCount(), tags.GetCount());
}

TEST_F(MP3Tags, RewritingKeepsTheAudioAndOneID3v1Block) {
    const std::vector<uint8_t> audio = ReadFileBytes(path_);
    ASSERT_GT(audio.size(), 1000u);

    LAudioTagData tags;
    const std::string longTitle = "A title of thirty-one characters";
    ASSERT_EQ(longTitle.size(), 32u);
    tags.SetTag("TITLE", longTitle.substr(0, 31).c_str(), true);
    tags.SetTag("TRACKNUMBER", "3/12", true);
    tags.SetTag("GENRE", "rock", true);
    ASSERT_TRUE(tags.WriteTagsMP3(path_.c_str()));
    tags.SetTag("ARTIST", "Someone Else", true);
    tags.SetTag("GENRE", "My Genre", true);
    ASSERT_TRUE(tags.WriteTagsMP3(path_.c_str()));

    const std::vector<uint8_t> bytes = ReadFileBytes(path_);
    const std::size_t tagSize = ID3v2TagSize(bytes);
    ASSERT_EQ(bytes.size(), tagSize + audio.size() + 128);
    EXPECT_TRUE(std::equal(audio.begin(), audio.end(), bytes.begin() + tagSize));
    const uint8_t* block = &bytes[bytes.size() - 128];
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block), 3), "TAG");
    EXPECT_NE(std::string(reinterpret_cast<const char*>(block) - 128, 3), "TAG");
    // 29 characters and a zero in ID3v1; the whole title in ID3v2.
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block + 3)), longTitle.substr(0, 29));
    EXPECT_EQ(block[126], 3);
    // "My Genre" is no ID3v1 genre: the byte "rock" left stays.
    EXPECT_EQ(block[127], 17);
    const LAudioTagData read = Read(path_);
    EXPECT_EQ(read.GetTag("TITLE"), longTitle.substr(0, 31));
    EXPECT_EQ(read.GetTag("GENRE"), "My Genre");
    EXPECT_EQ(read.GetTag("TRACKNUMBER"), "3/12");

    // Without a genre the byte becomes 255, which no program reads as a genre; a genre on a
    // new block that is no ID3v1 genre is 0.
    tags.DeleteParm("GENRE");
    ASSERT_TRUE(tags.WriteTagsMP3(path_.c_str()));
    EXPECT_EQ(ReadFileBytes(path_).back(), 255);
    EXPECT_EQ(FFprobeTags(path_).count("genre"), 0u);
    const auto other = MakeMp3(home_.Path(), "other.mp3");
    tags.SetTag("GENRE", "My Genre", true);
    ASSERT_TRUE(tags.WriteTagsMP3(other.c_str()));
    EXPECT_EQ(ReadFileBytes(other).back(), 0);
}

TEST_F(MP3Tags, ID3v2WinsAndID3v1FillsTheGaps) {
    LAudioTagData old;
    old.SetTag("TITLE", "Old title", true);
    old.SetTag("YEAR", "1969", true);
    ASSERT_TRUE(old.WriteTagsID3v1(path_.c_str()));
    LAudioTagData current;
    current.SetTag("TITLE", "New title", true);
    ASSERT_TRUE(current.WriteTagsID3v2(path_.c_str()));

    const LAudioTagData read = Read(path_);
    EXPECT_EQ(read.GetTag("TITLE"), "New title");
    EXPECT_EQ(read.GetTag("YEAR"), "1969");
}

TEST_F(MP3Tags, ReadsTagsOfId3libAndReplacesMutagensVersion24) {
    int status = -1;
    RunCommand("id3v2 -a 'The Artist' -A 'The Album' -t 'The Title' -y 1999 -T 3/12 -g 17 "
               "-c 'A comment' " +
                   ShellQuote(path_.string()) + " 2>&1",
               &status);
    ASSERT_EQ(status, 0);
    LAudioTagData tags = Read(path_);
    EXPECT_EQ(tags.GetID3v2Version(), 3);
    ExpectTags(tags, {{"TITLE", "The Title"},
                      {"ARTIST", "The Artist"},
                      {"ALBUM", "The Album"},
                      {"YEAR", "1999"},
                      {"TRACKNUMBER", "3/12"},
                      {"GENRE", "Rock"},
                      {"COMMENT", "A comment"}});

    // Version 2.4 as mutagen writes it: UTF-8 texts, a user text and a picture. Its tags are
    // read, and a title change keeps what this system does not edit.
    const auto v24 = MakeMp3(home_.Path(), "v24.mp3");
    const std::string saved = RunMutagen(
        "import sys\n"
        "from mutagen.id3 import ID3, TIT2, TCOM, TXXX, APIC, PRIV\n"
        "tags = ID3()\n"
        "tags.add(TIT2(encoding=3, text='Version f\\u00fcnf'))\n"
        "tags.add(TCOM(encoding=3, text='Only in v2.4'))\n"
        "tags.add(TXXX(encoding=3, desc='CATALOG', text='VR-0042'))\n"
        "tags.add(APIC(encoding=3, mime='image/png', type=3, desc='Front', data=b'PNGDATA'))\n"
        "tags.add(PRIV(owner='org.example', data=b'\\x00\\x01'))\n"
        "tags.save(sys.argv[1], v2_version=4, v1=0)\n",
        v24, &status);
    ASSERT_EQ(status, 0) << saved;
    tags = Read(v24);
    EXPECT_EQ(tags.GetID3v2Version(), 4);
    ExpectTags(tags, {{"TITLE", "Version f\xC3\xBCnf"}, {"COMPOSER", "Only in v2.4"}});
    tags.SetTag("TITLE", "A new title", true);
    ASSERT_TRUE(tags.WriteTagsMP3(v24.c_str()));
    const std::string after = RunMutagen(
        "import sys\n"
        "from mutagen.id3 import ID3\n"
        "t = ID3(sys.argv[1])\n"
        "print(t.version[1], t['TIT2'].text[0], t['TCOM'].text[0], t['TXXX:CATALOG'].text[0])\n"
        "p = t.getall('APIC')[0]\n"
        "print(p.mime, int(p.type), p.desc, p.data, t.getall('PRIV')[0].owner)\n",
        v24, &status);
    EXPECT_EQ(status, 0) << after;
    EXPECT_EQ(after, "3 A new title Only in v2.4 VR-0042\nimage/png 3 Front b'PNGDATA' org.example\n");
}

TEST_F(MP3Tags, CoverImageIsWrittenAndReadBack) {
    const auto cover = home_.Path() / "cover.jpg";
    RunCommand("ffmpeg -v error -f lavfi -i color=red:s=16x16 -frames:v 1 " +
               ShellQuote(cover.string()) + " 2>&1");
    ASSERT_TRUE(std::filesystem::exists(cover));
    LAudioTagData tags;
    tags.SetTag("TITLE", "With cover", true);
    tags.SetImagePath(cover.string());
    ASSERT_TRUE(tags.WriteTagsMP3(path_.c_str()));

    const std::string streams = RunCommand("ffprobe -v error -show_entries stream=codec_name "
                                           "-of default=nw=1 " +
                                           ShellQuote(path_.string()));
    EXPECT_NE(streams.find("codec_name=mjpeg"), std::string::npos) << streams;
    std::string image;
    {
        // Each read keeps the picture in a private file of its own, gone with the last store.
        const LAudioTagData read = Read(path_);
        const LAudioTagData again = Read(path_);
        image = read.GetImagePath();
        EXPECT_NE(image, again.GetImagePath());
        EXPECT_EQ(ReadFileBytes(image), ReadFileBytes(cover));
        EXPECT_EQ(std::filesystem::status(image).permissions() & std::filesystem::perms::all,
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    }
    EXPECT_FALSE(std::filesystem::exists(image));

    // On a full disk a tag write fails and leaves the file byte for byte.
    const std::vector<uint8_t> before = ReadFileBytes(path_);
    tags.SetTag("COMMENT", std::string(200, 'c').c_str(), true);
    EXPECT_FALSE(WithFileSizeLimit(before.size(), [&] { return tags.WriteTagsMP3(path_.c_str()); }));
    EXPECT_EQ(ReadFileBytes(path_), before);
}

TEST_F(MP3Tags, DamagedOrMissingFilesFailAndLoseNothing) {
    const std::vector<uint8_t> audio = ReadFileBytes(path_);
    // A tag whose size runs past the end of the file.
    std::vector<uint8_t> bytes{'I', 'D', '3', 3, 0, 0, 0x7F, 0x7F, 0x7F, 0x7F};
    bytes.insert(bytes.end(), audio.begin(), audio.end());
    WriteFileBytes(path_, bytes);
    LAudioTagData tags;
    EXPECT_FALSE(tags.ReadTags(path_.c_str(), tagModeAll));
    EXPECT_TRUE(tags.IsEmpty());
    tags.SetTag("TITLE", "Repaired", true);
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeAll, false));
    const std::vector<uint8_t> written = ReadFileBytes(path_);
    const std::size_t tagSize = ID3v2TagSize(written);
    ASSERT_EQ(written.size(), tagSize + bytes.size() + 128);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), written.begin() + tagSize));
    EXPECT_EQ(Read(path_).GetTag("TITLE"), "Repaired");

    const auto missing = home_.Path() / "missing.mp3";
    EXPECT_FALSE(tags.ReadTags(missing.c_str(), tagModeAll));
    EXPECT_FALSE(tags.WriteTags(missing.c_str(), tagModeAll, false));
    EXPECT_FALSE(std::filesystem::exists(missing));
    const auto text = home_.Path() / "notes.txt";
    WriteFileBytes(text, {'h', 'i'});
    EXPECT_FALSE(tags.WriteTags(text.c_str(), tagModeAll, false));
    EXPECT_EQ(ReadFileBytes(text).size(), 2u);
}
