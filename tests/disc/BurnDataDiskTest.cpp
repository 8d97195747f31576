// The data disc job over a scripted drive with a disc in it: the commands each media strategy
// sends, the disc's sectors against the image file, verification, and the faults a user meets
// (a disc too small, a used disc, write errors and refusals, vanished files, stops).
#include "ScriptedDiscDrive.h"

#include "disc/BurnDataDisk.h"
#include "disc/BurnDataDiskDrive.h"
#include "disc/BurnStrategies.h"
#include "disc/HybridDataDisk.h"
#include "disc/SCSISense.h"
#include "disc/SectorTargets.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

namespace fs = std::filesystem;

namespace {

// Progress that keeps the error text and can stop the job once the drive has been written to.
class BurnProgress : public RecordingProgress {
public:
    std::string error;
    const ScriptedDiscDrive* stopWhenWritten = nullptr;
    // Runs when a status line first shows `onStatus`.
    std::string onStatus;
    std::function<void()> atStatus;

    bool IsToStop() override {
        if (stopWhenWritten && stopWhenWritten->written) return true;
        return RecordingProgress::IsToStop();
    }
    void SetError(const char* text) override { error = text; }
    void SetStatus(const char* text, int line) override {
        RecordingProgress::SetStatus(text, line);
        if (atStatus && onStatus == text) std::exchange(atStatus, nullptr)();
    }
};

// The device the job opens: the test's drive, which outlives it.
class ForwardingTransport : public LSCSITransport {
public:
    explicit ForwardingTransport(LSCSITransport& drive) : drive_(drive) {}
    bool Execute(const LSCSICommand& command, LSCSITaskResult& result) override {
        return drive_.Execute(command, result);
    }

private:
    LSCSITransport& drive_;
};

// What the strategies send, by name: write parameters, reservations, writes, flushes and
// closes; repeats in a row counted once (a write of many runs, a flush before a close).
std::string StrategyCommands(const std::vector<SentCommand>& sent) {
    std::string names, last;
    for (const SentCommand& command : sent) {
        std::string name;
        switch (command.cdb[0]) {
        case MMC_MODE_SELECT_10: name = "parameters"; break;
        case MMC_RESERVE_TRACK: name = "reserve"; break;
        case MMC_FORMAT_UNIT: name = "format"; break;
        case MMC_WRITE_10:
        case MMC_WRITE_12: name = "write"; break;
        case MMC_SYNCHRONIZE_CACHE: name = "sync"; break;
        case MMC_READ_DISC_INFORMATION: name = "information"; break;
        case MMC_CLOSE_TRACK_SESSION: name = "close" + std::to_string(command.cdb[2] & 7); break;
        default: continue;
        }
        if (name != last) names += (names.empty() ? "" : " ") + name;
        last = name;
    }
    return names;
}

class BurnDataDiskTest : public testing::Test {
protected:
    void SetUp() override {
        SetSCSIWriteFlags({});
        fs::create_directories(tree);
    }
    void TearDown() override {
        SetSCSIDriveOpener({});
        SetSCSIWriteFlags({});
        unsetenv("SOURCE_DATE_EPOCH");
    }

