#include "WaveTestUtil.h"

#include "codecs/WaveFile.h"
#include "codecs/WavePCMSource.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "platform/File.h"
#include "sound/SourceToSink.h"

#include <fcntl.h>

#include <gtest/gtest.h>

namespace {

// Frame f of channel c holds (f * 7 + c * 3) steps.
std::vector<int> Ramp(int frames, unsigned char channels) {
    std::vector<int> samples(size_t(frames) * channels);
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c)
            samples[f * channels + c] = ((f * 7 + c * 3) % 60000 - 30000) * 16;
    return samples;
}

class WaveFileTest : public ::testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    std::string WriteRamp(const char* name, int frames, unsigned char channels) {
        const std::string path = PathOf(name);
        LWaveFile::OpenSinkPCM(path.c_str(), 44100, channels, 16, 0)
            ->Write(Ramp(frames, channels).data(), frames);
        return path;
    }

    // The error code of a source opened on these bytes.
    uint8_t OpenError(const std::vector<uint8_t>& bytes) {
        WriteFileBytes(PathOf("probe.wav"), bytes);
        return LWaveFile::OpenSource(PathOf("probe.wav").c_str())->GetError();
    }

    TempHome home_;
};

TEST_F(WaveFileTest, ThreeStereoFramesReplaceAnOldFileWith58Bytes) {
    WriteRamp("three.wav", 5000, 2);
    const std::vector<uint8_t> bytes = ReadFileBytes(WriteRamp("three.wav", 3, 2));
    ASSERT_EQ(bytes.size(), 58u);
    const std::vector<uint8_t> header = {
        'R', 'I', 'F', 'F', 50, 0, 0,   0,   'W',  'A',  'V', 'E', 'f',  'm',  't', ' ',
        18,  0,   0,   0,   1,  0, 2,   0,   0x44, 0xAC, 0,   0,   0x10, 0xB1, 2,   0,
        4,   0,   16,  0,   0,  0, 'd', 'a', 't',  'a',  12,  0,   0,    0};
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 46), header);
}

TEST_F(WaveFileTest, SinkSeeksOnlyBackwardsAndCutsTheFileAndTheSourceReadsZerosOutsideIt) {
    const std::string path = PathOf("seek.wav");
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 1, 16, 0);
        sink->Write(Ramp(100, 1).data(), 100);
        sink->Seek(200);
        EXPECT_EQ(sink->GetPosition(), 100);
        sink->Seek(10);
        const int more[2] = {16000, -16000};
        sink->Write(more, 2);
    }
    std::vector<int> expected = Ramp(10, 1);
    expected.insert(expected.end(), {16000, -16000});
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    ASSERT_EQ(source->GetEndSample(), 12);
    EXPECT_EQ(ReadFrames(source, 12), expected);
    ExpectZerosOutside(source, expected, 2);
}

TEST_F(WaveFileTest, FileBeingWrittenIsReadAsFarAsItGoes) {
    const std::string path = PathOf("growing.wav");
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 22050, 2, 16, 0);
    const std::vector<int> samples = Ramp(1000, 2);
    sink->Write(samples.data(), 1000);
    const std::vector<uint8_t> header = ReadFileBytes(path);
    EXPECT_EQ(Field32(header, 4), 0xFFFFFFFFu);
    EXPECT_EQ(Field32(header, 42), 0xFFFFFFD9u);

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

    // Another writer's "unknown" size: the end follows the file, whole frames only.
    WriteFileBytes(path, RiffBuilder()
                             .Format(1, 1, 8000, 16)
                             .Chunk("data", Pcm16Bytes({1, 2, 3}), 0xFFFFFFFF)
                             .Bytes());
    source = LWaveFile::OpenSource(path.c_str());
    EXPECT_TRUE(source->IsStreaming());
    EXPECT_EQ(source->GetEndSample(), 3);
    EXPECT_EQ(ReadFrames(source, 4), (std::vector<int>{16, 32, 48, 0}));
}

