// The command functions over a scripted drive: the not-ready retry, the waits, the sized
// reads, mode pages, media, capabilities, capacities and speeds, each with its error texts.
#include "SCSIScriptedTransport.h"

#include "burn/BurnMediaTypes.h"
#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"
#include "disc/SCSICommands.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

namespace {

class SCSICommandsTest : public testing::Test {
protected:
    void Script(std::vector<ScriptedAnswer> script) { s.drive->script = std::move(script); }
    const std::vector<SentCommand>& Sent() const { return s.drive->sent; }
    std::vector<uint8_t> Opcodes() const { return s.drive->Opcodes(); }

    ScriptedDevice s;
    LSCSI& device = s.device;
    RecordingProgress job;
};

TEST_F(SCSICommandsTest, ExecutorRetriesOnlyWhileNotReady) {
    const struct {
        const char* name;
        std::vector<ScriptedAnswer> script;
        int stopAfter;
        int result;
        std::vector<uint32_t> timeouts;
    } cases[] = {
        {"becomes ready", {Refuse({0x00}, {2, 0x04, 0x01}, 2), Answer({0x00})}, -1, PROCESS_DONE,
         {2000, 1500, 1000}},
        {"never ready", {Refuse({0x00}, {2, 0x04, 0x01})}, -1, PROCESS_FAILED,
         {2000, 1500, 1000, 500}},
        {"other sense", {Refuse({0x00}, {5, 0x24, 0x00})}, -1, PROCESS_FAILED, {2000}},
        {"stopped while waiting", {Refuse({0x00}, {2, 0x04, 0x01})}, 0, PROCESS_STOPPED, {2000}},
    };
    for (const auto& c : cases) {
        ScriptedDevice fresh;
        fresh.drive->script = c.script;
        RecordingProgress progress;
        progress.stopAfter = c.stopAfter;
        uint32_t waited = 0;
        EXPECT_EQ(ProcessSCSIExecuteCommand(progress, fresh.device, CDBTestUnitReady(), nullptr, 0,
                                            2000, false, &waited),
                  c.result)
            << c.name;
        std::vector<uint32_t> timeouts;
        for (const SentCommand& sent : fresh.drive->sent) timeouts.push_back(sent.timeoutMs);
        EXPECT_EQ(timeouts, c.timeouts) << c.name;
        if (c.result != PROCESS_STOPPED) {
            EXPECT_EQ(waited, 500 * (c.timeouts.size() - 1)) << c.name;
        }
    }
}

TEST_F(SCSICommandsTest, WaitUnitReadyOutcomes) {
    const struct {
        const char* name;
        LSenseBytes sense;
        bool failWithoutMedium;
        uint32_t timeout;
        BurnErrorCodeValue code;
        const char* text;
    } cases[] = {
        {"unrelated sense ends the wait", {5, 0x20, 0x00}, false, 0, 0, ""},
        {"no disc, asked to fail", {2, 0x3A, 0x00}, true, 0, 14, ""},
        {"no disc until the time is up", {2, 0x3A, 0x01}, false, 1000, 14, ""},
        {"becoming ready until the time is up", {2, 0x04, 0x01}, false, 3000, 44, ""},
        {"medium changed until the time is up", {6, 0x28, 0x00}, false, 1000, 44, ""},
        {"formatting until the time is up", {2, 0x04, 0x04}, false, 3000, 46,
         "Wait unit ready failed"},
    };
    for (const auto& c : cases) {
        ScriptedDevice fresh;
        fresh.drive->script = {Refuse({0x00}, c.sense)};
        RecordingProgress progress;
        const BurnErrorCode error =
            ProcessSCSIWaitUnitReady(progress, fresh.device, c.failWithoutMedium, c.timeout);
        EXPECT_EQ(error.code, c.code) << c.name;
        EXPECT_STREQ(error.text, c.text) << c.name;
        if (c.code) {
            EXPECT_EQ(error.senseKey, c.sense.key) << c.name;
        }
    }
    // Becoming ready within the time, and a stop while waiting.
    Script({Refuse({0x00}, {6, 0x28, 0x00}, 3), Answer({0x00})});
    EXPECT_EQ(ProcessSCSIWaitUnitReady(job, device, false, 60000).code, 0u);
    // Drives that report readiness only through the track information.
    s.drive->sent.clear();
    std::vector<uint8_t> track(36);
    track[1] = 0x22;
    Script({Refuse({MMC_READ_TRACK_INFORMATION}, {2, 0x04, 0x01}, 5), Answer({MMC_READ_TRACK_INFORMATION}, track)});
    EXPECT_EQ(ProcessSCSIWaitUnitReady(job, device, true, 0, true).code, 0u);
    EXPECT_EQ(Opcodes(), Hex("52 52 52 52 52 52"));
    Script({Refuse({0x00}, {2, 0x3A, 0x00})});
    job.stopAfter = 0;
    EXPECT_EQ(ProcessSCSIWaitUnitReady(job, device, false, 0).code, 1u);
}

TEST_F(SCSICommandsTest, WaitWithProgressFollowsTheDrive) {
    ScriptedAnswer formatting = Refuse({0x00}, {2, 0x04, 0x04}, 1);
    formatting.progress = 0x4000;
    ScriptedAnswer later = formatting;
    later.progress = 0xC000;
    // The executor retries "not ready" itself, so each answer covers a whole TEST UNIT READY.
    formatting.times = later.times = 4;
    Script({formatting, later, Answer({0x00})});
    EXPECT_EQ(ProcessSCSIWaitUnitReadyWithProgress(job, device, false, 0).code, 0u);
    EXPECT_EQ(job.progress, (std::vector<double>{0.25, 0.75}));
}

TEST_F(SCSICommandsTest, SizedRepliesAndTheirErrors) {
    std::vector<uint8_t> disc(34);
    disc[1] = 0x20;
    disc[2] = 0x12; // erasable, complete
    Script({Answer({MMC_READ_DISC_INFORMATION}, disc)});
    DiskInformation info;
    EXPECT_EQ(ProcessSCSIGetDiskInformation(job, device, info).code, 0u);
    EXPECT_TRUE(info.erasable);
    EXPECT_EQ(info.discStatus, DISC_COMPLETE);

    Script({Refuse({MMC_READ_DISC_INFORMATION}, {2, 0x3A, 0x00})});
    BurnErrorCode error = ProcessSCSIGetDiskInformation(job, device, info);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "read disc information failed");
    EXPECT_EQ(error.additionalSenseCode, 0x3A);

