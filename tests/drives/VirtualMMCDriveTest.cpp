// The Virtual Burner's MMC drive, driven with the SCSI layer's own command functions: each
// media kind written the way its strategy writes it, the refusals a real drive gives, blanking
// and formatting in the background, state kept across processes, and the drive opener.
#include "burn/BurnMediaTypes.h"
#include "disc/BurnDataDisk.h"
#include "disc/BurnStrategies.h"
#include "disc/HybridDataDisk.h"
#include "disc/SCSICDB.h"
#include "disc/SCSICommands.h"
#include "disc/SCSIRecords.h"
#include "disc/SCSISense.h"
#include "disc/ScriptedDiscService.h"
#include "drives/SystemDiscService.h"
#include "drives/VirtualBurner.h"
#include "drives/VirtualMMCDrive.h"
#include "support/RecordingProgress.h"

#include "VirtualDiscTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kBlock = 2048;

// Blocks whose bytes tell where they belong.
std::vector<uint8_t> Pattern(uint32_t first, uint32_t count) {
    std::vector<uint8_t> data(size_t{count} * kBlock);
    for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(first * 7 + i * 13 + i / kBlock);
    return data;
}

class VirtualMMC : public VirtualDiscTest {
protected:
    void SetUp() override { SetSCSIWriteFlags({}); }
    void TearDown() override { SetSCSIWriteFlags({}); }

public:
    void Load(const std::string& setting) {
        disc = Disc(setting);
        auto drive = std::make_unique<LVirtualMMCDrive>(disc);
        transport = drive.get();
        device.Open(std::move(drive));
    }
    // Runs one command directly; the sense it ended with as "K/AA/QQ" ("0/00/00" when good).
    std::string Run(const LSCSICDB& cdb, std::vector<uint8_t> out = {}, size_t in = 0) {
        std::vector<uint8_t> reply(in);
        LSCSICommand command{cdb.bytes, cdb.length, nullptr, 0, LSCSIDirection::None, 1000};
        if (!out.empty()) command = {cdb.bytes, cdb.length, out.data(), out.size(), LSCSIDirection::ToDevice, 1000};
        if (in) command = {cdb.bytes, cdb.length, reply.data(), in, LSCSIDirection::FromDevice, 1000};
        LSCSITaskResult result;
        EXPECT_TRUE(transport->Execute(command, result));
        lastResult = result;
        return LSCSISenseText(LSCSISenseBytes(result.sense));
    }
    DiskInformation Info() {
        DiskInformation info;
        EXPECT_EQ(ProcessSCSIGetDiskInformation(job, device, info).code, 0u);
        return info;
    }
    TrackInformation Track(uint32_t number) {
        TrackInformation track;
        EXPECT_EQ(ProcessSCSIReadTrackInformation(job, device, number, track).code, 0u);
        return track;
    }
    BurnErrorCode WriteBlocks(uint32_t first, uint32_t count) {
        const std::vector<uint8_t> data = Pattern(first, count);
        for (uint32_t done = 0; done < count; done += 16) {
            const uint32_t n = std::min(16u, count - done);
            BurnErrorCode error =
                ProcessSCSIWriteSectors(job, device, data.data() + size_t{done} * kBlock, first + done, n, kBlock);
            if (error.code) return error;
        }
        return {};
    }
    std::vector<uint8_t> ReadBlocks(uint32_t first, uint32_t count) {
        std::vector<uint8_t> data(size_t{count} * kBlock);
        EXPECT_EQ(ProcessSCSIReadSectors(job, device, data.data(), first, count, kBlock), PROCESS_DONE);
        return data;
    }
    static WriteParamModePage Parameters(uint8_t writeType, uint8_t trackMode) {
        WriteParamModePage page;
        page.bufferUnderrunFree = true;
        page.writeType = writeType;
        page.trackMode = trackMode;
        page.dataBlockType = 8;
        page.audioPause = 150;
        return page;
    }

    std::shared_ptr<LVirtualDisc> disc;
    LVirtualMMCDrive* transport = nullptr;
    LSCSI device;
    RecordingProgress job;
    LSCSITaskResult lastResult;
};

} // namespace