// A disk that fails to give the samples (here a descriptor that cannot be read) is an error of
// the source, never the recording's end: a conversion that took it for the end would finish a
// short copy and delete the recording.
TEST_F(WaveFileTest, AReadTheDiskFailsIsAnErrorNotTheEnd) {
    LSoundSource source(new LSRCPCMFile<LSF16>(
        LFile(open(home_.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), 44, 44100, 2, 4000));
    ASSERT_EQ(source->GetError(), sndErrNone);
    std::vector<int> buffer(200);
    source->Read(buffer.data(), 100);
    EXPECT_EQ(source->GetError(), sndErrRead);

    LPRSourceToSink pump;
    pump.source = source;
    pump.sink = LWaveFile::OpenSinkPCM(PathOf("copy.wav").c_str(), 44100, 2, 16, 0);
    LProcessInterfaceVoid progress;
    EXPECT_EQ(Process(progress, pump), PROCESS_FAILED);
}

TEST_F(WaveFileTest, PassesOverChunksBeforeTheData) {
    // A top-level chunk ahead of the wave form, an odd-sized chunk with its pad byte, LIST and
    // bext chunks between format and data, and a chunk after the data.
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
    WriteFileBytes(PathOf("chunks.wav"), bytes);

    LSoundSource source = LWaveFile::OpenSource(PathOf("chunks.wav").c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    EXPECT_EQ(source->GetSampleRate(), 48000);
    EXPECT_EQ(source->GetEndSample(), 2);
    EXPECT_EQ(ReadFrames(source, 3), (std::vector<int>{1600, -1600, 3200, -3200, 0, 0}));
}

TEST_F(WaveFileTest, RefusesWhatItCannotRead) {
    const std::vector<uint8_t> data = Pcm16Bytes({1, 2});
    auto withData = [&](RiffBuilder riff) { return OpenError(riff.Chunk("data", data).Bytes()); };
    EXPECT_EQ(LWaveFile::OpenSource(PathOf("missing.wav").c_str())->GetError(), sndErrOpen);
    EXPECT_EQ(OpenError({'R', 'I', 'F', 'F'}), sndErrFormat);
    EXPECT_EQ(OpenError(RiffBuilder().Format(1, 1, 8000, 16).Bytes()), sndErrFormat);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 2, 44100, 24)), sndErrUnsupported);
    EXPECT_EQ(withData(RiffBuilder().Format(3, 2, 44100, 32)), sndErrUnsupported);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 0, 44100, 16, 2)), sndErrFormat);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 300, 44100, 16)), sndErrFormat);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 1, 200000, 16)), sndErrFormat);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 1, 196000, 16)), sndErrNone);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 1, 8000, 16, 0, 8193)), sndErrFormat);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 1, 8000, 16, 0, 8192)), sndErrNone);
    EXPECT_EQ(withData(RiffBuilder().Format(1, 1, 8000, 16).Chunk("huge", {}, 0x80000000u)),
              sndErrFormat);

    // A 16-byte format chunk has no extra size.
    WriteFileBytes(PathOf("fmt16.wav"), RiffBuilder().Format(1, 2, 32000, 16).Bytes());
    const std::optional<WAVEFORMATEX> format = LGetWaveFormatEx(PathOf("fmt16.wav").c_str());
    ASSERT_TRUE(format);
    EXPECT_EQ(format->nSamplesPerSec, 32000u);
    EXPECT_EQ(format->nBlockAlign, 4);
    EXPECT_EQ(format->cbSize, 0);
}

TEST_F(WaveFileTest, SinksThatCannotWriteSwallowTheAudio) {
    const std::string path = WriteRamp("locked.wav", 100, 2);
    EXPECT_TRUE(LWaveFile::OpenSinkPCM(path.c_str(), 8000, 2, 24, 0)->IsFailed());
    LWaveFileFormat gsm(8000, 1);
    gsm.wfx.wFormatTag = 49;
    EXPECT_TRUE(LWaveFile::OpenSink(path.c_str(), gsm)->IsFailed());
    EXPECT_EQ(LWaveFile::OpenSinkPCM(PathOf("no/folder.wav").c_str(), 8000, 2, 16, 0)->GetError(),
              1);

    // Another holder's exclusive lock keeps the sink out; the file stays as it was.
    LFile holder(LReadWriteFile(path.c_str()));
    ASSERT_TRUE(holder.IsOpen());
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 0);
    EXPECT_TRUE(sink->IsFailed());
    sink->Write(Ramp(10, 2).data(), 10);
    sink.Close();
    EXPECT_EQ(ReadFileBytes(path).size(), 46u + 400);
}

} // namespace
