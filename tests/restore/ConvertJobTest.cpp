// The conversion job on real files: wave and MP3 in and out, tags carried over, the in-place
// case, copies, and what is kept and logged when something fails.
#include "restore/ConvertJob.h"

#include "codecs/WaveFile.h"
#include "platform/Log.h"
#include "platform/Settings.h"
#include "restore/ConvertNotify.h"
#include "sound/SourceToSink.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"
#include "tags/AudioTagData.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;
constexpr int kSeconds = 2;

// Keeps what the job reports to the main window.
class RecordingNotify : public LConvertNotify {
public:
    std::vector<std::string> files, added, texts;
    std::vector<double> progress;
    void SetStatusText(const char* text) override { texts.emplace_back(text); }
    void NotifyFile(const char* name) override { files.emplace_back(name); }
    void NotifyAdd(const char* path) override { added.emplace_back(path); }
    void NotifyProgress(double fraction) override { progress.push_back(fraction); }
};

class ErrorProgress : public RecordingProgress {
public:
    std::vector<std::string> errors;
    void SetError(const char* text) override { errors.emplace_back(text); }
};

class ConvertJobTest : public testing::Test {
protected:
    void SetUp() override {
        SetConvertNotify(&notify_);
        fs::create_directories(In());
    }
    void TearDown() override { SetConvertNotify(nullptr); }

    fs::path In() const { return home_.Path() / "in"; }
    fs::path Out() const { return home_.Path() / "out"; }

    // A stereo tone of kSeconds, tagged when `title` is given.
    fs::path MakeWave(const char* name, const char* title = nullptr) {
        const fs::path path = In() / name;
        {
            LPRSourceToSink pump;
            pump.source = MakeSineSource(kRate, 2, 440, 200000, kRate * kSeconds);
            pump.sink = LWaveFile::OpenSinkPCM(path.c_str(), kRate, 2, 16, 0);
            RecordingProgress progress;
            EXPECT_EQ(Process(progress, pump), PROCESS_DONE);
        }
        if (title) {
            LAudioTagData tags;
            tags.SetTag("TITLE", title, true);
            tags.SetTag("ARTIST", "The Grooves", true);
            EXPECT_TRUE(tags.WriteTags(path.c_str(), tagModeAll, false));
        }
        return path;
    }

    static LProcessConvert Job(const fs::path& source, const fs::path& folder, const char* ext) {
        LProcessConvert job;
        std::snprintf(job.sourcePath, sizeof job.sourcePath, "%s", source.c_str());
        std::snprintf(job.outputFolder, sizeof job.outputFolder, "%s", folder.c_str());
        std::snprintf(job.outputExtension, sizeof job.outputExtension, "%s", ext);
        job.restore = 0;
        return job;
    }

    // Everything logged so far.
    static std::string Log() {
        char folder[260];
        if (!LLog::GetFolder(folder)) return {};
        std::string all;
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::ifstream in(entry.path());
            std::stringstream text;
            text << in.rdbuf();
            all += text.str();
        }
        return all;
    }

    TempHome home_;
    RecordingNotify notify_;
    ErrorProgress progress_;
};

TEST_F(ConvertJobTest, WaveToMp3CarriesTagsAndBackToWave) {
    LProcessConvert job = Job(MakeWave("side.wav", "Side One"), Out() / "mp3", ".mp3");
    ASSERT_EQ(Process(progress_, job), PROCESS_DONE);

    const fs::path mp3 = Out() / "mp3" / "side.mp3";
    EXPECT_STREQ(job.destinationPath, mp3.c_str());
    EXPECT_STREQ(job.lengthText, "0:00:02.000");
    const std::string tags = RunCommand("ffprobe -v error -show_entries format_tags "
                                        "-of default=noprint_wrappers=1 " +
                                        ShellQuote(mp3.string()));
    EXPECT_NE(tags.find("title=Side One"), std::string::npos) << tags;
    EXPECT_NE(tags.find("artist=The Grooves"), std::string::npos) << tags;
    EXPECT_EQ(notify_.files, std::vector<std::string>{"side.mp3"});
    EXPECT_EQ(notify_.added, std::vector<std::string>{mp3.string()});
    EXPECT_EQ(notify_.progress.back(), 1.0);
    EXPECT_EQ(notify_.texts.back(), "");
    EXPECT_TRUE(fs::exists(In() / "side.wav"));

    LProcessConvert back = Job(mp3, Out() / "wav", ".wav");
    back.deleteSource = 1;
    ASSERT_EQ(Process(progress_, back), PROCESS_DONE);
    LSoundSource wave = LWaveFile::OpenSource((Out() / "wav" / "side.wav").c_str());
    ASSERT_EQ(wave->GetError(), sndErrNone);
    EXPECT_EQ(wave->GetSampleRate(), kRate);
    EXPECT_EQ(wave->GetChannels(), 2);
    EXPECT_NEAR(wave->GetEndSample(), kRate * kSeconds, kRate / 10);
    EXPECT_FALSE(fs::exists(mp3));
    EXPECT_EQ(Log().find("Applying Audio Restoration"), std::string::npos);
}

