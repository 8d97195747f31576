// Split and join jobs on real files, checked against sox and soxi.
#include "codecs/WaveTestUtil.h"

#include "codecs/MP3Source.h"
#include "codecs/WaveFile.h"
#include "play/JoinJob.h"
#include "play/SplitJob.h"
#include "support/FolderContents.h"
#include "support/RecordingProgress.h"
#include "tags/AudioTagData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

class SplitJoinJobTest : public testing::Test {
protected:
    // A sox-made file: noise so that every sample differs from its neighbours.
    fs::path Make(const std::string& name, int rate, int channels, double seconds,
                  const std::string& synth = "whitenoise vol 0.5") {
        const fs::path path = home.Path() / name;
        RunCommand("sox -R -n -r " + std::to_string(rate) + " -c " + std::to_string(channels) +
                   " -b 16 " + ShellQuote(path) + " synth " + std::to_string(seconds) + " " +
                   synth + " 2>/dev/null");
        EXPECT_TRUE(fs::exists(path)) << path;
        return path;
    }

    // sox's samples of frames [start, end) of a file (end < 0: to the end).
    static std::vector<int> SoxTrim(const fs::path& path, int start, int end) {
        const fs::path part = path.parent_path() / "trim.wav";
        std::string command = "sox " + ShellQuote(path) + " " + ShellQuote(part) + " trim " +
                              std::to_string(start) + "s";
        if (end >= 0) command += " " + std::to_string(end - start) + "s";
        RunCommand(command);
        std::vector<int> samples = SoxSamples(part);
        fs::remove(part);
        return samples;
    }

    // The wave file encoded by lame into an MP3 file of the name.
    fs::path Mp3(const fs::path& wave, const std::string& name, int kbits = 128) {
        const fs::path mp3 = home.Path() / name;
        RunCommand("lame --quiet -b " + std::to_string(kbits) + " " + ShellQuote(wave) + " " +
                   ShellQuote(mp3));
        EXPECT_TRUE(fs::exists(mp3)) << mp3;
        return mp3;
    }

    LProcessResult Split(const fs::path& path, const std::vector<int>& positions,
                         std::vector<std::string>* pieces = nullptr, int stopAfter = -1) {
        RecordingProgress progress;
        progress.stopAfter = stopAfter;
        const std::string text = path.string();
        LSplitFileProcessData job{text.c_str(), positions, {}};
        const LProcessResult result = Process(progress, job);
        if (pieces) *pieces = job.pieces;
        return result;
    }

    // Joins the files into `folder`; the result and the joined file's path.
    static std::pair<LProcessResult, std::string> Join(std::vector<std::string> paths,
                                                       const fs::path& folder, int stopAfter = -1) {
        RecordingProgress progress;
        progress.stopAfter = stopAfter;
        fs::create_directories(folder);
        LJoinFiles job{std::move(paths), folder.string(), {}};
        const LProcessResult result = Process(progress, job);
        return {result, job.output};
    }

    static std::string Name(const std::string& path) { return fs::path(path).filename().string(); }

    TempHome home;
};

