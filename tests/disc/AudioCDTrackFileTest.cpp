// The converted track files as the disc service reads them: the AIFF parser, the track length
// in blocks and the producer's CD frames.
#include "codecs/AiffFile.h"
#include "disc/AudioCDTrackFile.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

struct AiffLayout {
    uint16_t channels = 2;
    uint32_t frames = 1;
    uint16_t bits = 16;
    unsigned rate = 44100;
    std::vector<int16_t> samples; // interleaved, written big-endian
    int64_t ssndSize = -1;        // -1: the true size
    uint32_t offset = 0;
};

void Put32(std::string& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += char(v >> shift);
}
void Put16(std::string& out, uint16_t v) {
    out += char(v >> 8);
    out += char(v);
}

std::string MakeAiff(const AiffLayout& layout) {
    std::string data(layout.offset, '\0');
    for (int16_t s : layout.samples) Put16(data, uint16_t(s));
    std::string body = "AIFF";
    body += "COMM";
    Put32(body, 18);
    Put16(body, layout.channels);
    Put32(body, layout.frames);
    Put16(body, layout.bits);
    unsigned char rate[10];
    LConvert32to80(rate, layout.rate);
    body.append(reinterpret_cast<char*>(rate), 10);
    body += "SSND";
    Put32(body, layout.ssndSize >= 0 ? uint32_t(layout.ssndSize) : uint32_t(data.size() + 8));
    Put32(body, layout.offset);
    Put32(body, 0);
    body += data;
    std::string file = "FORM";
    Put32(file, uint32_t(body.size()));
    return file + body;
}

class TrackFolder : public ::testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& content) {
        const std::string path = folder + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    TempHome home;
    std::string folder = home.Path().string();
};

std::vector<int16_t> Produce(LAudioTrackRef& track, uint32_t bytes) {
    std::vector<uint8_t> out(bytes);
    LTrackProductionInfo info{out.data(), bytes, 0};
    EXPECT_EQ(sampleTrackProducerCallback(track, kProducerPreBurn, nullptr), 0);
    EXPECT_EQ(sampleTrackProducerCallback(track, kProducerProduce, &info), 0);
    EXPECT_EQ(sampleTrackProducerCallback(track, kProducerPostBurn, nullptr), 0);
    EXPECT_EQ(track.fd, 0);
    std::vector<int16_t> samples;
    for (uint32_t i = 0; i + 1 < info.producedBytes; i += 2)
        samples.push_back(int16_t(out[i] | out[i + 1] << 8)); // little-endian
    return samples;
}

} // namespace

TEST_F(TrackFolder, ParserTakesTheRatesAndChannelCountsACdTrackCanBeMadeOf) {
    struct Case {
        const char* what;
        AiffLayout layout;
        bool parses;
    } cases[] = {
        {"44100 Hz stereo", {2, 1, 16, 44100, {1, 2}}, true},
        {"22050 Hz", {2, 1, 16, 22050, {1, 2}}, true},
        {"48000 Hz", {2, 1, 16, 48000, {1, 2}}, false},
        {"five channels", {5, 1, 16, 44100, {1, 2, 3, 4, 5}}, false},
        {"six channels", {6, 1, 16, 44100, {1, 2, 3, 4, 5, 6}}, true},
        {"seven channels", {7, 1, 16, 44100, {1, 2, 3, 4, 5, 6, 7}}, false},
        {"no channels", {0, 1, 16, 44100, {}}, false},
        {"no frames", {2, 0, 16, 44100, {}}, false},
        {"sample size 0", {2, 1, 0, 44100, {1, 2}}, false},
    };
    for (const Case& c : cases) {
        LAudioTrackRef track;
        EXPECT_EQ(ParseAiffTrack(Write("t.aiff", MakeAiff(c.layout)), track), c.parses) << c.what;
    }
    LAudioTrackRef track;
    EXPECT_FALSE(ParseAiffTrack(Write("w.aiff", "RIFF....WAVEfmt "), track));
    EXPECT_FALSE(ParseAiffTrack(folder + "/missing.aiff", track));
}

TEST_F(TrackFolder, ParserPlacesTheSoundDataAndFallsBackToTheFileEnd) {
    AiffLayout layout{2, 3, 16, 44100, {1, 2, 3, 4, 5, 6}};
    layout.offset = 4;
    LAudioTrackRef track;
    ASSERT_TRUE(ParseAiffTrack(Write("a.aiff", MakeAiff(layout)), track));
    // FORM header 12, COMM 8 + 18, SSND header 16, then the offset.
    EXPECT_EQ(track.dataStart, 12u + 26 + 16 + 4);
    EXPECT_EQ(track.dataEnd, track.dataStart + 12);
    EXPECT_EQ(track.bytesPerSample, 2u);
    EXPECT_EQ(track.sampleMask, 0xFFFFu);
    EXPECT_EQ(track.sampleRate, kAiffRate44100);

    const uint32_t fileEnd = uint32_t(MakeAiff(layout).size());
    for (int64_t size : {int64_t(4), int64_t(1000)}) {
        layout.ssndSize = size; // below 8, or running past the file's end
        ASSERT_TRUE(ParseAiffTrack(Write("b.aiff", MakeAiff(layout)), track));
        EXPECT_EQ(track.dataEnd, fileEnd) << size;
    }
}