    // Track 255 refused: track 1 answers instead.
    std::vector<uint8_t> track(36);
    track[1] = 0x22;
    track[7] = 0x01;
    track[15] = 0x20;
    s.drive->sent.clear();
    Script({Refuse(Hex("52 01 00 00 00 FF"), {5, 0x24, 0x00}), Answer({MMC_READ_TRACK_INFORMATION}, track)});
    TrackInformation ti;
    EXPECT_EQ(ProcessSCSIReadTrackInformation(job, device, 255, ti).code, 0u);
    EXPECT_EQ(ti.nextWritable, 0x20u);

    Script({Refuse({MMC_READ_TRACK_INFORMATION}, {5, 0x24, 0x00})});
    EXPECT_STREQ(ProcessSCSIReadTrackInformation(job, device, 255, ti).text,
                 "Read Track Information - Invalid Track");
    Script({Answer({MMC_READ_TRACK_INFORMATION}, Hex("00 06 00 00 00 00 00 00"))});
    EXPECT_STREQ(ProcessSCSIReadTrackInformation(job, device, 1, ti).text,
                 "Read Track Information - No Data Returned");

    DVDPhysicalFormat structure;
    Script({Refuse({MMC_READ_DISC_STRUCTURE}, {3, 0x31, 0x00})});
    EXPECT_EQ(ProcessSCSIReadDiskStructure(job, device, MEDIA_DVDPR, 0, structure).code, 36u);
    Script({Refuse({MMC_READ_DISC_STRUCTURE}, {5, 0x24, 0x00})});
    error = ProcessSCSIReadDiskStructure(job, device, MEDIA_BDR, 0, structure);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "Read DVD structure failed");
}

