// Length, seeking, tags and damaged input of the MP3 source, on conformance bitstreams and on
// files that LAME encodes for the test.
#include "Mp3TestUtil.h"
#include "WaveTestUtil.h"

#include "codecs/MP3File.h"
#include "codecs/mp3/MP3Header.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

namespace {

std::vector<int> Decode(const std::filesystem::path& path) {
    const LSoundSource source = LMP3File::OpenSource(path.c_str());
    EXPECT_EQ(source->GetError(), sndErrNone) << path;
    return ReadToEnd(source);
}

std::vector<uint8_t> Concat(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// An ID3v2.3 tag of `size` bytes after its 10-byte header, filled with padding.
std::vector<uint8_t> Id3v2Tag(int size) {
    std::vector<uint8_t> tag = {'I', 'D', '3', 3, 0, 0};
    for (int shift : {21, 14, 7, 0})
        tag.push_back(uint8_t(size >> shift & 127));
    tag.resize(10 + size_t(size), 0);
    return tag;
}

std::vector<uint8_t> Id3v1Tag() {
    std::vector<uint8_t> tag(128, ' ');
    std::copy_n("TAG", 3, tag.begin());
    return tag;
}

// The byte offsets where the stream's frames start, from its first header on.
std::vector<size_t> FrameStarts(const std::vector<uint8_t>& bytes) {
    std::vector<size_t> starts;
    MP3Header header;
    size_t at = 0;
    while (at + 4 <= bytes.size() && !header.Parse(&bytes[at]))
        ++at;
    for (; at + 4 <= bytes.size() && header.Parse(&bytes[at]);
         at += size_t(header.GetFrameLength()))
        starts.push_back(at);
    return starts;
}

class Mp3SourceTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home_ = std::make_unique<TempHome>();
        const std::string dir = ShellQuote(home_->Path());
        // Two seconds of two tones and a gliding one, so that every frame differs.
        RunCommand("cd " + dir +
                   " && sox -n -r 44100 -c 2 -b 16 tone.wav synth 2 sine 440 sine 300-3000 gain -3"
                   " && lame --quiet -b 128 tone.wav cbr.mp3 && lame --quiet -t -b 128 tone.wav "
                   "cbr-plain.mp3 && lame --quiet -V 4 tone.wav vbr.mp3 && lame --quiet -t -V 4 "
                   "tone.wav vbr-plain.mp3");
    }
    static void TearDownTestSuite() { home_.reset(); }

    static std::filesystem::path File(const char* name) { return home_->Path() / name; }

    static std::filesystem::path Write(const char* name, const std::vector<uint8_t>& bytes) {
        WriteFileBytes(File(name), bytes);
        return File(name);
    }

    static std::unique_ptr<TempHome> home_;
};

std::unique_ptr<TempHome> Mp3SourceTest::home_;

TEST_F(Mp3SourceTest, EncoderTagGivesTheOriginalStreamWithoutDelayAndPadding) {
    // LAME writes an Info frame (CBR) or a Xing frame (VBR) with the count of audio frames and
    // its delay and padding; with -t it writes none and the audio frames are otherwise the same.
    // The tagged file gives back the two seconds encoded: the plain file's samples from LAME's
    // delay (576) and the decoder's (529) on.
    constexpr size_t kSkip = (576 + 529) * 2;
    for (const char* name : {"cbr", "vbr"}) {
        const std::string plain = std::string(name) + "-plain.mp3";
        const LSoundSource source =
            LMP3File::OpenSource(File((std::string(name) + ".mp3").c_str()).c_str());
        ASSERT_EQ(source->GetError(), sndErrNone);
        EXPECT_EQ(source->GetEndSample(), 88200) << name;
        const std::vector<int> all = Decode(File(plain.c_str()));
        ASSERT_GE(all.size(), kSkip + 88200 * 2);
        EXPECT_EQ(ReadToEnd(source), std::vector<int>(all.begin() + kSkip, all.begin() + kSkip + 88200 * 2))
            << name;
    }
}

