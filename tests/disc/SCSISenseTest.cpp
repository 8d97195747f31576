// Sense data in both formats, the progress of long operations, and how the device keeps the
// last command's outcome.
#include "SCSIScriptedTransport.h"

#include "disc/SCSICDB.h"
#include "disc/SCSICommands.h"
#include "disc/SCSISense.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

namespace {

LSenseBytes SenseOf(const std::vector<uint8_t>& raw) {
    uint8_t fixed[kSCSISenseSize];
    LSCSIToFixedSense(raw.data(), raw.size(), fixed);
    return LSCSISenseBytes(fixed);
}

TEST(SCSISenseTest, FixedAndDescriptorFormats) {
    const struct {
        const char* raw;
        const char* text;
    } cases[] = {
        // Fixed format; the flag bits above the key do not change it.
        {"70 00 03 00 00 00 00 0A 00 00 00 00 0C 00", "3/0C/00"},
        {"F1 00 E5 00 00 00 00 0A 00 00 00 00 21 02", "5/21/02"},
        // Descriptor format.
        {"72 02 04 01 00 00 00 00", "2/04/01"},
        {"73 06 28 00", "6/28/00"},
        // Not sense data at all, or too short.
        {"7F 02 04 01", "0/00/00"},
        {"72 02", "0/00/00"},
        {"", "0/00/00"},
    };
    for (const auto& c : cases) EXPECT_EQ(LSCSISenseText(SenseOf(Hex(c.raw))), c.text) << c.raw;
}

TEST(SCSISenseTest, ProgressOfALongOperation) {
    const struct {
        const char* raw;
        bool has;
        double fraction;
    } cases[] = {
        {"70 00 02 00 00 00 00 0A 00 00 00 00 04 04 00 80 40 00", true, 0.25},
        {"70 00 02 00 00 00 00 0A 00 00 00 00 04 07 00 00 40 00", false, 0},
        {"70 00 05 00 00 00 00 0A 00 00 00 00 04 04 00 80 40 00", false, 0},
        // Descriptor format with a sense-key-specific descriptor after another one.
        {"72 02 04 07 00 00 00 10 05 02 00 00 02 06 00 00 80 C0 00 00", true, 0.75},
    };
    for (const auto& c : cases) {
        const std::vector<uint8_t> raw = Hex(c.raw);
        uint8_t fixed[kSCSISenseSize];
        LSCSIToFixedSense(raw.data(), raw.size(), fixed);
        double fraction = 0;
        EXPECT_EQ(LSCSISenseProgress(fixed, fraction), c.has) << c.raw;
        EXPECT_DOUBLE_EQ(fraction, c.fraction) << c.raw;
    }
}

TEST(SCSISenseTest, DeviceKeepsTheLastOutcome) {
    ScriptedDevice s;
    s.drive->script = {Refuse({MMC_WRITE_12}, {3, 0x0C, 0x00}), Answer({MMC_TEST_UNIT_READY})};
    RecordingProgress job;
    uint8_t sector[2048] = {};
    EXPECT_EQ(ProcessSCSIExecuteCommand(job, s.device, CDBWrite12(0, 1, true), sector, sizeof sector,
                                        1000, true),
              PROCESS_FAILED);
    uint8_t key, asc, ascq;
    EXPECT_TRUE(s.device.GetErrorCodes(key, asc, ascq));
    EXPECT_EQ(LSCSISenseText(s.device.GetSense()), "3/0C/00");
    EXPECT_TRUE(TestSCSIStatus(s.device, 3, 0x0C));
    EXPECT_TRUE(TestSCSIStatus(s.device, 3, 0x0C, 0x00));
    EXPECT_FALSE(TestSCSIStatus(s.device, 3, 0x0C, 0x01));
    // The error record of that failure carries the same bytes.
    const BurnErrorCode error = LSCSIError(32, s.device, "at 0");
    EXPECT_EQ(error.senseKey, 3);
    EXPECT_EQ(error.additionalSenseCode, 0x0C);

    EXPECT_EQ(ProcessSCSITestUnitReady(job, s.device, 1000), PROCESS_DONE);
    EXPECT_FALSE(s.device.GetErrorCodes(key, asc, ascq));
    EXPECT_EQ(key + asc + ascq, 0);

    // A task the transport could not complete fails without sense bytes, and a closed device
    // cannot run anything.
    s.drive->script = {Answer({MMC_TEST_UNIT_READY})};
    s.drive->script[0].serviceResponse = SERVICE_DELIVERY_OR_TARGET_FAILURE;
    EXPECT_EQ(ProcessSCSITestUnitReady(job, s.device, 1000), PROCESS_FAILED);
    EXPECT_TRUE(s.device.GetErrorCodes(key, asc, ascq));
    s.device.Close();
    EXPECT_FALSE(s.device.IsOpen());
    EXPECT_EQ(ProcessSCSITestUnitReady(job, s.device, 1000), PROCESS_FAILED);
}

TEST(SCSISenseTest, OpeningThroughTheOpener) {
    std::vector<int> asked;
    LSCSI device([&](int index, std::string& error) -> std::unique_ptr<LSCSITransport> {
        asked.push_back(index);
        if (index == 0) return std::make_unique<ScriptedTransport>();
        error = "There is no drive number " + std::to_string(index);
        return nullptr;
    });
    EXPECT_TRUE(device.OpenCDROMDrive(0));
    EXPECT_FALSE(device.OpenCDROMDrive(3));
    EXPECT_FALSE(device.IsOpen());
    EXPECT_EQ(device.GetOpenError(), "There is no drive number 3");
    EXPECT_EQ(asked, (std::vector<int>{0, 3}));
    LSCSI none;
    EXPECT_FALSE(none.OpenCDROMDrive(0));
    EXPECT_FALSE(none.GetOpenError().empty());
}

} // namespace