TEST_F(ConvertJobTest, InPlaceReplacesTheSource) {
    const fs::path source = MakeWave("x.wav");
    fs::resize_file(source, fs::file_size(source) - 4000); // the result is a whole file again
    LProcessConvert job = Job(source, In(), ".wav");
    std::snprintf(job.destinationPath, sizeof job.destinationPath, "%s", source.c_str());
    job.deleteSource = 1;
    ASSERT_EQ(Process(progress_, job), PROCESS_DONE);

    EXPECT_TRUE(fs::exists(source));
    EXPECT_FALSE(fs::exists(In() / "_x.wav"));
    EXPECT_EQ(LWaveFile::OpenSource(source.c_str())->GetError(), sndErrNone);
    EXPECT_NE(Log().find("Converting file to destination " + source.string()), std::string::npos);
}

TEST_F(ConvertJobTest, CopyTakesTheFirstFreeNumberedName) {
    const fs::path copies = home_.Path() / "copies";
    fs::create_directories(copies);
    std::ofstream(copies / "a.mp3") << "x";
    std::ofstream(copies / "a - 0.mp3") << "x";
    LProcessConvert job = Job(MakeWave("a.wav"), Out(), ".mp3");
    job.copyToFolder = 1;
    std::snprintf(job.copyFolder, sizeof job.copyFolder, "%s", copies.c_str());
    ASSERT_EQ(Process(progress_, job), PROCESS_DONE);
    EXPECT_EQ(fs::file_size(copies / "a - 1.mp3"), fs::file_size(Out() / "a.mp3"));
    EXPECT_EQ(fs::file_size(copies / "a.mp3"), 1u);
}

TEST_F(ConvertJobTest, WithoutConvertTheRecordingBecomesTheOutput) {
    const fs::path source = MakeWave("rec.wav");
    const auto size = fs::file_size(source);
    LProcessConvert job = Job(source, Out(), ".wav");
    job.convert = 0;
    ASSERT_EQ(Process(progress_, job), PROCESS_DONE);
    EXPECT_FALSE(fs::exists(source));
    EXPECT_EQ(fs::file_size(Out() / "rec.wav"), size);
}

// A file already at the destination (another recording of that name, a file the user put
// there) is never replaced: the output takes the next free "name (n)", announced and logged.
TEST_F(ConvertJobTest, AnExistingDestinationIsKeptAndTheOutputNumbered) {
    for (const bool convert : {true, false}) {
        fs::remove_all(Out());
        fs::create_directories(Out());
        std::ofstream(Out() / "Untitled 01.wav") << "first";
        std::ofstream(Out() / "Untitled 01 (2).wav") << "second";
        LProcessConvert job = Job(MakeWave("rec.wav"), Out(), ".wav");
        std::snprintf(job.destinationPath, sizeof job.destinationPath, "%s",
                      (Out() / "Untitled 01.wav").c_str());
        job.convert = convert;
        job.deleteSource = 1;
        notify_.added.clear();
        ASSERT_EQ(Process(progress_, job), PROCESS_DONE) << convert;

        std::ifstream first(Out() / "Untitled 01.wav"), second(Out() / "Untitled 01 (2).wav");
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(first), {}), "first") << convert;
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(second), {}), "second") << convert;
        const fs::path numbered = Out() / "Untitled 01 (3).wav";
        EXPECT_EQ(LWaveFile::OpenSource(numbered.c_str())->GetError(), sndErrNone) << convert;
        EXPECT_EQ(notify_.added, std::vector<std::string>{numbered.string()}) << convert;
        EXPECT_NE(Log().find("is saved as " + numbered.string()), std::string::npos) << convert;
    }
}

