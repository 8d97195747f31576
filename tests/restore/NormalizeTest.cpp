#include "restore/Normalize.h"

#include "platform/Settings.h"
#include "restore/ClickPop.h"
#include "restore/ConvertNotify.h"
#include "restore/DCOffset.h"
#include "restore/HighPassFilter.h"
#include "restore/NoiseGates.h"
#include "restore/RIAA.h"
#include "restore/RestoreChain.h"
#include "support/BufferSource.h"
#include "sound/SourceToSink.h"
#include "support/RecordingProgress.h"
#include "support/RecordingSink.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace {

// A mono block of `frames` frames whose peak is `peak`, alternating sign.
std::vector<int> Block(int frames, int peak) {
    std::vector<int> samples(frames);
    for (int i = 0; i < frames; ++i)
        samples[i] = (i % 2 ? -1 : 1) * (peak * (i % 7 + 1) / 7);
    return samples;
}

int Peak(const std::vector<int>& samples) {
    int peak = 0;
    for (int s : samples)
        peak = std::max(peak, std::abs(s));
    return peak;
}

TEST(Normalize, BringsThePeakTo80Percent) {
    const int frames = 20000; // more than two blocks
    LSoundSource source = MakeBufferSource(Block(frames, kNormalizeFullScale / 4), 44100, 1);
    LSoundSource original = source;
    RecordingProgress progress;
    ASSERT_EQ(ProcessNormalize(progress, source, 80), PROCESS_DONE);
    EXPECT_NE(source.Get(), original.Get());
    // 80 % of full scale over a quarter of it is x3.2, quantised to 1/512.
    const int gain = ((320 * 512) / 100);
    // Negative samples round down by one.
    const long long expected = static_cast<long long>(kNormalizeFullScale / 4) * gain / 512;
    EXPECT_NEAR(Peak(ReadAll(source, frames)), expected, 1);
    EXPECT_EQ(progress.statuses.front().first, "Normalize");
    EXPECT_EQ(progress.progress.size(), 3u);
}

// A peak of 1 % of full scale would need x80; silence gets no stage; a stop or an error
// source changes nothing.
TEST(Normalize, GainIsLimitedAndSilenceStopOrErrorLeaveTheSource) {
    LProcessNormalize job{80, MakeBufferSource(Block(1000, kNormalizeFullScale / 100), 44100, 2)};
    RecordingProgress progress;
    int gainPercent = 100;
    ASSERT_EQ(ProcessNormalizeGetGain(progress, job, gainPercent), PROCESS_DONE);
    EXPECT_EQ(gainPercent, kNormalizeMaxGainPercent);
    EXPECT_EQ(job.source->GetPositionSample(), 0);

    LSoundSource silence = MakeBufferSource(std::vector<int>(5000, 0), 44100, 1);
    LSoundSource original = silence;
    EXPECT_EQ(ProcessNormalize(progress, silence, 80), PROCESS_DONE);
    EXPECT_EQ(silence.Get(), original.Get());

    LSoundSource source = MakeBufferSource(Block(20000, 1000), 44100, 1);
    original = source;
    progress.stopAfter = progress.stopQueries + 1;
    EXPECT_EQ(ProcessNormalize(progress, source, 80), PROCESS_STOPPED);
    EXPECT_EQ(source.Get(), original.Get());

    LSoundSource broken;
    EXPECT_EQ(ProcessNormalize(progress, broken, 80), PROCESS_FAILED);
}