TEST_F(Mp3SourceTest, EstimatedLengthIsCorrectedWhileReading) {
    const std::filesystem::path path = File("vbr-plain.mp3");
    const int frames = int(FrameStarts(ReadFileBytes(path)).size());
    const LSoundSource source = LMP3File::OpenSource(path.c_str());
    // Estimated from the average bit rate of frames 5 to 12: close, not exact.
    EXPECT_NEAR(source->GetEndSample(), frames * 1152, frames * 1152 / 4);
    EXPECT_EQ(ReadToEnd(source).size(), size_t(frames) * 1152 * 2);
    EXPECT_EQ(source->GetEndSample(), frames * 1152);

    // Garbage after the audio counts as frames in the estimate; reading finds the real end
    // and gives zeros after it.
    const std::vector<uint8_t> stream = ReadFileBytes(File("cbr-plain.mp3"));
    const int cbrFrames = int(FrameStarts(stream).size());
    const auto garbage = Write("garbage.mp3", Concat(stream, std::vector<uint8_t>(20000, 0x55)));
    const LSoundSource over = LMP3File::OpenSource(garbage.c_str());
    EXPECT_GT(over->GetEndSample(), (cbrFrames + 40) * 1152);
    over->Seek((cbrFrames - 1) * 1152);
    std::vector<int> block(4 * 1152 * 2, 7);
    over->Read(block.data(), 4 * 1152);
    EXPECT_EQ(over->GetEndSample(), cbrFrames * 1152);
    EXPECT_EQ(over->GetPositionSample(), (cbrFrames + 3) * 1152);
    EXPECT_TRUE(std::all_of(block.begin() + 1152 * 2, block.end(), [](int v) { return v == 0; }));
}

TEST_F(Mp3SourceTest, TagsAroundAndInsideTheStreamAreSkipped) {
    const std::vector<uint8_t> stream = ReadFileBytes(Mp3ConformancePath("l3-sin1k0db.bit"));
    const std::vector<int> plain = Decode(Mp3ConformancePath("l3-sin1k0db.bit"));
    const LSoundSource plainSource =
        LMP3File::OpenSource(Mp3ConformancePath("l3-sin1k0db.bit").c_str());

    const auto tagged = Write("tagged.mp3", Concat(Concat(Id3v2Tag(1024), stream), Id3v1Tag()));
    const LSoundSource source = LMP3File::OpenSource(tagged.c_str());
    EXPECT_EQ(source->GetEndSample(), plainSource->GetEndSample());
    EXPECT_EQ(ReadToEnd(source), plain);

    // A tag between two frames (as left by joining files) is passed over as well.
    const size_t cut = FrameStarts(stream)[20];
    std::vector<uint8_t> inside(stream.begin(), stream.begin() + long(cut));
    inside = Concat(Concat(inside, Id3v2Tag(300)),
                    std::vector<uint8_t>(stream.begin() + long(cut), stream.end()));
    EXPECT_EQ(Decode(Write("inside.mp3", inside)), plain);
}

TEST_F(Mp3SourceTest, FilesOfFewerThanFiveFramesPlayWithExactLength) {
    const std::vector<uint8_t> stream = ReadFileBytes(Mp3ConformancePath("l3-si.bit"));
    const std::vector<int> full = Decode(Mp3ConformancePath("l3-si.bit"));
    for (int frames : {1, 3, 7}) {
        const size_t end = FrameStarts(stream)[size_t(frames)];
        const auto path =
            Write("short.mp3", std::vector<uint8_t>(stream.begin(), stream.begin() + long(end)));
        const LSoundSource source = LMP3File::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone) << frames;
        EXPECT_EQ(source->GetEndSample(), frames * 1152);
        EXPECT_EQ(ReadToEnd(source), std::vector<int>(full.begin(), full.begin() + frames * 1152));
    }
}

