#include "WaveTestUtil.h"

#include "codecs/WaveFile.h"
#include "platform/File.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

class WaveFileTest : public ::testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    // Writes a 16-bit file through the sink: frame f of channel c holds (f * 7 + c * 3) steps.
    std::string WriteRamp16(const char* name, int frames, unsigned char channels) {
        const std::string path = PathOf(name);
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, channels, 16, 0);
        sink->Write(Ramp(frames, channels).data(), frames);
        return path;
    }

    static std::vector<int> Ramp(int frames, unsigned char channels) {
        std::vector<int> samples(static_cast<size_t>(frames) * channels);
        for (int f = 0; f < frames; ++f)
            for (int c = 0; c < channels; ++c)
                samples[f * channels + c] = ((f * 7 + c * 3) % 60000 - 30000) * 16;
        return samples;
    }

    // The code an error source carries for these file bytes.
    uint8_t OpenError(const std::vector<uint8_t>& bytes) {
        const std::string path = PathOf("probe.wav");
        WriteFileBytes(path, bytes);
        return LWaveFile::OpenSource(path.c_str())->GetError();
    }

    TempHome home_;
};

TEST_F(WaveFileTest, SixteenBitRoundTripKeepsEverySample) {
    const std::string path = WriteRamp16("ramp.wav", 20000, 2);
    EXPECT_EQ(ReadFileBytes(path).size(), 46u + 20000 * 4);

    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_EQ(source->GetSampleRate(), 44100);
    EXPECT_EQ(source->GetChannels(), 2);
    EXPECT_EQ(source->GetMaxAmplitude(), 524272);
    EXPECT_EQ(source->GetEndSample(), 20000);
    EXPECT_FALSE(source->IsStreaming());
    EXPECT_EQ(ReadFrames(source, 20000), Ramp(20000, 2));
    EXPECT_EQ(source->GetPositionSample(), 20000);
}

TEST_F(WaveFileTest, EightBitRoundTripKeepsEverySample) {
    const std::string path = PathOf("u8.wav");
    std::vector<int> samples(256);
    for (int i = 0; i < 256; ++i)
        samples[i] = (i - 128) * 4096;
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 8000, 1, 8, 0);
        sink->Write(samples.data(), 256);
    }
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    ASSERT_EQ(bytes.size(), 46u + 256);
    EXPECT_EQ(bytes[34], 8); // bits per sample
    EXPECT_EQ(bytes[46], 0); // -128 steps is stored as 0
    EXPECT_EQ(bytes[46 + 128], 128);

    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    EXPECT_EQ(source->GetEndSample(), 256);
    EXPECT_EQ(ReadFrames(source, 256), samples);
}

TEST_F(WaveFileTest, ThreeStereoFramesMakeA58ByteFile) {
    const std::string path = WriteRamp16("three.wav", 3, 2);
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    ASSERT_EQ(bytes.size(), 58u);
    const std::vector<uint8_t> header = {
        'R', 'I', 'F', 'F', 50, 0, 0,   0,   'W',  'A',  'V', 'E', 'f',  'm',  't', ' ',
        18,  0,   0,   0,   1,  0, 2,   0,   0x44, 0xAC, 0,   0,   0x10, 0xB1, 2,   0,
        4,   0,   16,  0,   0,  0, 'd', 'a', 't',  'a',  12,  0,   0,    0};
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 46), header);
}

TEST_F(WaveFileTest, SinkSeeksOnlyBackwardsAndCutsTheFile) {
    const std::string path = PathOf("seek.wav");
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 1, 16, 0);
        const std::vector<int> samples = Ramp(100, 1);
        sink->Write(samples.data(), 100);
        sink->Seek(200);
        EXPECT_EQ(sink->GetPosition(), 100);
        sink->Seek(10);
        EXPECT_EQ(sink->GetPosition(), 10);
        const int more[2] = {16 * 1000, -16 * 1000};
        sink->Write(more, 2);
    }
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetEndSample(), 12);
    std::vector<int> expected = Ramp(10, 1);
    expected.push_back(16 * 1000);
    expected.push_back(-16 * 1000);
    EXPECT_EQ(ReadFrames(source, 12), expected);
}

TEST_F(WaveFileTest, SinkReplacesALongerExistingFile) {
    const std::string path = WriteRamp16("replace.wav", 5000, 2);
    WriteRamp16("replace.wav", 10, 2);
    EXPECT_EQ(ReadFileBytes(path).size(), 46u + 40);
}