// Keeping the measured pass (in memory, in the temporary file, or split between them) writes
// exactly what measuring and then reading the stages again writes, past the end too, and again
// after a seek to the start.
TEST(Normalize, KeepingTheMeasuredPassGivesWhatReadingAgainGives) {
    constexpr int kFrames = 100000;
    RecordingProgress progress;
    auto stages = [&] {
        LSoundSource source = MakeSineSource(44100, 2, 440, 100000, kFrames);
        EXPECT_EQ(ProcessLowCutFilter(progress, source, 150), PROCESS_DONE);
        EXPECT_EQ(ProcessNoiseReduction(progress, source, -36), PROCESS_DONE);
        EXPECT_EQ(ProcessRIAAEqCalculate(progress, source), PROCESS_DONE);
        return source;
    };
    const int frameBytes = 2 * sizeof(int);
    for (int memoryBytes : {kKeptPassMemoryBytes, 30000 * frameBytes, 0}) {
        LSoundSource again = stages();
        LSoundSource kept = stages();
        ASSERT_EQ(ProcessNormalize(progress, again, 80), PROCESS_DONE);
        ASSERT_EQ(ProcessNormalizeKeepingPass(progress, kept, 80, memoryBytes), PROCESS_DONE);
        EXPECT_EQ(kept->GetEndSample(), kFrames);
        const int past = kFrames + 100000; // beyond what was kept past the end
        EXPECT_EQ(ReadAll(kept, past, 1260), ReadAll(again, past, 1260)) << memoryBytes;
        kept->Seek(0);
        again->Seek(0);
        EXPECT_EQ(ReadAll(kept, 40000), ReadAll(again, 40000)) << memoryBytes;
    }
    // A stop leaves the source in place.
    LSoundSource source = stages();
    const LSoundSource original = source;
    progress.stopAfter = progress.stopQueries + 3;
    EXPECT_EQ(ProcessNormalizeKeepingPass(progress, source, 80, 0), PROCESS_STOPPED);
    EXPECT_EQ(source.Get(), original.Get());
}

// Points the descriptor of every unnamed file of the temporary folder at an empty file, so that
// reading what was kept there fails. Returns how many it found.
int EmptyTheUnnamedTemporaryFiles() {
    int found = 0;
    DIR* folder = opendir("/proc/self/fd");
    const int empty = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (dirent* entry; (entry = readdir(folder));) {
        char target[512] = {};
        const std::string link = std::string("/proc/self/fd/") + entry->d_name;
        if (readlink(link.c_str(), target, sizeof target - 1) <= 0) continue;
        const std::string path = target;
        if (path.rfind("/var/tmp/", 0) == 0 && path.ends_with(" (deleted)")) {
            dup2(empty, std::atoi(entry->d_name));
            ++found;
        }
    }
    close(empty);
    closedir(folder);
    return found;
}

// The kept pass read back from a temporary file that can no longer be read: the write fails
// before it writes anything, instead of writing silence.
TEST(Normalize, AKeptPassThatCannotBeReadBackFailsTheWrite) {
    RecordingProgress progress;
    LSoundSource source = MakeSineSource(44100, 2, 440, 100000, 100000);
    ASSERT_EQ(ProcessNormalizeKeepingPass(progress, source, 80, 0), PROCESS_DONE);
    ASSERT_EQ(EmptyTheUnnamedTemporaryFiles(), 1);
    EXPECT_EQ(source->GetError(), sndErrNone); // nothing read yet

    RecordedWrites writes;
    LPRSourceToSink pump;
    pump.source = source;
    pump.sink = MakeRecordingSink(writes, 44100, 2);
    EXPECT_EQ(Process(progress, pump), PROCESS_FAILED);
    EXPECT_TRUE(writes.samples.empty());
    EXPECT_EQ(source->GetError(), sndErrInput);
}

// A restoration signal: a low tone with a DC offset, hiss, and a click every 10,000 frames.
std::vector<int> Record(int frames) {
    std::vector<int> samples(static_cast<size_t>(frames) * 2);
    unsigned noise = 12345;
    for (int f = 0; f < frames; ++f) {
        for (int c = 0; c < 2; ++c) {
            noise = noise * 1103515245u + 12345u;
            const int hiss = static_cast<int>(noise >> 20) - 2048;
            const int tone = static_cast<int>(150000 * std::sin(f * 0.0123 * (c + 1)));
            const int click = f % 10000 == 5000 ? 300000 : 0;
            samples[static_cast<size_t>(f) * 2 + c] = 3000 + tone + hiss + click;
        }
    }
    return samples;
}