// Seeking decodes up to four frames before the target, which rebuilds the bit reservoir, the
// IMDCT overlap and the filter history: the samples are those of reading from the start, in
// files of constant and of variable bit rate.
TEST_F(Mp3SourceTest, SeekReadsWhatReadingFromTheStartGives) {
    // Bytes after the audio (an APE tag, say) must not shift the frames of a constant bit rate.
    const auto trailing = Write(
        "trailing.mp3", Concat(ReadFileBytes(File("cbr.mp3")), std::vector<uint8_t>(3000, 'A')));
    for (const std::filesystem::path& path :
         {File("cbr-plain.mp3"), File("cbr.mp3"), trailing, File("vbr.mp3"), File("vbr-plain.mp3"),
          std::filesystem::path(Mp3ConformancePath("M2L3_noise.bit")),
          std::filesystem::path(Mp3ConformancePath("l3-sin1k0db.bit"))}) {
        const LSoundSource source = LMP3File::OpenSource(path.c_str());
        const int channels = source->GetChannels();
        const std::vector<int> all = ReadToEnd(source);
        const int end = source->GetEndSample();
        for (int target : {0, 1, 575, 576, 1151, 1152, 3000, 4 * 1152 + 17, end / 2, end - 700}) {
            const int frames = std::min(2000, end - target);
            source->Seek(target);
            EXPECT_EQ(source->GetPositionSample(), target);
            const std::vector<int> got = ReadFrames(source, frames);
            EXPECT_TRUE(std::equal(got.begin(), got.end(), all.begin() + target * channels))
                << path << " at " << target;
            EXPECT_EQ(source->GetPositionSample(), target + frames);
        }
        ExpectZerosOutside(source, all, 100);
        EXPECT_EQ(source->GetEndSample(), end);
    }
}

// The lower sampling frequencies (MPEG-2 and MPEG-2.5), checked against mpg123.
TEST_F(Mp3SourceTest, LowerSampleRatesDecodeAsMpg123Does) {
    struct Case {
        const char* rate;
        int hz;
        const char* codec;
    };
    for (const Case& c :
         {Case{"22.05", 22050, "MPEG-2 Layer III"}, Case{"11.025", 11025, "MPEG-2.5 Layer III"},
          Case{"8", 8000, "MPEG-2.5 Layer III"}}) {
        const std::filesystem::path path = File("low.mp3");
        RunCommand("lame --quiet -t -m j --resample " + std::string(c.rate) + " " +
                   ShellQuote(File("tone.wav")) + " " + ShellQuote(path));
        const LSoundSource source = LMP3File::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone) << c.rate;
        EXPECT_EQ(source->GetSampleRate(), c.hz);
        char codec[260];
        ASSERT_TRUE(LMP3File::GetCodecName(codec, path.c_str()));
        EXPECT_STREQ(codec, c.codec);
        const std::vector<int> ours = ReadToEnd(source);
        EXPECT_EQ(source->GetEndSample() % 576, 0);
        const std::vector<int> theirs = Mpg123Samples(path, false);
        ASSERT_EQ(ours.size(), theirs.size()) << c.rate;
        const Mp3Difference d = Compare16(ours, 0, theirs);
        EXPECT_LE(d.rms, 0.35) << c.rate;
        EXPECT_LE(d.max, 2) << c.rate;
    }
}

TEST_F(Mp3SourceTest, UnreadableFilesGiveErrorSources) {
    EXPECT_EQ(LMP3File::OpenSource(File("missing.mp3").c_str())->GetError(), sndErrOpen);
    EXPECT_EQ(LMP3File::OpenSource(home_->Path().c_str())->GetError(), sndErrOpen);
    EXPECT_EQ(LMP3File::OpenSource(Write("empty.mp3", {}).c_str())->GetError(), sndErrFormat);
    EXPECT_EQ(LMP3File::OpenSource(File("tone.wav").c_str())->GetError(), sndErrFormat);
    char codec[260];
    EXPECT_FALSE(LMP3File::GetCodecName(codec, File("tone.wav").c_str()));
}

// Damaged data must neither crash the decoder nor make it run past a sensible end.
TEST_F(Mp3SourceTest, DamagedStreamsDecodeToTheirEnd) {
    std::mt19937 random(7);
    for (const char* name : {"l3-test45.bit", "l3-si_block.bit", "M2L3_bitrate_22_all.bit"}) {
        std::vector<uint8_t> bytes = ReadFileBytes(Mp3ConformancePath(name));
        for (int i = 0; i < 300; ++i)
            bytes[random() % bytes.size()] = uint8_t(random());
        const auto path = Write("damaged.mp3", bytes);
        const LSoundSource source = LMP3File::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone) << name;
        const std::vector<int> decoded = ReadToEnd(source);
        EXPECT_LE(decoded.size(), bytes.size() * 2 * 1152 / 24) << name;
        EXPECT_TRUE(std::all_of(decoded.begin(), decoded.end(),
                                [](int v) { return std::abs(v) <= 2097152; }));
    }
}

} // namespace