TEST_F(WaveFileTest, FileBeingWrittenIsReadAsFarAsItGoes) {
    const std::string path = PathOf("growing.wav");
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 22050, 2, 16, 0);
    const std::vector<int> samples = Ramp(1000, 2);
    sink->Write(samples.data(), 1000);

    const std::vector<uint8_t> header = ReadFileBytes(path);
    EXPECT_EQ(LE32At(header, 4), 0xFFFFFFFFu);
    EXPECT_EQ(LE32At(header, 42), 0xFFFFFFD9u);

    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_TRUE(source->IsStreaming());
    EXPECT_EQ(source->GetEndSample(), 1000);
    sink->Write(samples.data(), 500);
    EXPECT_EQ(source->GetEndSample(), 1500);
    EXPECT_EQ(ReadFrames(source, 1000), samples);

    sink.Close();
    EXPECT_EQ(source->GetEndSample(), 1500);
    EXPECT_FALSE(source->IsStreaming());
}

TEST_F(WaveFileTest, UnknownDataSizeFromAnotherWriterFollowsTheFileLength) {
    const std::vector<uint8_t> bytes = RiffBuilder()
                                           .Format(1, 1, 8000, 16)
                                           .ChunkWithSize("data", 0xFFFFFFFF, Pcm16Bytes({1, 2, 3}))
                                           .Bytes();
    const std::string path = PathOf("unknown.wav");
    WriteFileBytes(path, bytes);
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    EXPECT_TRUE(source->IsStreaming());
    // Three samples and the chunk's pad byte: the half frame does not count.
    EXPECT_EQ(source->GetEndSample(), 3);
    EXPECT_EQ(ReadFrames(source, 4), (std::vector<int>{16, 32, 48, 0}));
}

TEST_F(WaveFileTest, ReadsZerosBeforeTheStartAndPastTheEnd) {
    const std::string path = WriteRamp16("edges.wav", 300, 1);
    const std::vector<int> ramp = Ramp(300, 1);
    LSoundSource source = LWaveFile::OpenSource(path.c_str());

    source->Seek(-100);
    EXPECT_EQ(source->GetPositionSample(), -100);
    std::vector<int> expected(100, 0);
    expected.insert(expected.end(), ramp.begin(), ramp.begin() + 200);
    EXPECT_EQ(ReadFrames(source, 300), expected);

    std::vector<int> tail(ramp.begin() + 200, ramp.end());
    tail.resize(150, 0);
    EXPECT_EQ(ReadFrames(source, 150), tail);
    EXPECT_EQ(source->GetPositionSample(), 350);

    source->Seek(1000);
    EXPECT_EQ(ReadFrames(source, 10), std::vector<int>(10, 0));
    source->Seek(299);
    EXPECT_EQ(ReadFrames(source, 2), (std::vector<int>{ramp[299], 0}));
}

TEST_F(WaveFileTest, PassesOverChunksBeforeTheData) {
    // An odd-sized chunk (with its pad byte), then LIST and bext chunks, and a top-level chunk
    // ahead of the wave form itself.
    std::vector<uint8_t> bytes = {'J', 'U', 'N', 'K', 6, 0, 0, 0, 'a', 'b', 'c', 'd', 'e', 'f'};
    const std::vector<uint8_t> wave =
        RiffBuilder()
            .Chunk("odd ", {1, 2, 3})
            .Format(1, 2, 48000, 16)
            .Chunk("LIST", {'I', 'N', 'F', 'O', 'I', 'N', 'A', 'M', 3, 0, 0, 0, 'A', 'b', 0, 0})
            .Chunk("bext", std::vector<uint8_t>(602, 0))
            .Chunk("data", Pcm16Bytes({100, -100, 200, -200}))
            .Chunk("LIST", {'I', 'N', 'F', 'O'})
            .Bytes();
    bytes.insert(bytes.end(), wave.begin(), wave.end());
    const std::string path = PathOf("chunks.wav");
    WriteFileBytes(path, bytes);

    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_EQ(source->GetSampleRate(), 48000);
    EXPECT_EQ(source->GetEndSample(), 2);
    EXPECT_EQ(ReadFrames(source, 3), (std::vector<int>{1600, -1600, 3200, -3200, 0, 0}));
}

