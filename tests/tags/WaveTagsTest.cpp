// Wave tags in LIST INFO, DISP, bext and cart chunks on real files, checked against ffprobe,
// ffmpeg and sox.

#include "tags/AudioTagData.h"
#include "tags/BWF.h"
#include "support/FileSizeLimit.h"
#include "tags/TagTestFiles.h"

#include <gtest/gtest.h>

#include <thread>

using namespace tagtest;

namespace {

struct Chunk {
    std::string id;
    uint32_t size;
    std::size_t offset;
};

// The sub-chunks of the file's RIFF WAVE form (which starts at offset 0).
std::vector<Chunk> Chunks(const std::vector<uint8_t>& bytes) {
    std::vector<Chunk> chunks;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const uint32_t size = Field32(bytes, at + 4);
        chunks.push_back({std::string(bytes.begin() + at, bytes.begin() + at + 4), size, at});
        at += 8 + ((std::size_t{size} + 1) & ~std::size_t{1});
    }
    return chunks;
}

std::vector<std::string> ChunkIds(const std::filesystem::path& path) {
    std::vector<std::string> ids;
    for (const Chunk& chunk : Chunks(ReadFileBytes(path)))
        ids.push_back(chunk.id);
    return ids;
}

// The sample bytes of the file's data chunk.
std::vector<uint8_t> Samples(const std::filesystem::path& path) {
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    for (const Chunk& chunk : Chunks(bytes))
        if (chunk.id == "data")
            return std::vector<uint8_t>(bytes.begin() + chunk.offset + 8,
                                        bytes.begin() + chunk.offset + 8 + chunk.size);
    return {};
}

std::vector<uint8_t> Text(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

// A 16-bit mono wave file with the chunks the builder holds before its data chunk.
void WriteWave(const std::filesystem::path& path, RiffBuilder chunks) {
    WriteFileBytes(path, chunks.Chunk("data", std::vector<uint8_t>(8, 0x11)).Bytes());
}

// An INFO sub-chunk: text, zero, pad.
std::string InfoEntry(const std::string& id, const std::string& text) {
    std::string entry = id + std::string(4, '\0') + text + '\0';
    entry[4] = static_cast<char>(text.size() + 1);
    if (entry.size() % 2) entry += '\0';
    return entry;
}

LAudioTagData SampleTags() {
    LAudioTagData tags;
    tags.SetTag("TITLE", kCafe, true);
    tags.SetTag("ARTIST", "Pina Bausch", true);
    tags.SetTag("ALBUM", "Tanztheater", true);
    tags.SetTag("YEAR", "1978", true);
    tags.SetTag("TRACKNUMBER", "3", true);
    tags.SetTag("GENRE", "Jazz", true);
    tags.SetTag("COMMENT", "Erste Seite", true);
    return tags;
}

// Each test starts from a tagless wave file in a private home.
class WaveTags : public testing::Test {
protected:
    TempHome home_;
    const std::filesystem::path path_ = MakeWave(home_.Path());
};

} // namespace