// The chain spreads its stages over threads while normalisation measures and keeps the pass:
// what it gives is exactly what the same stages give read one after the other on one thread,
// past the end too.
TEST(RestoreChain, AllStepsOverThreadsGiveWhatOneThreadGives) {
    constexpr int kFrames = 300000; // several times what a read-ahead holds
    const std::vector<int> record = Record(kFrames);
    RecordingProgress progress;

    LSoundSource one = MakeBufferSource(record, 44100, 2);
    ASSERT_EQ(ProcessDCOffset(progress, one), PROCESS_DONE);
    ASSERT_EQ(ProcessLowCutFilter(progress, one, 150), PROCESS_DONE);
    ASSERT_EQ(ProcessClickPop(progress, one), PROCESS_DONE);
    ASSERT_EQ(ProcessNoiseReduction(progress, one, -36), PROCESS_DONE);
    ASSERT_EQ(ProcessRIAAEqCalculate(progress, one), PROCESS_DONE);
    ASSERT_EQ(ProcessNormalize(progress, one, 80), PROCESS_DONE);

    LRestoreChoices all;
    all.dcOffset = all.highPass = all.clickPop = all.noiseReduce = all.equalization =
        all.normalization = true;
    LSoundSource threaded = MakeBufferSource(record, 44100, 2);
    ASSERT_EQ(ProcessAudioRestore(progress, threaded, all), PROCESS_DONE);

    const int past = kFrames + 20000;
    const std::vector<int> expected = ReadAll(one, past);
    ASSERT_EQ(ReadAll(threaded, past), expected);
    // The tone went through: the comparison is not one of silences.
    EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 100000);
}

// Keeps the status texts the chain shows.
class RecordingNotify : public LConvertNotify {
public:
    std::vector<std::string> texts;
    void SetStatusText(const char* text) override { texts.emplace_back(text); }
    void NotifyFile(const char*) override {}
    void NotifyAdd(const char*) override {}
    void NotifyProgress(double) override {}
};

TEST(RestoreChain, RunsTheChosenStepsInOrderAndReadsTheChoicesFromTheSettings) {
    TempHome home;
    RecordingNotify notify;
    SetConvertNotify(&notify);
    RecordingProgress progress;

    LSoundSource source = MakeBufferSource(Block(4000, 1000), 44100, 2);
    LSoundSource original = source;
    EXPECT_EQ(ProcessAudioRestore(progress, source, LRestoreChoices::FromSettings()), PROCESS_DONE);
    EXPECT_EQ(source.Get(), original.Get());
    EXPECT_TRUE(notify.texts.empty());
    // Unstored flags count as on when deciding whether to restore at all.
    EXPECT_TRUE(LRestoreChoices::IsWantedBySettings());

    for (const char* key : {"Normalization", "DCOffset", "HPF"})
        LUserSettingSet<bool>("AudioRestoration", key, true);
    LUserSettingSet<int>("RecordingSource", "RecordingSpeed", 2);
    const LRestoreChoices stored = LRestoreChoices::FromSettings();
    EXPECT_EQ(ProcessAudioRestore(progress, source, stored), PROCESS_DONE);
    EXPECT_EQ(notify.texts, (std::vector<std::string>{"DC Offset...", "HPF...", "78RPM Convert...",
                                                      "Normalize..."}));
    EXPECT_NE(source.Get(), original.Get());

    for (const char* key :
         {"DCOffset", "HPF", "Equalization", "ClickPop", "NoiseReduce", "Normalization"})
        LUserSettingSet<bool>("AudioRestoration", key, false);
    EXPECT_TRUE(LRestoreChoices::IsWantedBySettings());
    LUserSettingSet<int>("RecordingSource", "RecordingSpeed", 0);
    EXPECT_FALSE(LRestoreChoices::IsWantedBySettings());
    EXPECT_FALSE(LRestoreChoices::FromSettings().Any());

    LSoundSource broken;
    EXPECT_EQ(ProcessAudioRestore(progress, broken, stored), PROCESS_FAILED);
    SetConvertNotify(nullptr);
}

} // namespace