    fs::path File(const std::string& name, const std::string& content) {
        const fs::path path = tree / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    // A small tree: nested folders, an empty file, one of exactly one sector, one of many.
    void SmallTree() {
        File("notes.txt", "liner notes");
        File("empty", "");
        File("album/one sector.bin", std::string(2048, 's'));
        File("album/deeper/track.mp3", std::string(200000, 'm'));
    }

    ScriptedDiscDrive& Load(const DiscKind& kind, uint32_t capacity = 1000000) {
        drive = std::make_shared<ScriptedDiscDrive>(kind, capacity);
        SetSCSIDriveOpener([d = drive](int, std::string&) {
            return std::make_unique<ForwardingTransport>(*d);
        });
        return *drive;
    }

    // The tree's entries as a compilation.
    std::unique_ptr<LAbstractFileSystem> Compilation() {
        auto files = std::make_unique<LAbstractFileSystem>();
        files->SetFSVolumeLabel("Collection");
        std::string error;
        for (const fs::directory_entry& entry : fs::directory_iterator(tree))
            EXPECT_TRUE(files->AddPath(entry.path().string(), error)) << error;
        return files;
    }

    // Burns the tree to the loaded disc, or into `image` when given; the settings are the
    // job's defaults without erase, verify and eject.
    LProcessResult Burn(const std::function<void(LBurnDataDisk&)>& adjust = {},
                        const std::string& image = {}) {
        compilation = Compilation();
        job = std::make_unique<LBurnDataDisk>(*compilation, image, PROJECT_HYBRID_DISK);
        job->settings.eraseCDRW = false;
        job->settings.verifyBurn = false;
        job->settings.cdLoadEject = false;
        job->settings.overburn = false;
        job->settings.cdDrive = 0;
        job->settings.bootableSectors.clear();
        if (adjust) adjust(*job);
        return Process(progress, *job);
    }

    // The sector of a file of the last burn.
    uint32_t SectorOf(const std::string& name) {
        uint32_t sector = 0;
        compilation->ForEachItem([&](LAbstractBurnFile& item) {
            if (item.name == name) sector = item.sector;
        });
        return sector;
    }

    TempHome home;
    fs::path tree = home.Path() / "tree";
    std::shared_ptr<ScriptedDiscDrive> drive;
    std::unique_ptr<LAbstractFileSystem> compilation;
    std::unique_ptr<LBurnDataDisk> job;
    BurnProgress progress;
};

TEST_F(BurnDataDiskTest, EachStrategySendsItsCommandsInOrder) {
    SmallTree();
    const char* closeSession = "parameters reserve write sync close1 sync close2";
    const char* finalizePlusR = "reserve write sync close1 sync close2 sync close6";
    const char* inPlace = "write sync information sync close0";
    const struct {
        std::string commands;
        uint8_t writeParameters; // page byte 2, 0 when none are sent
        uint8_t trackMode;
        uint32_t run;
    } cases[std::size(kDiscKinds)] = {
        {closeSession, 0x41, 6, 16},                                          // cd-r
        {closeSession, 0x41, 6, 16},                                          // cd-rw
        {closeSession, 0x42, 5, 16},                                          // dvd-r
        {"parameters reserve write sync close1 sync close3", 0x40, 5, 16},    // dvd-rw
        {finalizePlusR, 0, 0, 16},                                            // dvd+r
        {inPlace, 0, 0, 16},                                                  // dvd+rw
        {finalizePlusR, 0, 0, 32},                                            // bd-r
        {inPlace, 0, 0, 32},                                                  // bd-re
        {"parameters format parameters write sync close1 sync close2", 0x40, 5, 16}, // hd-dvd-ram
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        const DiscKind& kind = kDiscKinds[i];
        SCOPED_TRACE(kind.name);
        const std::unique_ptr<LAbstractFileSystem> files = Compilation();
        LHybridDataDisk builder(*files, PROJECT_HYBRID_DISK, kind.media);
        ASSERT_TRUE(builder.Build());
        ScriptedDiscDevice disc(kind, 1000000);
        LBurnDataDisk burn(*files, {}, PROJECT_HYBRID_DISK);
        burn.media = kind.media;
        burn.capabilities.canWriteDVDRW = true;
        RecordingProgress quiet;
        EXPECT_EQ(RunBurnStrategy(quiet, burn, disc.device, builder).code, 0u);
        EXPECT_EQ(StrategyCommands(disc.drive->sent), c.commands);

        uint32_t longest = 0;
        const SentCommand* parameters = nullptr;
        for (const SentCommand& sent : disc.drive->sent) {
            if (sent.cdb[0] == MMC_WRITE_12) longest = std::max(longest, MMCGet32(&sent.cdb[6]));
            if (sent.cdb[0] == MMC_MODE_SELECT_10) parameters = &sent;
        }
        // The write type and track mode in force when writing.
        if (parameters) {
            ASSERT_GE(parameters->data.size(), 8u + 4);
            EXPECT_EQ(parameters->data[8 + 2], c.writeParameters);
            EXPECT_EQ(parameters->data[8 + 3] & 0x0F, c.trackMode);
        }
        EXPECT_EQ(longest, c.run);
        EXPECT_EQ(disc.drive->sectors.size(), builder.SectorCount()); // every sector written once;
    }
}

TEST_F(BurnDataDiskTest, TheDiscHoldsTheImageFileAndVerifiesAgainstIt) {
    SmallTree();
    setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    const fs::path image = home.Path() / "collection.iso";
    ASSERT_EQ(Burn({}, image.string()), PROCESS_DONE) << progress.error;
    std::ifstream in(image, std::ios::binary);
    const std::vector<uint8_t> file((std::istreambuf_iterator<char>(in)), {});

    const struct {
        size_t kind;
        bool outAtVerify; // the disc stays out of the drive a while after the burn
        long ejects;      // out after the burn, in to verify, and out to take it once asked
    } cases[] = {{4, false, 2}, {1, false, 2}, {4, true, 3}};
    for (const auto& c : cases) {
        const std::string name = std::string(kDiscKinds[c.kind].name) + (c.outAtVerify ? " out" : "");
        ScriptedDiscDrive& disc = Load(kDiscKinds[c.kind]);
        progress.statuses.clear();
        progress.onStatus = "Verifying the burn";
        progress.atStatus = nullptr;
        if (c.outAtVerify)
            progress.atStatus = [&disc] {
                disc.script.insert(disc.script.begin(), Refuse({MMC_TEST_UNIT_READY}, {2, 0x3A, 0}, 4));
            };
        ASSERT_EQ(Burn([](LBurnDataDisk& j) { j.settings.verifyBurn = true; j.settings.cdLoadEject = true; }),
                  PROCESS_DONE)
            << name << ": " << progress.error;
        EXPECT_EQ(disc.Image(static_cast<uint32_t>(file.size() / 2048)), file) << name;
        const std::vector<uint8_t> opcodes = disc.Opcodes();
        EXPECT_NE(std::find(opcodes.begin(), opcodes.end(), MMC_READ_10), opcodes.end()) << name;
        EXPECT_EQ(std::count(opcodes.begin(), opcodes.end(), MMC_START_STOP_UNIT), c.ejects) << name;
        EXPECT_TRUE(disc.closed) << name;
        const std::pair<std::string, int> asked("No disk in drive please insert a disk", 1);
        EXPECT_EQ(std::count(progress.statuses.begin(), progress.statuses.end(), asked) > 0, c.outAtVerify) << name;
    }
}

TEST_F(BurnDataDiskTest, FaultsEndWithTheirCodeAndText) {
    const std::string sourceImage = (home.Path() / "big.iso").string();
    const struct {
        const char* name;
        size_t kind;
        uint32_t capacity;
        std::function<void(ScriptedDiscDrive&)> prepare;
        std::function<void(LBurnDataDisk&)> adjust;
        LProcessResult result;
        BurnErrorCodeValue code;
        std::string text;
        bool written;
        uint8_t erasedBy = 0; // the command that erased the disc first
    } cases[] = {
        {"an image larger than the disc", 4, 250000, {},
         [&](LBurnDataDisk& j) { j.sourceImage = sourceImage; }, PROCESS_FAILED, 1,
         "The DVD+R has a capacity of 488.28Mb and you are trying to write 585.94Mb. Please insert "
         "a larger capacity disk or try fewer files.",
         false},
        {"a used CD-R", 0, 1000000, [](ScriptedDiscDrive& d) { d.used = true; }, {}, PROCESS_FAILED, 2,
         "The inserted disk is a CD-R and is not empty or erasable, please insert another disk into the drive",
         false},
        {"a used DVD-RW erased", 3, 1000000, [](ScriptedDiscDrive& d) { d.used = true; },
         [](LBurnDataDisk& j) { j.settings.eraseCDRW = true; }, PROCESS_DONE, 0, "", true, MMC_BLANK},
        {"a used DVD+RW erased", 5, 1000000,
         [](ScriptedDiscDrive& d) {
             // What tells a used DVD+RW: a file system at its start.
             d.used = true;
             d.sectors[16].assign(2048, 0);
             std::memcpy(d.sectors[16].data(), "\x01" "CD001", 6);
             d.sectors[16][80] = 0x10;
         },
         [](LBurnDataDisk& j) { j.settings.eraseCDRW = true; }, PROCESS_DONE, 0, "", true, MMC_FORMAT_UNIT},
        {"a CD project on a DVD", 4, 1000000, {}, [](LBurnDataDisk& j) { j.project = PROJECT_ISO_JOLIET_CD; },
         PROCESS_FAILED, 21,
         "The disk type being burned is a ISO CD and you have loaded a DVD+R. Please insert an appropriate disk.",
         false},
        {"a drive that writes no DVD", 4, 1000000,
         [](ScriptedDiscDrive& d) {
             for (const char* feature : {"46 02 00 2F", "46 02 00 2A", "46 02 00 2B"})
                 d.script.insert(d.script.begin(), Refuse(Hex(feature), {5, 0x24, 0}));
         },
         {}, PROCESS_FAILED, 17, "The selected drive cannot write or record DVDs", false},
        {"no disc", 4, 1000000,
         [](ScriptedDiscDrive& d) { d.script.insert(d.script.begin(), Refuse({MMC_TEST_UNIT_READY}, {2, 0x3A, 0})); },
         {}, PROCESS_FAILED, 14,
         "There appears to be no disk in the drive, please insert one and try again", false},
    };
    SmallTree();
    {
        std::ofstream big(sourceImage, std::ios::binary);
    }
    fs::resize_file(sourceImage, 300000ull * 2048);
    for (const auto& c : cases) {
        ScriptedDiscDrive& disc = Load(kDiscKinds[c.kind], c.capacity);
        if (c.prepare) c.prepare(disc);
        progress.error.clear();
        EXPECT_EQ(Burn(c.adjust), c.result) << c.name << ": " << progress.error;
        EXPECT_EQ(job->error.code, c.code) << c.name;
        EXPECT_EQ(progress.error, c.text) << c.name;
        EXPECT_EQ(disc.written, c.written) << c.name;
        const std::vector<uint8_t> opcodes = disc.Opcodes();
        const auto erased = std::find(opcodes.begin(), opcodes.end(), c.erasedBy);
        const auto write = std::find(opcodes.begin(), opcodes.end(), MMC_WRITE_12);
        if (c.erasedBy) {
            EXPECT_LT(erased, write) << c.name;
        }
    }

    fs::remove_all(tree);
    fs::create_directories(tree);
    Load(kDiscKinds[4]);
    EXPECT_EQ(Burn(), PROCESS_FAILED);
    EXPECT_EQ(progress.error, "Disk Write failed because there are no files to write.");
    EXPECT_TRUE(drive->sent.empty());
}

TEST_F(BurnDataDiskTest, VerificationNamesTheFileOfABadSectorButNotOfAVanishedOne) {
    SmallTree();
    Load(kDiscKinds[5]);
    ASSERT_EQ(Burn(), PROCESS_DONE) << progress.error;
    const uint32_t track = SectorOf("track.mp3");
    ASSERT_GT(track, 0u);

    ScriptedDiscDrive& bad = Load(kDiscKinds[5]);
    bad.verifyError = track + 20;
    EXPECT_EQ(Burn([](LBurnDataDisk& j) { j.settings.verifyBurn = true; }), PROCESS_FAILED);
    EXPECT_EQ(job->error.code, 30u);
    const std::string expected = "Error verifying file " + (tree / "album/deeper/track.mp3").string() +
                                 " sectors " + std::to_string(track + 16) + " to " +
                                 std::to_string(track + 31);
    EXPECT_NE(progress.error.find(expected), std::string::npos) << progress.error;

    // A file removed after it was added: reported, its sectors zeros, its verification passed.
    ScriptedDiscDrive& disc = Load(kDiscKinds[5]);
    EXPECT_EQ(Burn([&](LBurnDataDisk& j) {
                  j.settings.verifyBurn = true;
                  fs::remove(tree / "album/deeper/track.mp3");
              }),
              PROCESS_FAILED);
    EXPECT_EQ(job->error.code, 41u);
    ASSERT_FALSE(job->error.Chain().empty());
    EXPECT_EQ(job->error.Chain().back().code, 41u);
    EXPECT_EQ(std::string(job->error.Chain().back().text), (tree / "album/deeper/track.mp3").string());
    for (const auto& data : {disc.sectors[track], disc.sectors[track + 50]})
        EXPECT_EQ(data, std::vector<uint8_t>(2048, 0));
    EXPECT_TRUE(disc.closed);
    const std::vector<uint8_t> opcodes = disc.Opcodes();
    EXPECT_NE(std::find(opcodes.begin(), opcodes.end(), MMC_READ_10), opcodes.end());
}

TEST_F(BurnDataDiskTest, StopsAndWriteErrorsLeaveTheDiscOpen) {
    SmallTree();
    ScriptedDiscDrive& before = Load(kDiscKinds[4]);
    progress.stopAfter = 0;
    EXPECT_EQ(Burn(), PROCESS_STOPPED);
    EXPECT_FALSE(before.written);
    progress.stopAfter = -1;

    // Stopped while writing, and the drive's own refusal of a sector: error 32 with its sense.
    for (const bool stop : {true, false}) {
        ScriptedDiscDrive& disc = Load(kDiscKinds[4]);
        progress.stopWhenWritten = stop ? &disc : nullptr;
        if (!stop) disc.writeError = 40;
        EXPECT_EQ(Burn(), PROCESS_FAILED);
        EXPECT_EQ(job->error.code, stop ? 1u : 32u);
        if (!stop) {
            EXPECT_EQ(LSCSISenseText({job->error.senseKey, job->error.additionalSenseCode,
                                      job->error.additionalSenseCodeQualifier}), "3/0C/00");
        }
        EXPECT_TRUE(disc.written) << stop;
        EXPECT_FALSE(disc.closed) << stop;
    }
}

TEST_F(BurnDataDiskTest, AnyDiscProjectsTakeTheKindOfTheLoadedDisc) {
    const struct {
        int project;
        size_t kind;
        int settled;
    } cases[] = {
        {PROJECT_ISO_DISK, 0, PROJECT_ISO_JOLIET_CD},   {PROJECT_ISO_DISK, 4, PROJECT_ISO_JOLIET_DVD},
        {PROJECT_ISO_DISK, 6, PROJECT_ISO_BLURAY},      {PROJECT_UDF_DISK, 1, PROJECT_UDF_CD},
        {PROJECT_UDF_DISK, 5, PROJECT_UDF_DVD},         {PROJECT_UDF_DISK, 7, PROJECT_UDF_BLURAY},
        {PROJECT_HYBRID_DISK, 4, PROJECT_HYBRID_DISK},  {PROJECT_HYBRID_DVD, 4, PROJECT_HYBRID_DVD},
    };
    LAbstractFileSystem files;
    for (const auto& c : cases) {
        Load(kDiscKinds[c.kind]);
        LBurnDataDisk burn(files, {}, c.project);
        burn.settings.cdDrive = 0;
        LSCSI device;
        EXPECT_EQ(ProcessOpenDriveAndProject(progress, burn, device).code, 0u);
        EXPECT_EQ(burn.media, kDiscKinds[c.kind].media);
        EXPECT_EQ(burn.project, c.settled) << c.project << " on " << kDiscKinds[c.kind].name;
    }
}

TEST_F(BurnDataDiskTest, UsedRewritablesAreErasedOrReopenedAsTheProjectAllows) {
    const struct {
        const char* name;
        int project;
        bool erase;
        bool full;
        uint8_t trackMode;
        BurnErrorCodeValue code;
        std::string text;
        int blanking; // BLANK's byte 1, -1 when none is sent
    } cases[] = {
        {"quick erase", PROJECT_ISO_JOLIET_CD, true, false, 0x04, 0, "", 0x11},
        {"full erase", PROJECT_ISO_JOLIET_CD, true, true, 0x04, 0, "", 0x10},
        {"data project without erasing", PROJECT_ISO_JOLIET_CD, false, false, 0x04, 2,
         "The inserted disk is not empty. To erase it, select the option \"Erase Rewritables if "
         "they are not blank\" and try again.",
         -1},
        {"audio onto a data disc", PROJECT_AUDIO_CD, false, false, 0x04, 25,
         "You are trying to append audio tracks and the loaded disk is not an audio CD", -1},
        {"audio onto an audio disc", PROJECT_AUDIO_CD, false, false, 0x00, 0, "", 0x15},
    };
    LAbstractFileSystem files;
    for (const auto& c : cases) {
        ScriptedDiscDevice disc(kDiscKinds[1], 300000);
        disc.drive->written = true; // an open session
        disc.drive->trackMode = c.trackMode;
        LBurnDataDisk burn(files, {}, c.project);
        burn.media = MEDIA_CDRW;
        burn.settings.eraseCDRW = c.erase;
        burn.settings.fullErase = c.full;
        DiskInformation info;
        ASSERT_EQ(ProcessSCSIGetDiskInformation(progress, disc.device, info).code, 0u);
        ASSERT_EQ(info.discStatus, DISC_INCOMPLETE);
        progress.error.clear();
        progress.statuses.clear();
        EXPECT_EQ(ProcessEraseDiskIfNeeded(progress, burn, disc.device, info, 1000, {}).code, c.code)
            << c.name;
        EXPECT_EQ(progress.error, c.text) << c.name;
        int blanking = -1;
        for (const SentCommand& sent : disc.drive->sent)
            if (sent.cdb[0] == MMC_BLANK) blanking = sent.cdb[1];
        EXPECT_EQ(blanking, c.blanking) << c.name;
        if (c.blanking >= 0) {
            const std::pair<std::string, int> step(c.blanking == 0x15 ? "Opening Disk" : "Erasing Disk", 0);
            EXPECT_NE(std::find(progress.statuses.begin(), progress.statuses.end(), step),
                      progress.statuses.end())
                << c.name;
        }
    }
}

TEST(DiscVerifyTarget, ReadsARunUpToFiveTimes) {
    const std::vector<uint8_t> expected(2 * 2048, 0x5A);
    std::vector<uint8_t> other = expected;
    other[100] = 0;
    const struct {
        const char* name;
        std::vector<ScriptedAnswer> script;
        BurnErrorCodeValue code;
        size_t reads;
    } cases[] = {
        {"read at once", {Answer({MMC_READ_10}, expected)}, 0, 1},
        {"read at the fifth try", {Refuse({MMC_READ_10}, {3, 0x11, 0}, 4), Answer({MMC_READ_10}, expected)}, 0, 5},
        {"never read", {Refuse({MMC_READ_10}, {3, 0x11, 0})}, 31, 5},
        {"other data", {Answer({MMC_READ_10}, other)}, 30, 5},
        {"other data, then right", {Answer({MMC_READ_10}, other, 2), Answer({MMC_READ_10}, expected)}, 0, 3},
    };
    for (const auto& c : cases) {
        ScriptedDevice s;
        s.drive->script = c.script;
        RecordingProgress progress;
        LDiscVerifyTarget target(progress, s.device, 1000, 16);
        EXPECT_EQ(target.WriteSectors(expected.data(), 10, 2).code, c.code) << c.name;
        EXPECT_EQ(s.drive->sent.size(), c.reads) << c.name;
        EXPECT_EQ(MMCGet32(&s.drive->sent[0].cdb[2]), 1010u) << c.name;
    }
    ScriptedDevice s;
    RecordingProgress stopping;
    stopping.stopAfter = 0;
    LDiscVerifyTarget target(stopping, s.device, 0, 16);
    EXPECT_EQ(target.WriteSectors(expected.data(), 0, 2).code, 1u);
    EXPECT_TRUE(s.drive->sent.empty());
}

} // namespace