TEST_F(VirtualMMC, EachMediaKindTakesTheBurnOfItsStrategyClosedAndReadBack) {
    const struct {
        const char* media;
        int mediaType;
        size_t tracks; // as the audio side sees the disc; none on discs written in place
    } cases[] = {
        {"cd-r", MEDIA_CDR, 1},    {"cd-rw", MEDIA_CDRW, 1},     {"dvd-r", MEDIA_DVDMR, 1},
        {"dvd-rw", MEDIA_DVDMRW, 1}, {"dvd+r", MEDIA_DVDPR, 1}, {"bd-r", MEDIA_BDR, 1},
        {"dvd+rw", MEDIA_DVDPRW, 0}, {"bd-re", MEDIA_BDRE, 0},
    };
    const fs::path file = folder + "/tree/track.mp3";
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << std::string(100000, 'm');
    LAbstractFileSystem files;
    std::string error;
    ASSERT_TRUE(files.AddPath(file.parent_path().string(), error)) << error;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.media);
        fs::remove(path);
        fs::remove(path + ".state");
        Load(c.media);
        int media = -1;
        ASSERT_EQ(ProcessSCSIGetLoadedMediaType(job, device, media).code, 0u);
        EXPECT_EQ(media, c.mediaType);
        EXPECT_EQ(Info().discStatus, DISC_EMPTY);

        LHybridDataDisk builder(files, PROJECT_HYBRID_DISK, c.mediaType);
        ASSERT_TRUE(builder.Build());
        LBurnDataDisk burn(files, {}, PROJECT_HYBRID_DISK);
        burn.media = c.mediaType;
        burn.capabilities.canWriteDVDRW = true;
        ASSERT_EQ(RunBurnStrategy(job, burn, device, builder).code, 0u);

        const DiskInformation info = Info();
        EXPECT_EQ(info.discStatus, DISC_COMPLETE);
        EXPECT_EQ(info.erasable, IsRewritable(disc->Media()));
        if (c.tracks == 0) {
            EXPECT_EQ(info.backgroundFormat, 3); // the format completed by the close
        }
        // The file system the builder laid out reads back from the disc.
        const uint32_t volume = DecodeISOVolumeSize(ReadBlocks(16, 1).data(), kBlock);
        EXPECT_GT(volume, 16u);
        EXPECT_LE(volume, builder.SectorCount());
        EXPECT_GE(ProcessSCSIReadUsedCapacity(job, device, c.mediaType), builder.SectorCount());
        // The disc is the same to a new process, and to the audio side.
        LVirtualBurner audio(Disc(c.media));
        EXPECT_FALSE(audio.CopyStatus().blank);
        EXPECT_EQ(audio.Disc().GetState().tracks.size(), c.tracks);
    }
}

