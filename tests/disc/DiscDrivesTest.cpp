// The burner scan, disc information and capacity texts, drive names and the disc event listener,
// over a scripted disc service.
#include "disc/DiscDrives.h"
#include "disc/DiskEventListener.h"
#include "jobs/MainThreadQueue.h"
#include "jobs/PlainMainQueue.h"
#include "platform/Settings.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"

#include "ScriptedDiscService.h"

#include <gtest/gtest.h>

TEST(BurnerScan, SpeedsInTenthsOfXAtMost21AndDriveNames) {
    TempHome home;
    ScriptedServiceScope scope;
    LDiscDeviceStatus status = ScriptedDisc::Blank();
    for (int i = 1; i <= 30; ++i) status.burnSpeeds.push_back(i * 176.4);
    status.burnSpeeds[0] = -5; // taken as 0
    status.maximumWriteSpeed = 5292;
    scope.disc->statuses = {status};
    ProcessFindBurners job;
    RecordingProgress progress;
    EXPECT_EQ(Process(progress, job), PROCESS_DONE);
    ASSERT_EQ(job.count, 1);
    const LBurnerRecord& record = job.burners[0];
    EXPECT_EQ(record.speeds[0], 0);
    EXPECT_EQ(record.speeds[1], 20);
    EXPECT_EQ(record.speeds[20], 210);
    EXPECT_STREQ(record.vendor, "Maker");
    EXPECT_STREQ(record.product, "Writer");
    EXPECT_EQ(record.mediaType, MEDIA_CDR);
    EXPECT_TRUE(record.usableDisc);
    EXPECT_EQ(record.maximumWriteSpeed, 5292u);
    EXPECT_EQ(progress.statuses.front().first, "Scanning Available Drives");
    EXPECT_EQ(MapDriveNumberToString(0), "Maker Writer");
    EXPECT_EQ(MapDriveNumberToString(1), "");

    EXPECT_EQ(SpeedInTenths(1385 * 4, SpeedUnitForMedia(MEDIA_DVDPR)), 40);
    EXPECT_EQ(SpeedUnitForMedia(MEDIA_CDRW), 177);

    scope.disc->statuses = {ScriptedDisc::Used(LDiscMediaKind::CDR)};
    Process(progress, job);
    EXPECT_FALSE(job.burners[0].usableDisc);
    scope.service->devices.clear();
    EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    EXPECT_EQ(job.count, 0);
}

TEST(DiscCapacity, TextsForEachDisc) {
    TempHome home;
    ScriptedServiceScope scope;
    EXPECT_EQ(GetCDCapacity(false), "Unknown");

    scope.disc->statuses = {LDiscDeviceStatus{}};
    EXPECT_EQ(GetCDCapacity(true), "No Disc in Drive");
    EXPECT_EQ(LUserSettingGetString("CD", "Capacity", ""), "No Disc in Drive");
    EXPECT_EQ(GetCDCapacity(false), "No Disc in Drive");

    scope.disc->statuses = {ScriptedDisc::Used(LDiscMediaKind::CDR)};
    EXPECT_EQ(GetCDCapacity(true), "Disc Already Used");

    LDiscDeviceStatus blank = ScriptedDisc::Blank();
    blank.freeBlocks = 360000; // 80 minutes
    scope.disc->statuses = {blank};
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 4);
    EXPECT_EQ(GetCDCapacity(true), "1:20:00.00");
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 2);
    scope.disc->statuses = {ScriptedDisc::Blank()};
    EXPECT_EQ(GetCDCapacity(true), "702.83 MB");
    EXPECT_EQ(CapacityText(512, 1), " 1.00 MB");

    uint32_t freeBlocks = 0, usedBlocks = 0;
    int media = 0;
    RecordingProgress progress;
    LUserSettingSet<int>("CDRecorder", "CDDrive", 3);
    EXPECT_EQ(LDiskGetCapacityTemplate(progress, freeBlocks, usedBlocks, media).code, 15u);
    LUserSettingSet<int>("CDRecorder", "CDDrive", 255);
    EXPECT_EQ(LDiskGetCapacityTemplate(progress, freeBlocks, usedBlocks, media).code, 46u);
}

TEST(EraseJob, ErasesAnErasableDiscWhateverEraseCDRWSays) {
    TempHome home;
    ScriptedServiceScope scope;
    LUserSettingSet<bool>("CDRecorder", "EraseCDRW", false);
    scope.disc->statuses = {ScriptedDisc::Used(LDiscMediaKind::CDRW)};
    ProcessEraseDisk job;
    RecordingProgress progress;
    EXPECT_EQ(Process(progress, job), PROCESS_DONE);
    EXPECT_EQ(scope.disc->erases, 1);
    EXPECT_EQ(progress.statuses.front().first, "Erase Disk");

    LUserSettingSet<int>("CDRecorder", "CDDrive", 2);
    EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    EXPECT_EQ(job.error.code, 15u);
}

TEST(DiskEvents, InsertionAndRemovalReachTheWindowUnlessSwitchedOff) {
    ScriptedServiceScope scope;
    LPlainMainQueue queue;
    LMainThreadQueue::SetCurrent(&queue);
    std::vector<int> sent;
    {
        LDiskEventListener listener([&](int command) { sent.push_back(command); }, 7, 8);
        const auto report = [&](LDiscDeviceStatus status) {
            scope.disc->statuses = {status};
            scope.service->watcher();
            queue.RunPending();
        };
        report(LDiscDeviceStatus{});          // first report: recorded only
        report(ScriptedDisc::Blank());        // inserted
        LDiscDeviceStatus moving;
        moving.inTransition = true;
        report(moving);                       // ignored
        report(LDiscDeviceStatus{});          // removed
        {
            LDiskEventsOff burning;
            report(ScriptedDisc::Blank());    // a burn job runs: nothing
        }
        EXPECT_EQ(sent, (std::vector<int>{7, 8}));
    }
    LMainThreadQueue::SetCurrent(nullptr);
}