TEST_F(SCSICommandsTest, ModePages) {
    // The write parameters go behind a header that keeps the drive's medium type.
    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("05 36 01", 0x12)), Answer({MMC_MODE_SELECT_10})});
    WriteParamModePage parameters;
    parameters.bufferUnderrunFree = true;
    parameters.writeType = WRITE_TYPE_SESSION_AT_ONCE;
    parameters.trackMode = 5;
    parameters.dataBlockType = 8;
    EXPECT_EQ(ProcessSCSISetWriteMode(job, device, parameters).code, 0u);
    const SentCommand& select = Sent().back();
    ASSERT_EQ(select.data.size(), 64u);
    EXPECT_EQ(std::vector<uint8_t>(select.data.begin(), select.data.begin() + 13),
              Hex("00 00 12 00 00 00 00 00 05 36 42 05 08"));

    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("05 36")), Refuse({MMC_MODE_SELECT_10}, {5, 0x26, 0x00})});
    BurnErrorCode error = ProcessSCSISetWriteMode(job, device, parameters);
    EXPECT_EQ(error.code, 33u);
    EXPECT_STREQ(error.text, "Set Write Mode");

    // The caching page goes back whole, with the write cache enabled.
    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("08 0A 00 00 FF FF 00 00 FF FF FF FF")),
            Answer({MMC_MODE_SELECT_10})});
    EXPECT_EQ(ProcessSCSISetCachingMode(job, device).code, 0u);
    EXPECT_EQ(Sent().back().data.size(), 20u);
    EXPECT_EQ(Sent().back().data[8 + 2], 0x04);

    Script({});
    EXPECT_STREQ(ProcessSCSISetCachingMode(job, device).text, "Caching page not implemented");
    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("08 0A 00")), Refuse({MMC_MODE_SELECT_10}, {5, 0x26, 0})});
    EXPECT_STREQ(ProcessSCSISetCachingMode(job, device).text, "Setting caching failed");

    // A drive that answers with another page than asked returns nothing.
    std::vector<uint8_t> page;
    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("2A 02 00 00"))});
    EXPECT_EQ(ProcessSCSIReadModePage(job, device, 0x05, page, 56), PROCESS_FAILED);
    EXPECT_TRUE(page.empty());
}

TEST_F(SCSICommandsTest, LoadedMediaAndCapabilities) {
    auto profiles = Hex("00 00 00 10 00 00 00 41 00 00 03 08 00 41 01 00 00 43 00 00");
    Script({Answer({MMC_GET_CONFIGURATION}, profiles)});
    int media = -1;
    EXPECT_EQ(ProcessSCSIGetLoadedMediaType(job, device, media).code, 0u);
    EXPECT_EQ(media, MEDIA_BDR);

    // No profiles: the disc information decides.
    std::vector<uint8_t> disc(34);
    disc[1] = 0x20;
    disc[2] = 0x10;
    Script({Answer({MMC_READ_DISC_INFORMATION}, disc)});
    EXPECT_EQ(ProcessSCSIGetLoadedMediaType(job, device, media).code, 0u);
    EXPECT_EQ(media, MEDIA_CDRW);

    Script({Answer({MMC_MODE_SENSE_10}, ModeReply("2A 14 3F 03 00 00 00 00 1B 90 00 00 00 00 00 00 00 00 1B 90 1B 90")),
            Answer(Hex("46 02 00 2F"), FeatureReply(0x2F, false, "42 00 00 00")),
            Answer(Hex("46 02 00 2B"), FeatureReply(0x2B, true, "01 00 00 00")),
            Answer(Hex("46 02 00 3B"), FeatureReply(0x3B, false, "00 00 00 00")),
            Answer(Hex("46 02 00 41"), FeatureReply(0x41, false, "00 00 00 00")),
            Answer({MMC_GET_PERFORMANCE}, Hex("00 00 00 14 00 00 00 00 00 00 00 00 00 00 00 00 00 00 40 EC 00 00 2B 48"))});
    DriveCapabilities capabilities;
    EXPECT_EQ(ProcessSCSIGetDeviceCapabilities(job, device, capabilities).code, 0u);
    const DriveCapabilities& c = capabilities;
    EXPECT_EQ((std::vector<bool>{c.canWriteCDR, c.canWriteCDRW, c.canWriteDVDR, c.canWriteDVDRW, c.canTestWrite,
                                 c.canWriteDVDPR, c.canWriteDVDPRDL, c.canWriteDVDPRW, c.canWriteBD,
                                 c.canWriteHDDVD, c.canErase}),
              (std::vector<bool>{1, 1, 1, 1, 0, 1, 0, 0, 1, 0, 1}));
    EXPECT_EQ(capabilities.writeSpeeds, (std::vector<uint32_t>{11080}));
    EXPECT_EQ(capabilities.maxReadSpeed, 16620u);
}