TEST_F(VirtualMMC, RefusesWhatARealDriveRefusesWithItsSense) {
    struct Case {
        const char* what;
        const char* setting;
        std::function<void(VirtualMMC&)> before;
        LSCSICDB cdb;
        size_t blocks; // sent with the command
        const char* sense;
    };
    auto reserve = [](uint32_t n) { return [n](VirtualMMC& t) { t.Run(CDBReserveTrack(n)); }; };
    auto none = [](VirtualMMC&) {};
    const Case cases[] = {
        {"write past the next writable address", "dvd+r", none, CDBWrite12(5, 1, true), 1, "5/21/02"},
        {"write beyond the reserved track", "dvd-r", reserve(16), CDBWrite10(0, 32), 32, "5/21/00"},
        {"write beyond the disc", "cd-r,capacity=10", none, CDBWrite10(0, 16), 16, "5/21/00"},
        {"write beyond a rewritable", "bd-re,capacity=100", none, CDBWrite10(96, 8), 8, "5/21/00"},
        {"write onto a finalised disc", "cd-r,used", none, CDBWrite10(4500, 1), 1, "5/21/02"},
        {"DVD-R at once without reservation", "dvd-r",
         [](VirtualMMC& t) { ProcessSCSISetWriteMode(t.job, t.device, Parameters(2, 5)); },
         CDBWrite10(0, 1), 1, "5/2C/00"},
        {"WRITE(12) on a drive without it", "dvd+rw,no-write12", none, CDBWrite12(0, 1, false), 1, "5/20/00"},
        {"streaming on a drive without it", "dvd+rw,no-streaming", none, CDBWrite12(0, 1, true), 1, "5/24/00"},
        {"a write over the bad block", "dvd+rw,write-error=20", none, CDBWrite10(16, 16), 16, "3/0C/00"},
        {"no disc", "none", none, CDBTestUnitReady(), 0, "2/3A/00"},
        {"tray open", "dvd+r,open", none, CDBRead10(0, 1), 0, "2/3A/02"},
        {"unknown command", "dvd+r", none, LSCSICDB(0xFF), 0, "5/20/00"},
        {"blanking a CD-R", "cd-r,used", none, CDBBlank(1, 0), 0, "5/30/05"},
        {"formatting a DVD+R", "dvd+r", none, CDBFormatUnit(), 0, "5/30/05"},
        {"reserving on a finalised disc", "dvd+r,used", none, CDBReserveTrack(300), 0, "5/72/05"},
        {"a second reservation", "dvd+r", reserve(300), CDBReserveTrack(300), 0, "5/2C/00"},
        {"reading what was never written", "dvd-r", none, CDBRead10(0, 1), 0, "5/21/00"},
        {"ejecting a locked tray", "cd-r", [](VirtualMMC& t) { t.Run(CDBPreventAllowMediumRemoval(true)); },
         CDBStartStopUnit(true, false), 0, "5/53/02"},
        {"closing the session of a blank disc", "cd-r", none, CDBCloseTrackSession(2, 0), 0, "5/2C/00"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove(path + ".state");
        Load(c.setting);
        c.before(*this);
        const bool reads = c.cdb.bytes[0] == MMC_READ_10;
        EXPECT_EQ(Run(c.cdb, Pattern(0, uint32_t(c.blocks)), reads ? kBlock : 0), c.sense);
        EXPECT_EQ(lastResult.taskStatus, TASK_STATUS_CHECK_CONDITION);
    }
    // Nothing refused was written.
    EXPECT_FALSE(fs::exists(path) && fs::file_size(path) > 0);
}

TEST_F(VirtualMMC, ReadingBackTheBadVerifyBlockGivesOtherData) {
    Load("dvd+rw,verify-error=17");
    ASSERT_EQ(WriteBlocks(0, 32).code, 0u);
    const std::vector<uint8_t> back = ReadBlocks(0, 32);
    const std::vector<uint8_t> written = Pattern(0, 32);
    for (uint32_t block = 0; block < 32; ++block)
        EXPECT_EQ(std::equal(back.begin() + block * kBlock, back.begin() + (block + 1) * kBlock,
                             written.begin() + block * kBlock),
                  block != 17) << block;
}

TEST_F(VirtualMMC, NotReadyAfterLoadingCountsDown) {
    Load("dvd+r,not-ready=3,open");
    EXPECT_EQ(Run(CDBTestUnitReady()), "2/3A/02");
    EXPECT_EQ(Run(CDBStartStopUnit(true, true)), "0/00/00");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Run(CDBTestUnitReady()), "2/04/01") << i;
    EXPECT_EQ(Run(CDBTestUnitReady()), "0/00/00");
    // Ejecting and loading again makes it not ready again, which the wait rides out.
    EXPECT_EQ(ProcessSCSIEject(job, device).code, 0u);
    EXPECT_TRUE(disc->TrayOpen());
    EXPECT_EQ(ProcessSCSIWaitUnitReady(job, device, true, 1000).code, 14u);
    EXPECT_EQ(ProcessSCSILoad(job, device).code, 0u);
    EXPECT_EQ(ProcessSCSIWaitUnitReady(job, device, true, 0).code, 0u);
    EXPECT_EQ(Run(CDBTestUnitReady()), "0/00/00");
}

TEST_F(VirtualMMC, BlankingAndFormattingReportProgressThenLeaveABlankDisc) {
    struct Case {
        const char* setting;
        bool format;
        const char* busy;
    };
    for (const Case& c : {Case{"cd-rw,used", false, "2/04/07"}, Case{"dvd-rw,used", false, "2/04/07"},
                          Case{"dvd+rw,used", true, "2/04/04"}, Case{"bd-re,used", true, "2/04/04"}}) {
        SCOPED_TRACE(c.setting);
        fs::remove(path + ".state");
        std::ofstream(path) << std::string(4 * kBlock, 'x');
        Load(c.setting);
        EXPECT_NE(Info().discStatus, DISC_EMPTY);
        if (c.format) {
            LFormatCapacities capacities;
            ProcessSCSIReadFormatCapacity(job, device, 0, &capacities);
            ASSERT_FALSE(capacities.descriptors.empty());
            SFormat format;
            format.descriptor = capacities.descriptors[0];
            ASSERT_EQ(ProcessSCSIFormatUnit(job, device, format).code, 0u);
        } else {
            ASSERT_EQ(ProcessSCSIBlank(job, device, 1, 0).code, 0u);
        }
        EXPECT_EQ(Run(CDBTestUnitReady()), c.busy);
        EXPECT_EQ(lastResult.sense[15], 0x80); // the progress is valid
        job.progress.clear();
        ASSERT_EQ(ProcessSCSIWaitUnitReadyWithProgress(job, device, false, 0).code, 0u);
        ASSERT_GE(job.progress.size(), 2u);
        EXPECT_TRUE(std::is_sorted(job.progress.begin(), job.progress.end()));
        EXPECT_EQ(fs::file_size(path), 0u);
        // A formatted disc is addressable over its whole formatted area, as on a real drive;
        // a blanked one has nothing recorded.
        EXPECT_EQ(ProcessSCSIReadUsedCapacity(job, device, 0), c.format ? disc->Capacity() : 0u);
        if (!c.format) {
            EXPECT_EQ(Info().discStatus, DISC_EMPTY);
        }
        EXPECT_EQ(WriteBlocks(0, 16).code, 0u);
    }
    // A DVD+RW offers only its own format type.
    Load("dvd+rw");
    SFormat wrong;
    wrong.descriptor = {1000, 0x00, 0};
    EXPECT_EQ(ProcessSCSIFormatUnit(job, device, wrong).code, 46u);
    EXPECT_EQ(LSCSISenseText(device.GetSense()), "5/26/00");
}

