// The audio CD job, the disc check and erase over a scripted disc service.
#include "disc/CDBurnAudio.h"
#include "disc/DiscCheck.h"
#include "disc/DiskEventListener.h"
#include "support/BufferSource.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"

#include "ScriptedDiscService.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace fs = std::filesystem;

namespace {

class AudioCDJob : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vinora-cdjob-XXXXXX";
        root = mkdtemp(pattern);
        job.temporaryRoot = root;
        scope.disc->statuses = {ScriptedDisc::Blank()};
    }
    void TearDown() override { fs::remove_all(root); }

    bool RootIsEmpty() const { return fs::is_empty(root); }
    bool Shown(const std::string& text) const {
        return std::any_of(progress.statuses.begin(), progress.statuses.end(),
                           [&](const auto& s) { return s.first == text; });
    }

    TempHome home;
    ScriptedServiceScope scope;
    std::string root;
    LCDBurnAudio job;
    RecordingProgress progress;
};

// A ramp of `frames` frames at the rate, left rising and right falling by one 16-bit step a
// frame (sources carry 16 steps of their own per 16-bit step).
LSoundSource Ramp(int frames, int rate, unsigned char channels) {
    std::vector<int> samples;
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c) samples.push_back((c == 0 ? 16 : -16) * (f % 3000));
    return MakeBufferSource(samples, rate, channels);
}

} // namespace

TEST_F(AudioCDJob, TracksBecomeRootItemsInTheOrderOfAdding) {
    for (int i = 0; i < 12; ++i) job.AddTrack(Ramp(10, 44100, 2), "p", "t", nullptr, nullptr);
    std::vector<std::string> names;
    for (auto& [name, item] : job.compilation.Root().children) {
        names.push_back(name);
        EXPECT_TRUE(item->audioTrack);
        EXPECT_TRUE(item->sourcePath.empty());
    }
    ASSERT_EQ(names.size(), 12u);
    EXPECT_EQ(names.front(), "File01");
    EXPECT_EQ(names.back(), "File12");
    LAudioCDTrack track(Ramp(1, 44100, 2), std::string(600, 'x').c_str(), nullptr, "a", nullptr);
    EXPECT_EQ(track.path.size(), 259u);
    EXPECT_TRUE(track.title.empty());
}

TEST_F(AudioCDJob, BurnsEveryTrackInWholeBlocksAndRemovesItsFolder) {
    job.AddTrack(Ramp(588 * 3 + 100, 44100, 2), "a", "First", "Band", nullptr);
    job.AddTrack(Ramp(44100, 22050, 1), "b", "Second", nullptr, nullptr);
    EXPECT_EQ(Process(progress, job), PROCESS_DONE);
    EXPECT_EQ(job.error.code, 0u);
    ScriptedDisc& disc = *scope.disc;
    ASSERT_EQ(disc.layout.size(), 2u);
    EXPECT_EQ(disc.layout[0].lengthBlocks, 3u);
    EXPECT_NEAR(disc.layout[1].lengthBlocks, 150, 1); // one second, resampled
    EXPECT_EQ(disc.layout[0].title, "First");
    EXPECT_EQ(disc.layout[0].performer, "Band");
    // Left rises and right falls, little-endian, from the first frame on.
    const std::vector<uint8_t>& first = disc.burnt[0];
    for (int f : {0, 1, 1000, 1763}) {
        EXPECT_EQ(int16_t(first[f * 4] | first[f * 4 + 1] << 8), f) << f;
        EXPECT_EQ(int16_t(first[f * 4 + 2] | first[f * 4 + 3] << 8), -f) << f;
    }
    EXPECT_TRUE(RootIsEmpty());
    EXPECT_EQ(LMediaReservationCount(), 0);
    EXPECT_EQ(disc.reservations, 0);
    EXPECT_TRUE(Shown("Converting Audio Files 2"));
    EXPECT_TRUE(LDiskEventListener::bDiskEventEnabled);
}

TEST_F(AudioCDJob, FailuresSetTheirErrorCodeAndLeaveNoFolder) {
    const auto track = [](LCDBurnAudio& j) { j.AddTrack(Ramp(588, 44100, 2), "a", "a", nullptr, nullptr); };
    const struct {
        const char* name;
        std::function<void(LCDBurnAudio&)> prepare;
        BurnErrorCodeValue code;
    } cases[] = {
        {"no drive at the index", [&](LCDBurnAudio& j) { j.cdDrive = 1, track(j); }, 15},
        {"an unreadable source",
         [](LCDBurnAudio& j) {
             j.AddTrack(LSoundSource(new LSoundSourceError(sndErrOpen)), "x", "x", nullptr, nullptr);
         },
         26},
        {"no tracks", [](LCDBurnAudio&) {}, 41},
        {"a folder that cannot be made", [&](LCDBurnAudio& j) { j.temporaryRoot = root + "/missing"; }, 6},
        {"the drive fails",
         [&](LCDBurnAudio& j) { scope.disc->finalState = LDiscOperationState::Failed, track(j); }, 46},
    };
    for (const auto& c : cases) {
        LCDBurnAudio burn;
        burn.temporaryRoot = root;
        c.prepare(burn);
        EXPECT_EQ(Process(progress, burn), PROCESS_FAILED) << c.name;
        EXPECT_EQ(burn.error.code, c.code) << c.name;
        EXPECT_TRUE(RootIsEmpty()) << c.name;
        EXPECT_EQ(LMediaReservationCount(), 0) << c.name;
    }
}