TEST_F(WaveTags, WhatThisSystemWritesFFprobeAndSoxReadAndAllModeAddsEveryChunk) {
    const std::vector<uint8_t> samples = Samples(path_);
    ASSERT_FALSE(samples.empty());
    LAudioTagData tags = SampleTags();
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeListInfo, false));

    auto probed = FFprobeTags(path_);
    for (const auto& [name, probeName] : {std::pair{"TITLE", "title"},
                                          {"ARTIST", "artist"},
                                          {"ALBUM", "album"},
                                          {"YEAR", "date"},
                                          {"TRACKNUMBER", "track"},
                                          {"GENRE", "genre"},
                                          {"COMMENT", "comment"}})
        EXPECT_EQ(probed[probeName], tags.GetTag(name)) << probeName;
    EXPECT_EQ(Samples(path_), samples);
    EXPECT_EQ(RunCommand("soxi -s " + ShellQuote(path_.string())), "22050\n");
    const std::vector<uint8_t> bytes = ReadFileBytes(path_);
    EXPECT_EQ(Field32(bytes, 4), bytes.size() - 8);

    // Written in every mode, three times: each chunk once (the chunks replaced before stay as
    // fillers, and the file stops growing), and every tag reads back.
    tags.SetTag("ORIGINATOR", "Vinora", true);
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeAll, false));
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeAll, false));
    const std::size_t size = ReadFileBytes(path_).size();
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeAll, false));
    EXPECT_EQ(ReadFileBytes(path_).size(), size);
    std::vector<std::string> live;
    for (const std::string& id : ChunkIds(path_))
        if (id != "    ") live.push_back(id);
    EXPECT_EQ(live, (std::vector<std::string>{"fmt ", "data", "LIST", "DISP", "bext", "cart"}));
    EXPECT_EQ(Samples(path_), samples);

    const LAudioTagData read = Read(path_, tagModeAll);
    for (const LHashTable::LHashNode& node : tags)
        EXPECT_EQ(read.GetTag(node.name.c_str()), node.value) << node.name;
    EXPECT_EQ(read.GetTag("CARTVERSION"), "0101");
    EXPECT_EQ(read.GetTag("BWFVERSION"), "1");
    // Only LIST INFO: nothing of the other chunks.
    EXPECT_FALSE(Read(path_, tagModeListInfo).HasParm("ORIGINATOR"));

    // Written with the file name as title and a track number; the store stays as it was.
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), true, 5));
    EXPECT_EQ(tags.GetTag("TITLE"), kCafe);
    EXPECT_EQ(Read(path_, tagModeListInfo).GetTag("TITLE"), "tone");
    EXPECT_EQ(Read(path_, tagModeCART).GetTag("TITLE"), "tone");
    EXPECT_EQ(Read(path_, tagModeListInfo).GetTag("TRACKNUMBER"), "5");
}

TEST_F(WaveTags, ListInfoReadsWhatFFmpegWrote) {
    const auto path = home_.Path() / "ffmpeg.wav";
    int status = -1;
    RunCommand("ffmpeg -v error -i " + ShellQuote(path_.string()) + " -metadata title=" +
                   ShellQuote(kCafe) + " -metadata artist=Someone -metadata date=2001 " +
                   "-metadata genre=Folk -metadata comment=Remastered -c copy " +
                   ShellQuote(path.string()) + " 2>&1",
               &status);
    ASSERT_EQ(status, 0);
    LAudioTagData tags;
    // No DISP chunk: not written by this system, but every tag is read.
    EXPECT_FALSE(tags.ReadTags(path.c_str(), tagModeListInfo));
    ExpectTags(tags, {{"TITLE", kCafe},
                      {"ARTIST", "Someone"},
                      {"YEAR", "2001"},
                      {"GENRE", "Folk"},
                      {"COMMENT", "Remastered"}});
    EXPECT_EQ(tags.GetTag("ENCODER").rfind("Lavf", 0), 0u) << tags.GetTag("ENCODER");

    // Rewritten by this system, ffmpeg's list becomes filler and ffprobe sees the new one.
    tags.SetTag("TITLE", "Changed", true);
    ASSERT_TRUE(tags.WriteTags(path.c_str(), tagModeListInfo, false));
    EXPECT_EQ(FFprobeTags(path)["title"], "Changed");
    EXPECT_EQ(Samples(path), Samples(path_));
}

TEST_F(WaveTags, ListInfoNeverOverwritesTheTagsItReplaces) {
    // A rewrite goes where the tags before the last ones were (or to the end), and only then
    // are the last ones given up: the file settles at two places of each size.
    LAudioTagData tags = SampleTags();
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    const std::size_t settled = ReadFileBytes(path_).size();
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    EXPECT_EQ(ReadFileBytes(path_).size(), settled);

    tags.SetTag("TITLE", "A much longer title than before", true);
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    EXPECT_EQ(ChunkIds(path_), (std::vector<std::string>{"fmt ", "data", "    ", "    ", "    ",
                                                         "    ", "LIST", "DISP"}));
    EXPECT_EQ(FFprobeTags(path_)["title"], "A much longer title than before");
    EXPECT_EQ(Read(path_, tagModeListInfo).GetTag("TITLE"), "A much longer title than before");

    // The first tags fit the first fillers again.
    const std::size_t size = ReadFileBytes(path_).size();
    tags.SetTag("TITLE", kCafe, true);
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    EXPECT_EQ(ReadFileBytes(path_).size(), size);
    EXPECT_EQ(ChunkIds(path_), (std::vector<std::string>{"fmt ", "data", "LIST", "DISP", "    ",
                                                         "    ", "    ", "    "}));
    EXPECT_EQ(Read(path_, tagModeListInfo).GetTag("TITLE"), kCafe);

    // On a full disk the new tags cannot be added: the old ones stay, the file byte for byte.
    const std::vector<uint8_t> before = ReadFileBytes(path_);
    tags.SetTag("ARTIST", std::string(200, 'a').c_str(), true);
    EXPECT_FALSE(WithFileSizeLimit(before.size(), [&] { return tags.WriteTagsWav(path_.c_str()); }));
    EXPECT_EQ(ReadFileBytes(path_), before);

    // A long value is cut so that it reads back as written.
    tags.SetTag("COMMENT", std::string(259, 'c').c_str(), true);
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    EXPECT_EQ(Read(path_, tagModeListInfo).GetTag("COMMENT"), std::string(257, 'c'));
}