TEST_F(VirtualMMC, AClosingIsInProgressForAMomentOnlyOnASlowDrive) {
    for (const bool slow : {false, true}) {
        for (const char* media : {"dvd+rw", "dvd+r"}) {
            SCOPED_TRACE(std::string(media) + (slow ? " slow" : ""));
            fs::remove(path + ".state");
            Load(std::string(media) + (slow ? ",slow=1" : ""));
            ASSERT_EQ(WriteBlocks(0, 16).code, 0u);
            const bool inPlace = std::string(media) == "dvd+rw";
            ASSERT_EQ(Run(CDBCloseTrackSession(inPlace ? 0 : 2, 0)), "0/00/00");
            EXPECT_EQ(Run(CDBTestUnitReady()), slow ? "2/04/07" : "0/00/00");
            EXPECT_EQ(Run(CDBTestUnitReady()), "0/00/00");
        }
    }
}

TEST_F(VirtualMMC, SessionsAndTracksSurviveTheProcessAndAppendAtTheNextWritableAddress) {
    Load("dvd+r,capacity=10000");
    ASSERT_EQ(ProcessSCSIReserveTrack(job, device, 320).code, 0u);
    ASSERT_EQ(WriteBlocks(0, 40).code, 0u);
    // A process that ends before closing leaves an open reserved track, and the blocks the
    // drive buffered are in the disc file.
    device.Close();
    std::vector<uint8_t> stored(40 * kBlock);
    std::ifstream(path, std::ios::binary).read(reinterpret_cast<char*>(stored.data()), std::streamsize(stored.size()));
    EXPECT_EQ(stored, Pattern(0, 40));
    Load("dvd+r,capacity=10000");
    TrackInformation open = Track(1);
    EXPECT_TRUE(open.reserved && open.nextWritableValid);
    EXPECT_EQ(open.nextWritable, 40u);
    EXPECT_EQ(open.freeBlocks, 280u);
    ASSERT_EQ(WriteBlocks(40, 20).code, 0u);
    ASSERT_EQ(ProcessSCSICloseTrackSession(job, device, 1, 1, false).code, 0u);
    ASSERT_EQ(ProcessSCSICloseTrackSession(job, device, 2, 1, false).code, 0u);
    device.Close();

    Load("dvd+r,capacity=10000");
    DiskInformation info = Info();
    EXPECT_EQ(info.discStatus, DISC_INCOMPLETE);
    EXPECT_EQ(info.sessions, 2u);
    EXPECT_EQ(info.lastTrackInLastSession, 2u);
    uint32_t capacity = 0;
    ASSERT_EQ(ProcessSCSIGetWritableCapacity(job, device, info, MEDIA_DVDPR, capacity).code, 0u);
    EXPECT_EQ(capacity, 9680u);
    TrackInformation next = Track(255);
    EXPECT_EQ(next.track, 2u);
    EXPECT_EQ(next.nextWritable, 320u); // the reserved track was padded to its size
    EXPECT_EQ(Run(CDBWrite10(60, 1), Pattern(60, 1)), "5/21/02");
    ASSERT_EQ(WriteBlocks(320, 16).code, 0u);
    ASSERT_EQ(ProcessSCSICloseTrackSession(job, device, 6, 2, false).code, 0u);
    device.Close();

    Load("dvd+r,capacity=10000");
    info = Info();
    EXPECT_EQ(info.discStatus, DISC_COMPLETE);
    EXPECT_EQ(info.sessions, 2u);
    EXPECT_EQ(info.firstTrackInLastSession, 2u);
    EXPECT_EQ(Track(1).size, 320u);
    EXPECT_EQ(Track(2).start, 320u);
    EXPECT_EQ(ReadBlocks(40, 20), Pattern(40, 20));
    EXPECT_EQ(ReadBlocks(320, 16), Pattern(320, 16));
    EXPECT_EQ(Run(CDBReadTrackInformation(255, 36), {}, 36), "5/24/00");

    // A state written before the drive kept tracks: a used disc without a layout.
    device.Close();
    std::ofstream(path + ".state") << "setting=cd-r:" << path << "\nmedia=cd-r\ntray=closed\n"
                                   << "status=complete\nused=4500\ncapacity=359847\n";
    Load("cd-r");
    EXPECT_EQ(Info().discStatus, DISC_COMPLETE);
    LSCSICDB toc(MMC_READ_TOC_PMA_ATIP);
    toc.bytes[8] = 12;
    EXPECT_EQ(Run(toc, {}, 12), "5/24/00");
    EXPECT_EQ(Run(CDBWrite10(4500, 1), Pattern(4500, 1)), "5/21/02");
}