TEST_F(SCSICommandsTest, WritableCapacityByMedia) {
    auto unformatted = Hex("00 00 00 08 00 23 05 40 01 00 08 00");
    DiskInformation cd;
    cd.lastPossibleLeadOut = 0x004F3B47;
    DiskInformation plusR;
    plusR.lastSessionLeadIn = 0x00030000;
    plusR.lastPossibleLeadOut = 0x00260540;
    std::vector<uint8_t> iso(2048);
    std::memcpy(iso.data(), "\x01" "CD001", 6);
    iso[80] = 0x10;
    iso[81] = 0x27;
    std::vector<uint8_t> freeTrack(36);
    freeTrack[1] = 0x22;
    std::vector<uint8_t> freeTrack5000 = freeTrack;
    MMCPut32(&freeTrack5000[16], 5000);
    const auto atip = Hex("00 1E 00 00 50 00 40 00 61 1A 42 00 4F 3B 47");
    const struct {
        const char* name;
        int media;
        DiskInformation info;
        std::vector<ScriptedAnswer> script;
        BurnErrorCodeValue code;
        uint32_t capacity;
    } cases[] = {
        {"DVD-R by its format capacities", MEDIA_DVDMR, {}, {Answer({MMC_READ_FORMAT_CAPACITIES}, unformatted)}, 0, 0x230540},
        {"CD-R by its lead-out", MEDIA_CDR, cd, {}, 0, 359996},
        {"DVD+R by lead-out less lead-in", MEDIA_DVDPR, plusR, {}, 0, 0x230540},
        {"BD-RE by what it holds", MEDIA_BDRE, {}, {Answer(Hex("28 00 00 00 00 10"), iso)}, 0, 10000},
        {"CD-R by the free sectors of its track", MEDIA_CDR, {},
         {Answer({MMC_READ_TOC_PMA_ATIP}, atip), Answer({MMC_READ_TRACK_INFORMATION}, freeTrack5000)}, 0, 5000},
        {"CD-R with no free sectors", MEDIA_CDR, {},
         {Answer({MMC_READ_TOC_PMA_ATIP}, atip), Answer({MMC_READ_TRACK_INFORMATION}, freeTrack)}, 29, 0},
        {"CD-R whose track cannot be read", MEDIA_CDR, {}, {Answer({MMC_READ_TOC_PMA_ATIP}, atip)}, 29, 0},
    };
    for (const auto& c : cases) {
        ScriptedDevice fresh;
        fresh.drive->script = c.script;
        uint32_t capacity = 0;
        EXPECT_EQ(ProcessSCSIGetWritableCapacity(job, fresh.device, c.info, c.media, capacity).code, c.code)
            << c.name;
        if (c.code == 0) {
            EXPECT_EQ(capacity, c.capacity) << c.name;
        }
    }

    // A sequential DVD without a full-format size: the data area of its structure, less the
    // lead-in and lead-out run.
    std::vector<uint8_t> structure(2052);
    MMCPut32(&structure[8], 0x30000);
    MMCPut32(&structure[12], 0x26053F);
    Script({Answer({MMC_READ_FORMAT_CAPACITIES}, Hex("00 00 00 08 00 23 05 40 02 00 08 00")),
            Answer({MMC_READ_DISC_STRUCTURE}, structure)});
    EXPECT_EQ(ProcessSCSIReadFormatCapacity(job, device, MEDIA_DVDMRW), 0x26053Fu - 0x30000 - 607);
    EXPECT_EQ(ProcessSCSIReadFormatCapacity(job, device, MEDIA_DVDPRW), 0x230540u - 608);
    Script({});
    EXPECT_EQ(ProcessSCSIReadFormatCapacity(job, device, MEDIA_DVDPRW), 0xFFFFFFFFu);
    EXPECT_EQ(ProcessSCSIReadUsedCapacity(job, device, MEDIA_CDR), 0u);
}