TEST_F(AudioCDJob, AStopWhileTheDriveWritesCancelsItsWork) {
    RecordingProgress stopping;
    stopping.stopAfter = 2;
    scope.disc->finalState = LDiscOperationState::Failed;
    // Two reports while writing, then the stop: the drive is told and its end awaited.
    struct Writing : ScriptedDisc {
        int polls = 0;
        LDiscOperationStatus OperationStatus() override {
            return {++polls <= 2 || cancels == 0 ? LDiscOperationState::TrackWrite
                                                 : LDiscOperationState::Failed, 0.5f, 1};
        }
    } writing;
    EXPECT_EQ(FollowDiscOperation(stopping, writing), 1);
    EXPECT_EQ(writing.cancels, 1);
    EXPECT_EQ(stopping.statuses.back().first, "Writing track 1 ...");
}

TEST_F(AudioCDJob, DiscCheckDecisions) {
    ScriptedDisc& disc = *scope.disc;
    LDiskBurnSettings settings;
    struct Case {
        const char* what;
        std::deque<LDiscDeviceStatus> statuses;
        bool eraseCDRW;
        int project;
        int stopAfter;
        int result;
        int ejects;
        int erases;
    } cases[] = {
        {"blank CD-R", {ScriptedDisc::Blank()}, false, 0, -1, 0, 0, 0},
        {"used CD-R: ejected, then a blank one", {ScriptedDisc::Used(LDiscMediaKind::CDR), {}, {}, ScriptedDisc::Blank()}, false, 0, -1, 0, 1, 0},
        {"used CD-R, user stops", {ScriptedDisc::Used(LDiscMediaKind::CDR), {}}, false, 0, 3, 1, 1, 0},
        {"used CD-RW, erase off", {ScriptedDisc::Used(LDiscMediaKind::CDRW)}, false, 0, -1, 2, 0, 0},
        {"used CD-RW, erase on", {ScriptedDisc::Used(LDiscMediaKind::CDRW)}, true, 0, -1, 0, 0, 1},
        {"used CD-RW, the erase job", {ScriptedDisc::Used(LDiscMediaKind::CDRW)}, false, 19, -1, 0, 0, 1},
        {"no disc, user stops", {{}}, false, 0, 2, 1, 0, 0},
    };
    for (const Case& c : cases) {
        disc.statuses = c.statuses;
        disc.ejects = disc.erases = 0;
        settings.eraseCDRW = c.eraseCDRW;
        RecordingProgress check;
        check.stopAfter = c.stopAfter;
        EXPECT_EQ(ProcessCheckDriveAndDisk(check, disc, settings, c.project), c.result) << c.what;
        EXPECT_EQ(disc.ejects, c.ejects) << c.what;
        EXPECT_EQ(disc.erases, c.erases) << c.what;
    }
    disc.statuses = {{}};
    disc.valid = false;
    RecordingProgress gone;
    EXPECT_EQ(ProcessCheckDriveAndDisk(gone, disc, settings, 0), 1);
    EXPECT_EQ(gone.statuses.back().first, "Please insert a media ...");
}

TEST(ProgressTexts, EachStateHasItsLine) {
    using S = LDiscOperationState;
    struct Case {
        LDiscOperationStatus status;
        const char* text;
    } cases[] = {
        {{S::Preparing, 0, 2}, "Preparing track 2 ..."}, {{S::Preparing, 0, 0}, "Preparing..."},
        {{S::TrackWrite, 0, 3}, "Writing track 3 ..."},  {{S::TrackWrite, 0, 0}, ""},
        {{S::TrackClose, 0, 1}, "Closing... (this might take a while)"},
        {{S::SessionClose, 0, 0}, "Closing... (this might take a while)"},
        {{S::Verifying, 0, 1}, "Verifying..."},          {{S::Verifying, 0, 0}, ""},
        {{S::Erasing, 0, 0}, "Erasing..."},              {{S::Finishing, 0, 0}, "Finishing..."},
        {{S::SessionOpen, 0, 0}, "Opening Session..."},  {{S::Idle, 0, 0}, ""},
    };
    for (const Case& c : cases) EXPECT_EQ(ProgressStateText(c.status), c.text);

    RecordingProgress progress;
    LBurnCallBack<LProcessInterface> callback{&progress};
    EXPECT_FALSE(ProgressCallBack(callback, {S::TrackWrite, 0.5f, 1}));
    EXPECT_EQ(progress.progress.back(), 0.5);
    EXPECT_TRUE(ProgressCallBack(callback, {S::Failed, -1.0f, 0}));
    EXPECT_EQ(callback.result, 2);
}

TEST(MediaReservations, TheCounterGivesBackEveryOneTaken) {
    ScriptedDisc disc;
    LReleaseMediaReservation(disc);
    EXPECT_EQ(disc.reservations, 0);
    LAcquireMediaReservation(disc);
    LAcquireMediaReservation(disc);
    EXPECT_EQ(LMediaReservationCount(), 2);
    LReleaseAllMediaReservations(disc);
    EXPECT_EQ(LMediaReservationCount(), 0);
    EXPECT_EQ(disc.reservations, 0);
}