TEST_F(WaveTags, ListInfoDamagedAndLarge) {
    const auto format = [] { return RiffBuilder().Format(1, 1, 44100, 16); };
    WriteWave(path_, format().Chunk("LIST", Text("INFO" + InfoEntry("INAM", "Fine") +
                                                 InfoEntry("ICMT", std::string(299, 'x')))));
    LAudioTagData tags;
    EXPECT_FALSE(tags.ReadTagsWAV(path_.c_str(), true));

    // 900 bytes of short entries, an unknown entry and a list of another type.
    std::string info = "INFO";
    for (int i = 0; i < 60; ++i)
        info += InfoEntry("ICMT", "comment " + std::to_string(i));
    info += InfoEntry("IXYZ", "unknown") + InfoEntry("INAM", "Title");
    ASSERT_GT(info.size(), 900u);
    WriteWave(
        path_,
        format().Chunk("LIST", Text("adtllabl" + std::string(8, '\0'))).Chunk("LIST", Text(info)));
    tags.Clear();
    EXPECT_FALSE(tags.ReadTagsWAV(path_.c_str(), true)); // no DISP
    ExpectTags(tags, {{"COMMENT", "comment 59"}, {"NULL", "unknown"}, {"TITLE", "Title"}});
    // Writing leaves the label list alone.
    ASSERT_TRUE(tags.WriteTagsWav(path_.c_str()));
    EXPECT_EQ(ChunkIds(path_),
              (std::vector<std::string>{"fmt ", "LIST", "    ", "data", "LIST", "DISP"}));

    // A list larger than the file.
    WriteWave(path_, format().Chunk("LIST", Text("INFO" + InfoEntry("INAM", "Fine")), 0x7F0000FF));
    EXPECT_FALSE(tags.ReadTagsWAV(path_.c_str(), true));
    // A file without a wave form.
    WriteFileBytes(path_, {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'A', 'V', 'I', ' '});
    EXPECT_FALSE(tags.ReadTags(path_.c_str(), tagModeAll));
    EXPECT_FALSE(tags.WriteTags(path_.c_str(), tagModeAll, false));
    EXPECT_EQ(ReadFileBytes(path_).size(), 12u);
}