TEST_F(SCSICommandsTest, WriteSpeeds) {
    const auto performance = Hex("00 00 00 24 00 00 00 00 00 00 00 00 00 00 00 00 00 00 40 EC 00 00 2B 48 "
                                 "00 00 00 00 00 00 00 00 00 00 40 EC 00 00 15 A4");
    const struct {
        const char* name;
        double factor;
        uint32_t written;
    } dvd[] = {{"fastest", -1, 11080}, {"none given", 0, 11080}, {"4x", 4, 5540}, {"more than the drive", 16, 11080}};
    for (const auto& c : dvd) {
        ScriptedDevice fresh;
        fresh.drive->script = {Answer({MMC_TEST_UNIT_READY}), Answer(Hex("AC 00"), performance),
                               Answer({MMC_SET_STREAMING})};
        EXPECT_EQ(ProcessSCSISetWriteSpeed(job, fresh.device, c.factor, 0, MEDIA_DVDPR, 0x230540).code, 0u);
        const SentCommand& streaming = fresh.drive->sent.back();
        ASSERT_EQ(streaming.cdb[0], MMC_SET_STREAMING) << c.name;
        EXPECT_EQ(MMCGet32(&streaming.data[20]), c.written) << c.name;
    }

    // Older drives answer only the nominal performance; a refused SET STREAMING is no error.
    Script({Answer({MMC_TEST_UNIT_READY}), Refuse(Hex("AC 00"), {5, 0x24, 0x00}),
            Answer(Hex("AC 14"), Hex("00 00 00 14 00 00 00 00 00 00 00 00 00 00 1B 90")),
            Refuse({MMC_SET_STREAMING}, {5, 0x20, 0x00})});
    EXPECT_EQ(ProcessSCSISetWriteSpeed(job, device, 0, 0, MEDIA_BDR, 1000).code, 0u);
    EXPECT_EQ(MMCGet32(&Sent().back().data[20]), 7056u);
    Script({Answer({MMC_TEST_UNIT_READY})});
    BurnErrorCode error = ProcessSCSISetWriteSpeed(job, device, 0, 0, MEDIA_BDR, 1000);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "Set CD Speed failed");

    const struct {
        const char* name;
        double factor;
        bool cav;
        const char* cdb;
    } cd[] = {
        {"8x", 8, false, "BB 00 FF FF 05 88"},
        {"fastest", -1, false, "BB 00 FF FF FF FF"},
        {"capped at the drive's", 48, false, "BB 00 FF FF 1B 90"},
        {"constant angular velocity", 8, true, "BB 01 FF FF 05 88"},
    };
    for (const auto& c : cd) {
        ScriptedDevice fresh;
        fresh.drive->script = {Answer(Hex("46 02 00 27"), FeatureReply(0x27, c.cav)),
                               Answer({MMC_SET_CD_SPEED}), Answer({MMC_TEST_UNIT_READY})};
        EXPECT_EQ(ProcessSCSISetWriteSpeed(job, fresh.device, c.factor, 7056, MEDIA_CDRW, 0).code, 0u);
        const auto& sent = fresh.drive->sent;
        ASSERT_GE(sent.size(), 2u);
        EXPECT_EQ(std::vector<uint8_t>(sent[1].cdb.begin(), sent[1].cdb.begin() + 6), Hex(c.cdb)) << c.name;
    }
    Script({Refuse({MMC_SET_CD_SPEED}, {5, 0x24, 0x00})});
    EXPECT_STREQ(ProcessSCSISetWriteSpeed(job, device, 8, 7056, MEDIA_CDR, 0).text, "Set CD Speed failed");
}

