#include "WaveTestUtil.h"

#include "codecs/ImaAdpcmSource.h"
#include "codecs/WaveFile.h"

#include <gtest/gtest.h>

namespace {

class AdpcmSourceTest : public ::testing::Test {
protected:
    // An IMA ADPCM file made by sox: a tone with noise over it, so every step size is used.
    std::filesystem::path SoxIma(const char* name, int rate, double seconds,
                                 unsigned char channels = 1) {
        const std::filesystem::path path = home_.Path() / name;
        int status = 0;
        RunCommand("sox -n -r " + std::to_string(rate) + " -c " + std::to_string(channels) +
                       " -e ima-adpcm " + ShellQuote(path.string()) + " synth " +
                       std::to_string(seconds) + " sine 200-3000 whitenoise vol 0.5 2>&1",
                   &status);
        EXPECT_EQ(status, 0);
        return path;
    }

    std::filesystem::path WriteIma(const char* name, uint16_t blockAlign, uint32_t sizeField,
                                   const std::vector<uint8_t>& data) {
        const std::filesystem::path path = home_.Path() / name;
        WriteFileBytes(path, RiffBuilder()
                                 .Format(17, 1, 8000, 4, blockAlign, 20)
                                 .Chunk("data", data, sizeField)
                                 .Bytes());
        return path;
    }

    TempHome home_;
};

TEST_F(AdpcmSourceTest, DecodesSoxFilesAsSoxDoes) {
    const std::filesystem::path path = SoxIma("ima.wav", 22050, 1.5);
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_EQ(source->GetSampleRate(), 22050);
    EXPECT_EQ(source->GetChannels(), 1);
    EXPECT_EQ(source->GetMaxAmplitude(), 524272);
    EXPECT_EQ(std::to_string(source->GetEndSample()), Soxi("-s", path));
    EXPECT_EQ(ReadFrames(source, source->GetEndSample()), SoxSamples(path));

    char name[260];
    LGetWaveFileCodecName(name, path.c_str());
    EXPECT_STREQ(name, "Intel DVI ADPCM (IMA ADPCM)");
}

TEST_F(AdpcmSourceTest, OddPiecesAndSeeksGiveTheSameSamples) {
    const std::filesystem::path path = SoxIma("pieces.wav", 8000, 1);
    LSoundSource whole = LWaveFile::OpenSource(path.c_str());
    const int end = whole->GetEndSample();
    const std::vector<int> all = ReadFrames(whole, end);

    LSoundSource pieces = LWaveFile::OpenSource(path.c_str());
    std::vector<int> joined;
    for (int piece = 1; static_cast<int>(joined.size()) < end; piece += 2) {
        const std::vector<int> part = ReadFrames(pieces, piece);
        joined.insert(joined.end(), part.begin(), part.end());
    }
    joined.resize(end);
    EXPECT_EQ(joined, all);

    for (const int frame : {1, 504, 505, 1234, end - 3}) {
        pieces->Seek(frame);
        EXPECT_EQ(pieces->GetPositionSample(), frame);
        const std::vector<int> read = ReadFrames(pieces, 3);
        EXPECT_EQ(read, std::vector<int>(all.begin() + frame, all.begin() + frame + 3)) << frame;
    }
    ExpectZerosOutside(pieces, all, 2);
}

TEST_F(AdpcmSourceTest, LengthCountsAPartialLastBlock) {
    // Three whole 256-byte blocks of 505 samples and 232 bytes of a fourth: 2 * 232 - 7 more.
    const std::filesystem::path path =
        WriteIma("partial.wav", 256, 1000, std::vector<uint8_t>(1000));
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_EQ(source->GetEndSample(), 1972);

    // A size still unknown to the writer means the rest of the file.
    const std::filesystem::path open =
        WriteIma("open.wav", 256, 0xFFFFFFFF, std::vector<uint8_t>(512));
    EXPECT_EQ(LWaveFile::OpenSource(open.c_str())->GetEndSample(), 1010);
}

TEST_F(AdpcmSourceTest, RefusesStereoAndImpossibleBlocks) {
    const std::filesystem::path stereo = SoxIma("stereo.wav", 8000, 0.2, 2);
    EXPECT_EQ(LWaveFile::OpenSource(stereo.c_str())->GetError(), sndErrClosed);
    const std::filesystem::path tiny = WriteIma("tiny.wav", 3, 6, std::vector<uint8_t>(6));
    EXPECT_EQ(LWaveFile::OpenSource(tiny.c_str())->GetError(), sndErrFormat);
}

} // namespace