TEST_F(WaveTags, BextRoundTripWithCodingHistory) {
    std::string umid;
    for (int i = 0; i < 64; ++i)
        umid += std::to_string((i * 37) % 256) + ",";
    const std::pair<const char*, std::string> fields[] = {{"COMMENT", "Side one of the record"},
                                                          {"ORIGINATOR", "Vinora"},
                                                          {"REFERENCE", "REF-0001"},
                                                          {"DATE", "2024-05-01"},
                                                          {"TIME", "12:34:56"},
                                                          {"TIMEREFLOW", "4000000000"},
                                                          {"UMID", umid}};
    LAudioTagData tags;
    for (const auto& [name, value] : fields)
        tags.SetTag(name, value.c_str(), true);
    tags.SetTag("BWFVERSION", "7", true);
    ASSERT_TRUE(tags.WriteTagsBWF(path_.c_str(), true));

    LAudioTagData read;
    ASSERT_TRUE(read.ReadTags(path_.c_str(), tagModeBWF));
    for (const auto& [name, value] : fields)
        EXPECT_EQ(read.GetTag(name), value) << name;
    const std::string line = "A=Microsoft PCM Format F=44100 W=16 M=stereo\r\n";
    ExpectTags(read, {{"TIMEREFHIGH", "0"}, {"BWFVERSION", "1"}, {"CODINGHISTORY", line}});

    // ffmpeg shows the originator as "encoded_by" and the date as "date".
    auto probed = FFprobeTags(path_);
    EXPECT_EQ(probed["comment"], "Side one of the record");
    EXPECT_EQ(probed["encoded_by"], "Vinora");
    EXPECT_EQ(probed["date"], "2024-05-01");
    EXPECT_EQ(probed["time_reference"], "4000000000");
    EXPECT_EQ(probed["coding_history"].rfind("A=Microsoft PCM Format F=44100 W=16 M=stereo", 0),
              0u);

    // Copying the tags to another file adds a line to the history read.
    const auto copy = MakeWave(home_.Path(), "copy.wav");
    ASSERT_TRUE(read.WriteTagsBWF(copy.c_str(), true));
    EXPECT_EQ(Read(copy, tagModeBWF).GetTag("CODINGHISTORY"), line + line);

    // Unchanged tags written again take the second place, then the first again.
    ASSERT_TRUE(read.WriteTagsBWF(path_.c_str(), false));
    const std::vector<uint8_t> before = ReadFileBytes(path_);
    ASSERT_TRUE(read.WriteTagsBWF(path_.c_str(), false));
    ASSERT_TRUE(read.WriteTagsBWF(path_.c_str(), false));
    EXPECT_EQ(ReadFileBytes(path_), before);
    EXPECT_EQ(ChunkIds(path_), (std::vector<std::string>{"fmt ", "data", "    ", "bext"}));
}

TEST_F(WaveTags, CartFieldsPostTimersAndTagText) {
    LAudioTagData tags;
    tags.SetTag("TITLE", kCafe, true);
    tags.SetTag("CUTID", "CUT42", true);
    tags.SetTag("CATEGORY", "MUS", true);
    tags.SetTag("ENCODEDBY", "Vinora", true);
    tags.SetTag("LEVELREFERENCE", "-12", true);
    tags.SetTag("POSTTIMER1USAGE", "SEGX", true);
    tags.SetTag("POSTTIMER1VALUE", "44100", true);
    tags.SetTag("URL", "http://example.org/cart", true);
    tags.SetParmBottom("TAGTEXT", std::string(400, 't').c_str());
    ASSERT_TRUE(tags.WriteTags(path_.c_str(), tagModeCART, false));

    const std::vector<uint8_t> bytes = ReadFileBytes(path_);
    const Chunk cart = Chunks(bytes).back();
    ASSERT_EQ(cart.id, "cart");
    EXPECT_EQ(cart.size, 2048u + 400 + 1);
    const std::size_t body = cart.offset + 8;
    EXPECT_EQ(std::string(bytes.begin() + body, bytes.begin() + body + 4), "0101");
    EXPECT_EQ(std::string(bytes.begin() + body + 684, bytes.begin() + body + 688),
              std::string("SEG\0", 4));

    LAudioTagData read;
    ASSERT_TRUE(read.ReadTags(path_.c_str(), tagModeCART));
    for (const LHashTable::LHashNode& node : tags)
        if (node.name != "POSTTIMER1USAGE") {
            EXPECT_EQ(read.GetTag(node.name.c_str()), node.value) << node.name;
        }
    ExpectTags(read,
               {{"CARTVERSION", "0101"}, {"POSTTIMER1USAGE", "SEG"}, {"POSTTIMER2VALUE", "0"}});
}

TEST_F(WaveTags, OperationsOfTwoThreadsNeverMixTheSharedRecords) {
    const std::filesystem::path paths[2] = {path_, MakeWave(home_.Path(), "b.wav")};
    int mixed[2] = {0, 0};
    const auto run = [&](int which) {
        const std::string name = which == 0 ? "First" : "Second one";
        for (int i = 0; i < 40; ++i) {
            LAudioTagData tags;
            tags.SetTag("ORIGINATOR", name.c_str(), true);
            tags.SetTag("CUTID", name.c_str(), true);
            tags.WriteTags(paths[which].c_str(), tagModeAll, false);
            const LAudioTagData read = Read(paths[which], tagModeAll);
            if (read.GetTag("ORIGINATOR") != name || read.GetTag("CUTID") != name) ++mixed[which];
        }
    };
    std::thread other(run, 1);
    run(0);
    other.join();
    EXPECT_EQ(mixed[0], 0);
    EXPECT_EQ(mixed[1], 0);
}