TEST_F(SCSICommandsTest, MechanismCloseAndReserve) {
    // A changer that is busy twice before it is idle.
    Script({Answer(Hex("46 02 00 03"), FeatureReply(0x03, true)),
            Answer({MMC_MECHANISM_STATUS}, Hex("20 00 00 00 00 00 00 00"), 2),
            Answer({MMC_MECHANISM_STATUS}, Hex("00 00 00 00 00 00 00 00"))});
    EXPECT_EQ(ProcessSCSIWaitMechanismReady(job, device, 0).code, 0u);
    EXPECT_EQ(Opcodes(), Hex("46 BD BD BD"));
    Script({Answer(Hex("46 02 00 03"), FeatureReply(0x03, true)),
            Answer({MMC_MECHANISM_STATUS}, Hex("40 00 00 00 00 00 00 00"))});
    BurnErrorCode error = ProcessSCSIWaitMechanismReady(job, device, 3000);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "Wait mechanism ready failed");
    // Without a removable medium or changer there is nothing to wait for.
    s.drive->sent.clear();
    Script({});
    EXPECT_EQ(ProcessSCSIWaitMechanismReady(job, device, 0).code, 0u);
    EXPECT_EQ(Opcodes(), Hex("46 46"));

    s.drive->sent.clear();
    Script({Answer({MMC_TEST_UNIT_READY}), Answer({MMC_SYNCHRONIZE_CACHE}),
            Answer({MMC_CLOSE_TRACK_SESSION})});
    EXPECT_EQ(ProcessSCSICloseTrackSession(job, device, 2, 0, true).code, 0u);
    EXPECT_EQ(Opcodes(), Hex("00 35 00 5B 00"));
    Script({Answer({MMC_TEST_UNIT_READY}), Refuse({MMC_SYNCHRONIZE_CACHE}, {3, 0x0C, 0x00})});
    EXPECT_STREQ(ProcessSCSICloseTrackSession(job, device, 1, 1, false).text, "Synchronize Cache");

    s.drive->sent.clear();
    Script({Answer({MMC_RESERVE_TRACK})});
    EXPECT_EQ(ProcessSCSIReserveTrack(job, device, 100).code, 0u);
    EXPECT_EQ(MMCGet32(&Sent()[0].cdb[5]), 300u); // never fewer blocks than the drive takes
    // A drive that cannot write the disc is cycled once, then the reservation is tried again.
    s.drive->sent.clear();
    Script({Refuse({MMC_RESERVE_TRACK}, {3, 0x0C, 0x00}, 1), Answer({MMC_RESERVE_TRACK}),
            Answer({MMC_PREVENT_ALLOW_MEDIUM_REMOVAL}), Answer({MMC_START_STOP_UNIT}),
            Answer({MMC_TEST_UNIT_READY})});
    EXPECT_EQ(ProcessSCSIReserveTrack(job, device, 1000).code, 0u);
    EXPECT_EQ(Opcodes().back(), MMC_RESERVE_TRACK);
    EXPECT_TRUE(device.WasCycled());
    Script({Refuse({MMC_RESERVE_TRACK}, {3, 0x0C, 0x00})});
    error = ProcessSCSIReserveTrack(job, device, 1000);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "Reserve Track");

    SFormat format;
    format.descriptor.blocks = 0x230540;
    format.descriptor.formatType = 0x26;
    Script({Answer({MMC_FORMAT_UNIT})});
    EXPECT_EQ(ProcessSCSIFormatUnit(job, device, format).code, 0u);
    EXPECT_EQ(Sent().back().data, Hex("00 02 00 08 00 23 05 40 98 00 00 00"));
    Script({Refuse({MMC_BLANK}, {5, 0x24, 0x00})});
    error = ProcessSCSIBlank(job, device, 1, 0);
    EXPECT_EQ(error.code, 46u);
    EXPECT_STREQ(error.text, "Blank");
}

} // namespace
