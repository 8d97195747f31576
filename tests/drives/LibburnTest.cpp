// The libburn adapter: a scan on this machine, and libburn's records read as the disc service's.
#include "drives/LibburnDrive.h"
#include "drives/LibburnMapping.h"
#include "drives/UdevMediaMonitor.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace burn;

TEST(LibburnScan, RunsAndFindsOnlyRealDrives) {
    // Machines without optical drives (this one, CI) give an empty list, without an error.
    for (const LDiscDeviceRef& drive : ScanLibburnDrives())
        EXPECT_FALSE(drive->CopyInfo().vendor.empty());
    SUCCEED();
}

TEST(LibburnMapping, ProfilesAsMediaKinds) {
    const std::pair<int, LDiscMediaKind> cases[] = {
        {0x00, LDiscMediaKind::None},     {0x08, LDiscMediaKind::CDROM},
        {0x09, LDiscMediaKind::CDR},      {0x0a, LDiscMediaKind::CDRW},
        {0x10, LDiscMediaKind::DVDROM},   {0x11, LDiscMediaKind::DVDR},
        {0x13, LDiscMediaKind::DVDRW},    {0x12, LDiscMediaKind::DVDRAM},
        {0x1a, LDiscMediaKind::DVDPlusRW}, {0x1b, LDiscMediaKind::DVDPlusR},
        {0x41, LDiscMediaKind::BDR},      {0x43, LDiscMediaKind::BDRE},
        {0x40, LDiscMediaKind::BDROM},    {0xffff, LDiscMediaKind::Other},
    };
    for (auto [profile, kind] : cases) EXPECT_EQ(MapLibburnProfile(profile), kind) << profile;
}

TEST(LibburnMapping, DiscStatesAndInfo) {
    LDiscDeviceStatus blank = MapLibburnDisc(BURN_DISC_BLANK, 0x0a, true, 702 * 1024 * 1024, 359847);
    EXPECT_TRUE(blank.mediaPresent && blank.blank && blank.appendable && blank.erasable);
    EXPECT_EQ(blank.kind, LDiscMediaKind::CDRW);
    EXPECT_EQ(blank.freeBlocks, 702u * 512);
    EXPECT_EQ(blank.usedBlocks, 0u);

    LDiscDeviceStatus full = MapLibburnDisc(BURN_DISC_FULL, 0x09, false, 0, 359847);
    EXPECT_TRUE(full.mediaPresent && !full.blank && !full.appendable && !full.erasable);
    EXPECT_EQ(full.usedBlocks, 359847u);
    EXPECT_EQ(MapLibburnDisc(BURN_DISC_APPENDABLE, 0x09, false, 2048, 0).usedBlocks, 1u);
    EXPECT_FALSE(MapLibburnDisc(BURN_DISC_EMPTY, 0, false, 0, 0).mediaPresent);
    EXPECT_TRUE(MapLibburnDisc(BURN_DISC_UNREADY, 0, false, 0, 0).inTransition);

    burn_drive_info info {};
    std::memcpy(info.vendor, "HL-DT-ST", 8);
    std::memcpy(info.product, "DVDRAM GH24NSD1 ", 16);
    info.write_cdr = 1;
    info.write_dvdr = 1;
    info.sao_block_types = 1;
    const LDiscDeviceInfo mapped = MapLibburnInfo(info);
    EXPECT_EQ(mapped.vendor, "HL-DT-ST");
    EXPECT_EQ(mapped.product, "DVDRAM GH24NSD1");
    EXPECT_TRUE(mapped.canWriteCD && mapped.canWriteCDSAO && mapped.canWriteDVD);
    EXPECT_FALSE(mapped.canWriteDVDRAM);
}

TEST(LibburnMapping, SpeedsOfTheLoadedProfileFastestFirst) {
    burn_speed_descriptor list[4] {};
    const int speeds[][2] = {{0x09, 7056}, {0x09, 1764}, {0x11, 22160}, {0x09, 7056}};
    for (int i = 0; i < 4; ++i) {
        list[i].profile_loaded = speeds[i][0];
        list[i].write_speed = speeds[i][1];
        list[i].next = i < 3 ? &list[i + 1] : nullptr;
    }
    EXPECT_EQ(MapLibburnSpeeds(list, 0x09), (std::vector<double>{7056, 1764}));
    EXPECT_TRUE(MapLibburnSpeeds(nullptr, 0x09).empty());
}

TEST(LibburnMapping, ProgressStates) {
    burn_progress progress {};
    progress.track = 1;
    progress.sectors = 200;
    progress.sector = 50;
    using S = LDiscOperationState;
    const std::pair<burn_drive_status, LDiscOperationStatus> cases[] = {
        {BURN_DRIVE_WRITING, {S::TrackWrite, 0.25f, 2}},
        {BURN_DRIVE_WRITING_PREGAP, {S::Preparing, 0.25f, 2}},
        {BURN_DRIVE_WRITING_LEADIN, {S::SessionOpen, 0.25f, 0}},
        {BURN_DRIVE_CLOSING_SESSION, {S::SessionClose, 0.25f, 0}},
        {BURN_DRIVE_SPAWNING, {S::Preparing, -1.0f, 0}},
        {BURN_DRIVE_IDLE, {S::Done, 1.0f, 0}},
    };
    for (const auto& [status, expected] : cases) {
        const LDiscOperationStatus got = MapLibburnProgress(status, progress, false, true);
        EXPECT_EQ(got.state, expected.state) << status;
        EXPECT_FLOAT_EQ(got.fraction, expected.fraction) << status;
        EXPECT_EQ(got.currentTrack, expected.currentTrack) << status;
    }
    EXPECT_EQ(MapLibburnProgress(BURN_DRIVE_IDLE, progress, false, false).state, S::Failed);
    EXPECT_EQ(MapLibburnProgress(BURN_DRIVE_ERASING, progress, true, true).state, S::Erasing);
}

TEST(UdevMediaMonitor, StartsAndStopsWithoutEvents) {
    // No disc changes here: the monitor only has to come up and go down cleanly, with or
    // without a udev daemon.
    int changes = 0;
    { LUdevMediaMonitor monitor([&] { ++changes; }); }
    EXPECT_EQ(changes, 0);
}
