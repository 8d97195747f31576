// Writing sectors: WRITE(12) with streaming, and what the layer does when a drive refuses
// the command, the streaming bit, the address, or cannot write the disc.
#include "SCSIScriptedTransport.h"

#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"
#include "disc/SCSICommands.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

namespace {

class SCSIWriteTest : public testing::Test {
protected:
    void SetUp() override { SetSCSIWriteFlags({}); }
    void TearDown() override { SetSCSIWriteFlags({}); }

    BurnErrorCode Write(uint32_t sector, uint32_t count = 2, uint32_t sectorSize = 2048) {
        data.assign(size_t{count} * sectorSize, 0);
        for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 7 + sector);
        return ProcessSCSIWriteSectors(job, s.device, data.data(), sector, count, sectorSize);
    }

    // The writes sent: "12s" for WRITE(12) with streaming, "12" without, "10" for WRITE(10).
    std::vector<std::string> Writes() const {
        std::vector<std::string> kinds;
        for (const SentCommand& sent : s.drive->sent) {
            if (sent.cdb[0] == MMC_WRITE_12) kinds.push_back(sent.cdb[10] & 0x80 ? "12s" : "12");
            if (sent.cdb[0] == MMC_WRITE_10) kinds.push_back("10");
        }
        return kinds;
    }

    ScriptedDevice s;
    RecordingProgress job;
    std::vector<uint8_t> data;
};

TEST_F(SCSIWriteTest, FallsBackForTheRestOfTheRun) {
    const struct {
        const char* name;
        std::vector<ScriptedAnswer> script;
        std::vector<std::string> writes;
        bool useWrite10;
        bool streaming;
    } cases[] = {
        {"WRITE(12) refused", {Refuse({MMC_WRITE_12}, {5, 0x20, 0x00}), Answer({MMC_WRITE_10}), Answer({0x00})},
         {"12s", "10", "10"}, true, true},
        {"streaming refused", {Refuse(Hex("AA 00 00 00 00 10 00 00 00 02 80"), {5, 0x24, 0x00}),
                               Answer({MMC_WRITE_12}), Answer({0x00})},
         {"12s", "12", "12"}, false, false},
        {"both refused in turn", {Refuse(Hex("AA 00 00 00 00 10 00 00 00 02 80"), {5, 0x24, 0x00}),
                                  Refuse({MMC_WRITE_12}, {5, 0x20, 0x00}), Answer({MMC_WRITE_10}),
                                  Answer({0x00})},
         {"12s", "12", "10", "10"}, true, false},
    };
    for (const auto& c : cases) {
        SetSCSIWriteFlags({});
        s.drive->sent.clear();
        s.drive->script = c.script;
        EXPECT_EQ(Write(0x10).code, 0u) << c.name;
        // The next write goes straight the way that worked.
        EXPECT_EQ(Write(0x12).code, 0u) << c.name;
        EXPECT_EQ(Writes(), c.writes) << c.name;
        EXPECT_EQ(GetSCSIWriteFlags().useWrite10, c.useWrite10) << c.name;
        EXPECT_EQ(GetSCSIWriteFlags().streaming, c.streaming) << c.name;
    }
    // A write without streaming or with WRITE(10) first waits for the drive.
    EXPECT_EQ(s.drive->Opcodes().back(), MMC_WRITE_10);
    EXPECT_EQ(s.drive->Opcodes()[s.drive->Opcodes().size() - 2], MMC_TEST_UNIT_READY);
}

TEST_F(SCSIWriteTest, ErrorsCarryTheDriveSense) {
    const struct {
        const char* name;
        std::vector<ScriptedAnswer> script;
        BurnErrorCodeValue code;
        LSenseBytes sense;
    } cases[] = {
        {"write error", {Refuse({MMC_WRITE_12}, {3, 0x0C, 0x00})}, 32, {3, 0x0C, 0x00}},
        {"invalid address", {Refuse({MMC_WRITE_12}, {5, 0x21, 0x02})}, 34, {5, 0x21, 0x02}},
        {"write-protected area", {Refuse({MMC_WRITE_12}, {5, 0x30, 0x06})}, 34, {5, 0x30, 0x06}},
        {"WRITE(10) refused as well",
         {Refuse({MMC_WRITE_12}, {5, 0x20, 0x00}), Refuse({MMC_WRITE_10}, {5, 0x20, 0x00}), Answer({0x00})},
         32, {5, 0x20, 0x00}},
        {"unreadable disc after cycling",
         {Refuse({MMC_WRITE_12}, {3, 0x57, 0x00}), Answer({MMC_PREVENT_ALLOW_MEDIUM_REMOVAL}),
          Answer({MMC_START_STOP_UNIT}), Answer({MMC_TEST_UNIT_READY})},
         36, {3, 0x57, 0x00}},
    };
    for (const auto& c : cases) {
        ScriptedDevice fresh;
        fresh.drive->script = c.script;
        SetSCSIWriteFlags({});
        std::vector<uint8_t> sector(2048);
        const BurnErrorCode error = ProcessSCSIWriteSectors(job, fresh.device, sector.data(), 0, 1, 2048);
        EXPECT_EQ(error.code, c.code) << c.name;
        EXPECT_EQ(error.senseKey, c.sense.key) << c.name;
        EXPECT_EQ(error.additionalSenseCode, c.sense.code) << c.name;
        EXPECT_EQ(error.additionalSenseCodeQualifier, c.sense.qualifier) << c.name;
    }
}

TEST_F(SCSIWriteTest, CyclesOnceThenWrites) {
    s.drive->script = {Refuse({MMC_WRITE_12}, {3, 0x57, 0x00}, 1), Answer({MMC_WRITE_12}),
                       Answer({MMC_PREVENT_ALLOW_MEDIUM_REMOVAL}), Answer({MMC_START_STOP_UNIT}),
                       Answer({MMC_TEST_UNIT_READY})};
    EXPECT_EQ(Write(0).code, 0u);
    EXPECT_EQ(s.drive->Opcodes(), Hex("AA 1E 1B 00 46 46 1B 00 00 AA"));
    EXPECT_TRUE(s.device.WasCycled());
}

TEST_F(SCSIWriteTest, NotReadyWaitsAndOtherSectorSizesDoNotStream) {
    // Still not ready after the executor's own retries: wait for the drive, then write again.
    ScriptedAnswer busy = Refuse({MMC_WRITE_12}, {2, 0x04, 0x08}, 240);
    s.drive->script = {busy, Answer({MMC_WRITE_12}), Answer({MMC_TEST_UNIT_READY})};
    EXPECT_EQ(Write(0).code, 0u);
    EXPECT_EQ(s.drive->Opcodes().back(), MMC_WRITE_12);
    EXPECT_EQ(s.drive->Opcodes()[s.drive->Opcodes().size() - 2], MMC_TEST_UNIT_READY);

    s.drive->sent.clear();
    s.drive->script = {Answer({MMC_WRITE_12}), Answer({MMC_TEST_UNIT_READY})};
    EXPECT_EQ(Write(0, 1, 2352).code, 0u);
    EXPECT_EQ(Writes(), std::vector<std::string>{"12"});
    EXPECT_EQ(s.drive->sent.back().length, 2352u);
    EXPECT_FALSE(GetSCSIWriteFlags().streaming);

    s.drive->script = {Refuse({MMC_WRITE_12}, {2, 0x04, 0x08})};
    job.stopAfter = 0;
    EXPECT_EQ(Write(0).code, 1u);
}

} // namespace