TEST_F(ConvertJobTest, FailuresKeepTheSourceAndLeaveNoOutput) {
    const fs::path source = MakeWave("keep.wav");

    LProcessConvert unknown = Job(source, Out(), ".ogg");
    unknown.deleteSource = 1;
    EXPECT_EQ(Process(progress_, unknown), PROCESS_FAILED);
    ASSERT_EQ(progress_.errors.size(), 1u);
    EXPECT_EQ(progress_.errors[0], "Save File Error: \"" + (Out() / "keep.ogg").string() + "\"");

    // A folder where the output is written.
    fs::create_directories(Out() / ".keep.partial.wav");
    LProcessConvert blocked = Job(source, Out(), ".wav");
    blocked.deleteSource = 1;
    EXPECT_EQ(Process(progress_, blocked), PROCESS_FAILED);
    EXPECT_TRUE(fs::is_directory(Out() / ".keep.partial.wav"));
    // The encoder starts but cannot write its file.
    fs::create_directories(Out() / ".keep.partial.mp3");
    LProcessConvert encoder = Job(source, Out(), ".mp3");
    encoder.deleteSource = 1;
    EXPECT_EQ(Process(progress_, encoder), PROCESS_FAILED);

    // Stopped with audio still on its way to the file (the encoder's input runs ahead), and
    // stopped while normalisation measures, with the output open and the encoder waiting.
    LRestoreChoices normalize;
    normalize.normalization = true;
    for (const char* ext : {".wav", ".mp3"}) {
        for (const bool restore : {false, true}) {
            LProcessConvert stopped = Job(source, Out() / "stop", ext);
            stopped.deleteSource = 1;
            stopped.restore = restore;
            progress_.stopQueries = 0;
            progress_.stopAfter = 1; // after the first batch of blocks
            EXPECT_EQ(Process(progress_, stopped, normalize), PROCESS_STOPPED) << ext;
            progress_.stopAfter = -1;
        }
    }

    // An output folder that cannot be made.
    std::ofstream(home_.Path() / "file") << "x";
    LProcessConvert noFolder = Job(source, home_.Path() / "file" / "sub", ".wav");
    noFolder.deleteSource = 1;
    EXPECT_EQ(Process(progress_, noFolder), PROCESS_FAILED);

    EXPECT_TRUE(fs::exists(source));
    EXPECT_EQ(fs::directory_iterator(Out() / "stop"), fs::directory_iterator());

    // Sources that cannot be read.
    std::ofstream(In() / "notes.txt") << "not audio";
    std::ofstream(In() / "broken.wav") << "not a wave file at all";
    for (const char* name : {"notes.txt", "broken.wav", "missing.wav"}) {
        LProcessConvert job = Job(In() / name, Out() / "unread", ".wav");
        EXPECT_EQ(Process(progress_, job), PROCESS_FAILED) << name;
    }
    EXPECT_TRUE(fs::exists(In() / "broken.wav"));
    EXPECT_EQ(fs::directory_iterator(Out() / "unread"), fs::directory_iterator());

    const std::string log = Log();
    EXPECT_NE(log.find("File conversion FAILED: the source file could not be opened " +
                       (In() / "missing.wav").string()),
              std::string::npos);
    EXPECT_NE(log.find("File conversion FAILED: could not create sink file"), std::string::npos);
    EXPECT_NE(log.find("File conversion FAILED: could not write to the sink file " +
                       (Out() / "stop" / "keep.wav").string()),
              std::string::npos);
}

TEST_F(ConvertJobTest, RestorationRunsWhenAsked) {
    LUserSettingSet<bool>("AudioRestoration", "Normalization", true);
    LProcessConvert on = Job(MakeWave("r.wav"), Out() / "on", ".wav");
    on.restore = 1;
    ASSERT_EQ(Process(progress_, on), PROCESS_DONE);
    EXPECT_NE(Log().find("Applying Audio Restoration"), std::string::npos);
    EXPECT_NE(std::find(notify_.texts.begin(), notify_.texts.end(), "Normalize..."),
              notify_.texts.end());
}

} // namespace

TEST_F(ConvertJobTest, RequestsWhoseStringsFillTheirFieldsFailWithinThem) {
    // A damaged queue file can hold requests without a single terminating zero: every field
    // and flag byte set. The job must stay inside each field and fail cleanly.
    const auto fill = [](char (&field)[260], const std::string& start, const char* pattern) {
        for (std::size_t i = 0; i < sizeof field; ++i)
            field[i] = i < start.size() ? start[i] : pattern[(i - start.size()) % 2];
    };
    LProcessConvert job;
    std::memset(static_cast<void*>(&job), 1, sizeof job);
    fill(job.sourcePath, (In() / "missing").string(), "xx");
    fill(job.outputFolder, (Out() / "deep/").string(), "d/");
    fill(job.outputExtension, ".wav", "ww");
    fill(job.destinationPath, "", "\0\0");
    fill(job.reserved, "", "rr");
    fill(job.lengthText, "", "ll");
    fill(job.copyFolder, (Out() / "copy/").string(), "c/");
    EXPECT_EQ(Process(progress_, job), PROCESS_FAILED);
    EXPECT_EQ(std::strlen(job.destinationPath), 259u);
    EXPECT_EQ(std::string(job.destinationPath).rfind((Out() / "deep/d/d/").string(), 0), 0u);
}