TEST_F(WaveFileTest, RefusesWhatItCannotRead) {
    const std::vector<uint8_t> data = Pcm16Bytes({1, 2});
    EXPECT_EQ(LWaveFile::OpenSource(PathOf("missing.wav").c_str())->GetError(), sndErrOpen);
    EXPECT_EQ(OpenError({'R', 'I', 'F', 'F'}), sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 8000, 16).Bytes()), sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 2, 44100, 24).Chunk("data", data).Bytes()),
              sndErrUnsupported);
    EXPECT_EQ(OpenError(RiffBuilder().Format(3, 2, 44100, 32).Chunk("data", data).Bytes()),
              sndErrUnsupported);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 0, 44100, 16, 2).Chunk("data", data).Bytes()),
              sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 300, 44100, 16).Chunk("data", data).Bytes()),
              sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 200000, 16).Chunk("data", data).Bytes()),
              sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 196000, 16).Chunk("data", data).Bytes()),
              sndErrNone);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 0, 16).Chunk("data", data).Bytes()),
              sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 8000, 16, 0, 8193).Chunk("data", data).Bytes()),
              sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 8000, 16, 0, 8192).Chunk("data", data).Bytes()),
              sndErrNone);
    EXPECT_EQ(OpenError(RiffBuilder()
                            .Format(1, 1, 8000, 16)
                            .ChunkWithSize("huge", 0x80000000u, {})
                            .Chunk("data", data)
                            .Bytes()),
              sndErrFormat);
}

TEST_F(WaveFileTest, FormatOfSixteenBytesHasNoExtraSize) {
    const std::string path = PathOf("fmt16.wav");
    WriteFileBytes(path, RiffBuilder().Format(1, 2, 32000, 16).Chunk("data", {}).Bytes());
    const std::optional<WAVEFORMATEX> format = LGetWaveFormatEx(path.c_str());
    ASSERT_TRUE(format);
    EXPECT_EQ(format->wFormatTag, 1);
    EXPECT_EQ(format->nChannels, 2);
    EXPECT_EQ(format->nSamplesPerSec, 32000u);
    EXPECT_EQ(format->nBlockAlign, 4);
    EXPECT_EQ(format->cbSize, 0);
    EXPECT_FALSE(LGetWaveFormatEx(PathOf("none.wav").c_str()));
}

TEST_F(WaveFileTest, SinkFormatFollowsTheBitsAsked) {
    const std::string path = PathOf("bits.wav");
    const int sample[2] = {16, 16};
    for (unsigned short bits : {0, 8, 9, 16}) {
        LWaveFile::OpenSinkPCM(path.c_str(), 8000, 2, bits, 0)->Write(sample, 1);
        EXPECT_EQ(ReadFileBytes(path).size(), 46u + (bits > 8 ? 4 : 2)) << bits;
    }
    EXPECT_EQ(LWaveFile::OpenSinkPCM(path.c_str(), 8000, 2, 24, 0)->GetError() & 1, 1);

    LWaveFileFormat gsm(8000, 1);
    gsm.wfx.wFormatTag = 49;
    EXPECT_EQ(LWaveFile::OpenSink(path.c_str(), gsm)->GetError() & 1, 1);
    LWaveFileFormat pcm(11025, 1);
    pcm.wfx.wBitsPerSample = 8;
    {
        LSoundSink sink = LWaveFile::OpenSink(path.c_str(), pcm);
        EXPECT_EQ(sink->GetError(), 0);
        EXPECT_EQ(sink->GetSampleRate(), 11025);
    }
    EXPECT_EQ(ReadFileBytes(path)[34], 8);
}

TEST_F(WaveFileTest, SinkThatCannotOpenItsFileWritesNothing) {
    const std::string folder = PathOf("no/such/folder.wav");
    LSoundSink missing = LWaveFile::OpenSinkPCM(folder.c_str(), 44100, 2, 16, 0);
    EXPECT_EQ(missing->GetError() & 1, 1);

    // Another holder's exclusive lock keeps the sink out; the file stays as it was.
    const std::string path = WriteRamp16("locked.wav", 100, 2);
    LFile holder(LReadWriteFile(path.c_str()));
    ASSERT_TRUE(holder.IsOpen());
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 0);
        EXPECT_EQ(sink->GetError() & 1, 1);
        const std::vector<int> samples = Ramp(10, 2);
        sink->Write(samples.data(), 10);
    }
    EXPECT_EQ(ReadFileBytes(path).size(), 46u + 400);
}

} // namespace