TEST_F(SplitJoinJobTest, SplitPiecesMatchSoxTrimAndGiveTheFileBackWhole) {
    const fs::path side = Make("side.wav", 44100, 2, 3);
    LAudioTagData tags;
    tags.SetTag("TITLE", "Side One", true);
    tags.SetTag("ARTIST", "The Band", true);
    ASSERT_TRUE(tags.WriteTags(side.c_str(), tagModeAll, false));

    // A repeated point uses up index 1 without a file.
    std::vector<std::string> pieces;
    ASSERT_EQ(Split(side, {30000, 30000, 70001}, &pieces), PROCESS_DONE);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(Name(pieces[0]), "side_SPLIT_00.wav");
    EXPECT_EQ(Name(pieces[1]), "side_SPLIT_02.wav");
    EXPECT_EQ(Name(pieces[2]), "side_SPLIT_03.wav");
    EXPECT_FALSE(fs::exists(home.Path() / "side_SPLIT_01.wav"));

    const int bounds[][2] = {{0, 30000}, {30000, 70001}, {70001, -1}};
    std::vector<int> joined;
    for (size_t i = 0; i < pieces.size(); ++i) {
        const std::vector<int> piece = SoxSamples(pieces[i]);
        EXPECT_EQ(piece, SoxTrim(side, bounds[i][0], bounds[i][1])) << pieces[i];
        joined.insert(joined.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(joined, SoxSamples(side));

    LAudioTagData pieceTags;
    pieceTags.ReadTags(pieces[1].c_str(), tagModeAll);
    EXPECT_EQ(pieceTags.GetTag("TITLE"), "Side One (3)");
    EXPECT_EQ(pieceTags.GetTag("ARTIST"), "The Band");
}

TEST_F(SplitJoinJobTest, StoppingRemovesOnlyThisSplitsPiecesAndBackwardsPointsEndEarly) {
    const fs::path song = Make("song.wav", 44100, 1, 2);
    const fs::path earlier = home.Path() / "song_SPLIT_00.wav";
    fs::copy_file(song, earlier);

    std::vector<std::string> pieces;
    // Stops in the middle of the second piece.
    EXPECT_EQ(Split(song, {20000}, &pieces, 5), PROCESS_STOPPED);
    EXPECT_TRUE(pieces.empty());
    EXPECT_TRUE(fs::exists(earlier));
    EXPECT_TRUE(fs::exists(song));
    EXPECT_FALSE(fs::exists(home.Path() / "song (01)_SPLIT_00.wav"));
    EXPECT_FALSE(fs::exists(home.Path() / "song (01)_SPLIT_01.wav"));

    EXPECT_EQ(Split(song, {50000, 20000}, &pieces), PROCESS_DONE);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(SoxSamples(pieces[0]).size(), 50000u);
}

TEST_F(SplitJoinJobTest, Mp3SplitGivesMp3PiecesOfTheSourcesLength) {
    const fs::path mp3 = Mp3(Make("tune.wav", 44100, 2, 6, "sine 300 vol 0.5"), "tune.mp3");
    // Lengths as this program's decoder and mpg123 give them: both take the encoder's delay and
    // padding off.
    const auto frames = [](const std::string& path) {
        const LSoundSource source(new LMP3Source(path.c_str()));
        const int decoded = static_cast<int>(
            RunCommand("mpg123 -q -s " + ShellQuote(path) + " 2>/dev/null").size() / 4);
        EXPECT_EQ(source->GetEndSample(), decoded) << path;
        return source->GetEndSample();
    };
    const int total = frames(mp3);
    EXPECT_EQ(total, 44100 * 6);
    std::vector<std::string> pieces;
    ASSERT_EQ(Split(mp3, {44100 * 2, 44100 * 4}, &pieces), PROCESS_DONE);
    ASSERT_EQ(pieces.size(), 3u);
    int sum = 0;
    for (const std::string& piece : pieces) {
        EXPECT_EQ(fs::path(piece).extension(), ".mp3");
        sum += frames(piece);
    }
    EXPECT_EQ(sum, total);
}

// The peak of frames [start, end) of internal samples, in 16-bit units.
int Peak16(const std::vector<int>& samples, size_t start, size_t end) {
    int peak = 0;
    for (size_t i = start; i < end && i < samples.size(); ++i)
        peak = std::max(peak, std::abs(samples[i]) / 16);
    return peak;
}

TEST_F(SplitJoinJobTest, JoinMakesOneCdFormatFileNormalisingEachPart) {
    const fs::path mono = Make("name1.wav", 22050, 1, 1, "sine 500 vol 0.3");
    const fs::path stereo =
        Mp3(Make("name2.wav", 48000, 2, 1, "sine 700 vol 0.9"), "name2.mp3", 192);

    const auto [result, output] = Join({mono.string(), stereo.string()}, home.Path() / "out");
    ASSERT_EQ(result, PROCESS_DONE);
    EXPECT_EQ(Name(output), "name1_name2_JOINED.wav");
    EXPECT_EQ(Soxi("-r", output), "44100");
    EXPECT_EQ(Soxi("-c", output), "2");
    EXPECT_EQ(JoinedName({"/x/" + std::string(50, 'n') + ".wav", "/y/z.mp3"}),
              std::string(40, 'n') + "_z_JOINED");

    const std::vector<int> samples = SoxSamples(output);
    const size_t firstPart = 44100 * 2; // one second of stereo
    const int target = 32767 * 80 / 100;
    EXPECT_NEAR(Peak16(samples, 0, firstPart), target, target / 50);
    EXPECT_NEAR(Peak16(samples, firstPart, samples.size()), target, target / 50);
}

TEST_F(SplitJoinJobTest, AShortFileEndsThePieceOrThePartWhereItsSamplesEnd) {
    // The header says 2 s; the samples end after 1 s.
    const fs::path side = Make("side.wav", 44100, 2, 2);
    fs::resize_file(side, fs::file_size(side) - 44100 * 4);
    std::vector<std::string> pieces;
    ASSERT_EQ(Split(side, {22050, 66150}, &pieces), PROCESS_DONE);
    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(SoxSamples(pieces[0]).size(), 22050u * 2);
    EXPECT_EQ(SoxSamples(pieces[1]).size(), 22050u * 2) << "no silence past the samples";
    EXPECT_FALSE(fs::exists(home.Path() / "side_SPLIT_02.wav"));

    const fs::path other = Make("other.wav", 44100, 2, 0.5);
    const auto [result, output] = Join({side.string(), other.string()}, home.Path());
    ASSERT_EQ(result, PROCESS_DONE);
    EXPECT_EQ(SoxSamples(output).size(), (44100u + 22050u) * 2);
}

// A join takes the format of its first part; its output never replaces a file, and a stop or a
// failure leaves no file behind.
TEST_F(SplitJoinJobTest, OutputsNeverReplaceAFileAndAStopOrFailureLeavesNothing) {
    const fs::path a = Make("a.wav", 44100, 2, 1, "sine 300 vol 0.5");
    const fs::path b = Mp3(a, "b.mp3");
    const fs::path out = home.Path() / "out";
    fs::create_directories(out);
    // Files of the names a join would take, none of them made by it.
    for (const char* name : {"a_b_JOINED.wav", "b_a_JOINED.wav", "b_a_JOINED.mp3"})
        WriteFileBytes(out / name, {'m', 'i', 'n', 'e'});
    const auto before = FolderContents(out);
    for (const int stopAfter : {0, 8, 18}) {
        EXPECT_EQ(Join({a.string(), b.string()}, out, stopAfter).first, PROCESS_FAILED)
            << stopAfter;
        EXPECT_EQ(Join({b.string(), a.string()}, out, stopAfter).first, PROCESS_FAILED)
            << stopAfter;
        EXPECT_EQ(FolderContents(out), before) << stopAfter;
    }

    const auto [waveResult, wave] = Join({a.string(), b.string()}, out);
    EXPECT_EQ(waveResult, PROCESS_DONE);
    EXPECT_EQ(Name(wave), "a_b_JOINED (01).wav");
    const auto [mp3Result, mp3] = Join({b.string(), a.string()}, out);
    EXPECT_EQ(mp3Result, PROCESS_DONE);
    EXPECT_EQ(Name(mp3), "b_a_JOINED (01).mp3");
    auto after = FolderContents(out);
    EXPECT_EQ(after.size(), before.size() + 2) << "no intermediate or hidden file stays";
    after.erase(Name(wave));
    after.erase(Name(mp3));
    EXPECT_EQ(after, before);
}

} // namespace
