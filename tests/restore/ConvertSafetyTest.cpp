// Files beside a conversion's output are never written: a file whose name differs from the
// source's in case alone is another file, and a link under the job's hidden working name is
// not followed, nor is a link to nothing replaced. A recording whose conversion fails is kept
// where the user finds it.
#include "restore/ConvertJob.h"

#include "codecs/WaveFile.h"
#include "platform/FileOps.h"
#include "platform/TemporaryFolder.h"
#include "platform/UserFolders.h"
#include "restore/ConvertNotify.h"
#include "restore/RecoveredRecordings.h"
#include "sound/SourceToSink.h"
#include "support/FileSizeLimit.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace fs = std::filesystem;

namespace {

class SilentNotify : public LConvertNotify {
public:
    void SetStatusText(const char*) override {}
    void NotifyFile(const char*) override {}
    void NotifyAdd(const char*) override {}
    void NotifyProgress(double) override {}
};

class ConvertSafety : public testing::Test {
protected:
    void SetUp() override { SetConvertNotify(&notify_); }
    void TearDown() override { SetConvertNotify(nullptr); }

    fs::path MakeWave(const fs::path& path) {
        LPRSourceToSink pump;
        pump.source = MakeSineSource(44100, 2, 440, 200000, 44100);
        pump.sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 0);
        RecordingProgress progress;
        EXPECT_EQ(Process(progress, pump), PROCESS_DONE);
        return path;
    }

    fs::path UserFile(const char* name) {
        const fs::path path = home_.Path() / name;
        std::ofstream(path) << "the user's own";
        return path;
    }

    static std::string Text(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    LProcessResult Convert(const fs::path& source, const fs::path& destination,
                           const std::function<void(LProcessConvert&)>& adjust = {}) {
        LProcessConvert job;
        std::snprintf(job.sourcePath, sizeof job.sourcePath, "%s", source.c_str());
        std::snprintf(job.outputFolder, sizeof job.outputFolder, "%s",
                      destination.parent_path().c_str());
        std::snprintf(job.outputExtension, sizeof job.outputExtension, "%s",
                      destination.extension().c_str());
        std::snprintf(job.destinationPath, sizeof job.destinationPath, "%s", destination.c_str());
        job.restore = 0;
        job.deleteSource = 1;
        if (adjust) adjust(job);
        RecordingProgress progress;
        const LProcessResult result = Process(progress, job);
        written_ = job.destinationPath;
        return result;
    }

    TempHome home_;
    SilentNotify notify_;
    fs::path written_;
};

} // namespace

TEST_F(ConvertSafety, ANameDifferingInCaseOnlyIsAnotherFile) {
    const fs::path source = MakeWave(home_.Path() / "Side.WAV");
    const fs::path other = UserFile("side.wav");
    ASSERT_EQ(Convert(source, other), PROCESS_DONE);
    EXPECT_EQ(Text(other), "the user's own");
    EXPECT_EQ(written_, home_.Path() / "side (2).wav");
    EXPECT_EQ(LWaveFile::OpenSource(written_.c_str())->GetError(), sndErrNone);
    EXPECT_FALSE(fs::exists(source)) << "converted, so the recording goes";
}

TEST_F(ConvertSafety, ALinkUnderTheWorkingNameIsNotFollowed) {
    for (const char* extension : {".wav", ".mp3"}) {
        const fs::path source = MakeWave(home_.Path() / "take.wav");
        const fs::path victim = UserFile("letter.txt");
        const fs::path destination = (home_.Path() / "out" / "take").replace_extension(extension);
        fs::create_directories(destination.parent_path());
        char partial[260];
        LGetPartialOutputPath(partial, destination.c_str());
        fs::create_symlink(victim, partial);

        ASSERT_EQ(Convert(source, destination), PROCESS_DONE) << extension;
        EXPECT_TRUE(Text(victim) == "the user's own") << extension << ": written through";
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(destination))) << extension;
        EXPECT_FALSE(fs::exists(fs::symlink_status(partial))) << extension;
    }
}

TEST_F(ConvertSafety, ARecordingThatFailsToConvertIsKeptInTheOutputFolder) {
    // Beside the temporary recordings, so that keeping it is a rename on any machine.
    LTemporaryFolder output(kTemporaryRecordingFolder, "vinora-test-");
    ASSERT_FALSE(output.Path().empty());
    char recording[260];
    ASSERT_TRUE(GetTempFile(kTemporaryRecordingFolder, recording, ".wav"));
    MakeWave(recording);
    const fs::path destination = fs::path(output.Path()) / "Untitled 01.wav";
    // The output outgrows the space left on the disk.
    EXPECT_TRUE(WithFileSizeLimit(
        50000, [&] { return Convert(recording, destination) == PROCESS_FAILED; }));
    const fs::path kept = fs::path(output.Path()) / "Recovered Recordings" / "Untitled 01.wav";
    EXPECT_EQ(LWaveFile::OpenSource(kept.c_str())->GetError(), sndErrNone);
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_FALSE(fs::exists(recording));
    fs::remove(recording);
}

TEST_F(ConvertSafety, ALinkToNothingIsNotReplaced) {
    const fs::path out = home_.Path() / "out", copies = home_.Path() / "copies";
    const fs::path recovered = home_.Path() / "Recovered Recordings";
    const fs::path links[] = {out / "take.wav", copies / "take (2).wav", recovered / "lost.wav"};
    for (const fs::path& link : links) {
        fs::create_directories(link.parent_path());
        fs::create_symlink(home_.Path() / "gone.wav", link);
    }
    // The recording itself becomes the output, and is copied.
    ASSERT_EQ(Convert(MakeWave(home_.Path() / "take.wav"), out / "take.wav",
                      [&](LProcessConvert& job) {
                          job.convert = 0;
                          job.copyToFolder = 1;
                          std::snprintf(job.copyFolder, sizeof job.copyFolder, "%s",
                                        copies.c_str());
                      }),
              PROCESS_DONE);
    EXPECT_EQ(written_, out / "take (2).wav");
    EXPECT_TRUE(fs::is_regular_file(copies / "take (2) - 0.wav"));

    char kept[260];
    ASSERT_TRUE(LRecoverRecording(MakeWave(home_.Path() / "rec.wav").c_str(), home_.Path().c_str(),
                                  "lost", kept));
    EXPECT_EQ(fs::path(kept), recovered / "lost (2).wav");
    for (const fs::path& link : links)
        EXPECT_TRUE(fs::is_symlink(link)) << link;
}