TEST_F(VirtualMMC, DescribesItselfAndTheDisc) {
    Load("cd-rw");
    DriveCapabilities capabilities;
    ASSERT_EQ(ProcessSCSIGetDeviceCapabilities(job, device, capabilities).code, 0u);
    EXPECT_TRUE(capabilities.canWriteCDR && capabilities.canWriteCDRW && capabilities.canWriteDVDR &&
                capabilities.canWriteDVDRW && capabilities.canWriteDVDPR && capabilities.canWriteDVDPRW);
    EXPECT_FALSE(capabilities.canWriteBD);
    EXPECT_EQ(capabilities.maxWriteSpeed, 48u * 177);
    bool cav = false;
    EXPECT_TRUE(ProcessSCSIHasFeature(job, device, 0x0027, &cav));
    EXPECT_TRUE(cav);
    // A blank CD's capacity comes from its lead-out: 150 blocks before block 0 count.
    uint32_t capacity = 0;
    ASSERT_EQ(ProcessSCSIGetWritableCapacity(job, device, Info(), MEDIA_CDRW, capacity).code, 0u);
    EXPECT_EQ(capacity, 359847u + 150);
    ATIPInfo atip;
    ASSERT_EQ(ProcessSCSICDReadATIP(job, device, atip).code, 0u);
    EXPECT_TRUE(atip.erasable);
    EXPECT_EQ(atip.leadOutStart.Sectors(), 359847u + 150);
    EXPECT_EQ(ProcessSCSISetWriteSpeed(job, device, 8, capabilities.maxWriteSpeed, MEDIA_CDRW, 0).code, 0u);

    Load("bd-r");
    ASSERT_EQ(ProcessSCSIGetDeviceCapabilities(job, device, capabilities).code, 0u);
    EXPECT_TRUE(capabilities.canWriteBD);
    EXPECT_EQ(capabilities.maxWriteSpeed, 6u * 4495);
    EXPECT_EQ(ProcessSCSIReadFormatCapacity(job, device, MEDIA_BDR), 12219392u);
    EXPECT_EQ(ProcessSCSISetWriteSpeed(job, device, 0, 0, MEDIA_BDR, 1000).code, 0u);
    // DVD-R/RW take incremental or at-once recording only.
    Load("dvd-rw");
    EXPECT_EQ(ProcessSCSISetWriteMode(job, device, Parameters(WRITE_TYPE_TRACK_AT_ONCE, 5)).code, 33u);
    EXPECT_EQ(ProcessSCSISetCachingMode(job, device).code, 0u);
}

TEST_F(VirtualDiscTest, TheDriveOpenerRoutesTheVirtualBurnerAndSaysWhyOthersFail) {
    LSystemDiscService service("dvd+r:" + path, false);
    auto real = std::make_shared<ScriptedDisc>();
    const LSCSI::Opener opener = MakeSCSIDriveOpener(
        [&] {
            std::vector<LDiscDeviceRef> devices{real};
            for (const LDiscDeviceRef& device : service.CopyDeviceArray()) devices.push_back(device);
            return devices;
        },
        service.VirtualBurner(), folder);
    LSCSI device(opener);
    ASSERT_TRUE(device.OpenCDROMDrive(1)) << device.GetOpenError();
    RecordingProgress job;
    EXPECT_EQ(GetDeviceMMCName(job, device), "Vinora Virtual Burner");

    struct Case {
        int index;
        const char* error;
    };
    for (const Case& c : {Case{0, "No optical drive device"}, Case{2, "There is no drive number 2"},
                          Case{-1, "There is no drive number -1"}}) {
        EXPECT_FALSE(device.OpenCDROMDrive(c.index));
        EXPECT_NE(device.GetOpenError().find(c.error), std::string::npos) << device.GetOpenError();
    }
}