TEST(TrackLength, WholeBlocksOnlyTheRemainderDropped) {
    LAudioTrackRef track;
    track.bytesPerSample = 2;
    track.channels = 2;
    track.dataStart = 54;
    for (auto [bytes, blocks] : {std::pair{2352u, 1u}, {2352u * 3 - 4, 2u}, {2351u, 0u}, {0u, 0u}}) {
        track.dataEnd = 54 + bytes;
        EXPECT_EQ(TrackLengthBlocks(track), blocks) << bytes;
    }
    // Mono: half the bytes make as many frames.
    track.channels = 1;
    track.dataEnd = 54 + 1176;
    EXPECT_EQ(TrackLengthBlocks(track), 1u);
}

TEST_F(TrackFolder, ProducerWritesLittleEndian16BitStereo) {
    struct Case {
        const char* what;
        uint16_t channels;
        uint16_t bits;
        std::vector<int16_t> in;
        std::vector<int16_t> out;
    } cases[] = {
        {"stereo", 2, 16, {0x1234, -2}, {0x1234, -2}},
        {"mono doubled", 1, 16, {-300}, {-300, -300}},
        {"three channels", 3, 16, {300, 600, 900}, {800, 1000}},
        {"four channels", 4, 16, {900, 90, 1800, 0}, {640, 1240}},
        {"six channels", 6, 16, {90, 90, 90, 900, 900, 90}, {160, 880}},
        {"mixes clip", 3, 16, {30000, 30000, 30000}, {32767, 32767}},
        {"12-bit samples masked", 2, 12, {0x123F, int16_t(0xFFFF)}, {0x1230, int16_t(0xFFF0)}},
        // Six bytes a sample: the upper two are taken, nothing of the narrow-sample mask left.
        {"48-bit samples cut", 2, 48, {0x1234, 0x5678, -0x6544, 0x4321, 0, 0}, {0x1234, 0x4321}},
    };
    for (const Case& c : cases) {
        AiffLayout layout{c.channels, 1, c.bits, 44100, c.in};
        LAudioTrackRef track;
        ASSERT_TRUE(ParseAiffTrack(Write("m.aiff", MakeAiff(layout)), track)) << c.what;
        EXPECT_EQ(Produce(track, 4), c.out) << c.what;
    }
}

TEST_F(TrackFolder, ProducerStopsAtTheDataEndAndRejectsUnknownMessages) {
    AiffLayout layout{2, 2, 16, 44100, {1, 2, 3, 4}};
    LAudioTrackRef track;
    ASSERT_TRUE(ParseAiffTrack(Write("e.aiff", MakeAiff(layout)), track));
    EXPECT_EQ(Produce(track, 64), (std::vector<int16_t>{1, 2, 3, 4}));
    EXPECT_EQ(sampleTrackProducerCallback(track, 0x61626364, nullptr), kProducerBadMessage);
    fs::remove(track.path);
    EXPECT_EQ(sampleTrackProducerCallback(track, kProducerPreBurn, nullptr), kProducerReadError);
}

TEST_F(TrackFolder, CreateTracksTakesTheAiffFilesInNameOrder) {
    EXPECT_FALSE(CreateTracks(folder + "/none").has_value());
    ASSERT_TRUE(CreateTracks(folder).has_value());
    EXPECT_TRUE(CreateTracks(folder)->empty());

    std::vector<int16_t> block(588 * 2, 7);
    const std::string aiff = MakeAiff({2, 588, 16, 44100, block});
    Write("track02.aiff", aiff);
    Write("track01.AIF", aiff);
    Write("._track00.aiff", aiff);
    Write("notes.txt", aiff);
    Write("track03.aiff", MakeAiff({5, 1, 16, 44100, {1, 2, 3, 4, 5}}));
    std::optional<LServiceTrackArray> tracks = CreateTracks(folder + "/");
    ASSERT_TRUE(tracks.has_value());
    ASSERT_EQ(tracks->size(), 2u);
    EXPECT_EQ((*tracks)[0]->Properties().sourceFilePath, folder + "/track01.AIF");
    EXPECT_EQ((*tracks)[1]->Properties().sourceFilePath, folder + "/track02.aiff");
    const LAudioTrackProperties& p = (*tracks)[0]->Properties();
    EXPECT_EQ(p.blockSize, 2352u);
    EXPECT_EQ(p.trackLength, 1u);
    EXPECT_EQ(p.blockType + p.dataForm + p.sessionFormat + p.trackMode, 0u);
}
