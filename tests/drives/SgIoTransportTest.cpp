// The SG_IO transport without a drive: opening fails with a reason that names the device,
// drive nodes are found in number order, and requests and results map to and from sg_io_hdr.
#include "disc/SCSICDB.h"
#include "disc/SCSISense.h"
#include "drives/SgIoTransport.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class SgIoTransportTest : public testing::Test {
protected:
    void Node(const std::string& name) { std::ofstream(folder / name) << ""; }

    TempHome home;
    fs::path folder = home.Path();
    const std::vector<LDriveIdentity> drives = {{"HL-DT-ST ", "DVDRAM GH24NSD1"}};
};

TEST_F(SgIoTransportTest, OpeningFailsWithAClearError) {
    std::string error;
    // This machine has no optical drive.
    if (ListSgIoDevices("/dev").empty()) {
        EXPECT_EQ(OpenSgIoDrive(0, drives, error), nullptr);
        EXPECT_EQ(error, "No optical drive device (/dev/sr*) was found for \"HL-DT-ST DVDRAM GH24NSD1\"");
    }
    EXPECT_EQ(OpenSgIoDrive(0, drives, error, folder.string()), nullptr);
    EXPECT_NE(error.find(folder.string() + "/sr*"), std::string::npos) << error;

    EXPECT_EQ(OpenSgIoDrive(2, drives, error, folder.string()), nullptr);
    EXPECT_EQ(error, "There is no drive number 2");

    // Nodes that do not answer INQUIRY (plain files here) are listed in the reason.
    for (const char* name : {"sr10", "sr2", "sr0", "srx", "sda", "sr"}) Node(name);
    const std::vector<std::string> nodes = ListSgIoDevices(folder.string());
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_EQ(nodes[0], (folder / "sr0").string());
    EXPECT_EQ(nodes[1], (folder / "sr2").string());
    EXPECT_EQ(nodes[2], (folder / "sr10").string());
    EXPECT_EQ(OpenSgIoDrive(0, drives, error, folder.string()), nullptr);
    EXPECT_EQ(error, "The drive \"HL-DT-ST DVDRAM GH24NSD1\" was not found among " + nodes[0] +
                         " (no answer), " + nodes[1] + " (no answer), " + nodes[2] + " (no answer)");

    const std::string missing = (folder / "gone" / "sr0").string();
    EXPECT_EQ(LSgIoTransport::Open(missing, true, error), nullptr);
    EXPECT_EQ(error, "Cannot open the drive " + missing + ": No such file or directory");

    // The same through the device handle the burn job uses.
    LSCSI device(SgIoDriveOpener(drives, folder.string()));
    EXPECT_FALSE(device.OpenCDROMDrive(0));
    EXPECT_NE(device.GetOpenError().find("was not found among"), std::string::npos);
}

TEST_F(SgIoTransportTest, RequestHeader) {
    const LSCSICDB write = CDBWrite12(16, 2, true);
    uint8_t data[4096];
    uint8_t sense[64];
    const struct {
        LSCSIDirection direction;
        int expected;
        unsigned length;
    } cases[] = {
        {LSCSIDirection::None, SG_DXFER_NONE, 0},
        {LSCSIDirection::FromDevice, SG_DXFER_FROM_DEV, sizeof data},
        {LSCSIDirection::ToDevice, SG_DXFER_TO_DEV, sizeof data},
    };
    for (const auto& c : cases) {
        const LSCSICommand command{write.bytes, write.length, data, sizeof data, c.direction, 120000};
        sg_io_hdr_t header;
        SgIoFillHeader(command, header, sense, sizeof sense);
        EXPECT_EQ(header.interface_id, 'S');
        EXPECT_EQ(header.dxfer_direction, c.expected);
        EXPECT_EQ(header.dxfer_len, c.length);
        EXPECT_EQ(header.dxferp, c.length ? data : nullptr);
        EXPECT_EQ(header.cmd_len, 12);
        EXPECT_EQ(header.cmdp, write.bytes);
        EXPECT_EQ(header.sbp, sense);
        EXPECT_EQ(header.mx_sb_len, 64);
        EXPECT_EQ(header.timeout, 120000u);
    }
}

TEST_F(SgIoTransportTest, ResultsFromTheKernel) {
    const struct {
        const char* name;
        unsigned char status;
        unsigned short host;
        unsigned short driver;
        std::vector<uint8_t> sense;
        int resid;
        uint8_t response;
        uint8_t taskStatus;
        const char* senseText;
        size_t transferred;
    } cases[] = {
        {"good, short reply", 0, 0, 0, {}, 100, SERVICE_TASK_COMPLETE, 0, "0/00/00", 1948},
        {"check condition", 2, 0, 0x08, {0x70, 0, 3, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x0C, 0, 0, 0, 0, 0},
         0, SERVICE_TASK_COMPLETE, 2, "3/0C/00", 2048},
        {"descriptor sense", 2, 0, 0x08, {0x72, 5, 0x24, 0, 0, 0, 0, 0}, 2048, SERVICE_TASK_COMPLETE, 2,
         "5/24/00", 0},
        {"sense under a good status byte", 0, 0, 0x08, {0x70, 0, 2, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x3A, 0},
         2048, SERVICE_TASK_COMPLETE, 2, "2/3A/00", 0},
        {"host adapter timeout", 0, 3, 0, {}, 2048, SERVICE_DELIVERY_OR_TARGET_FAILURE, 0, "0/00/00", 0},
        {"driver timeout", 0, 0, 0x06, {}, 2048, SERVICE_DELIVERY_OR_TARGET_FAILURE, 0, "0/00/00", 0},
    };
    for (const auto& c : cases) {
        sg_io_hdr_t header{};
        header.dxfer_len = 2048;
        header.status = c.status;
        header.host_status = c.host;
        header.driver_status = c.driver;
        header.resid = c.resid;
        header.mx_sb_len = 64;
        header.sb_len_wr = static_cast<unsigned char>(c.sense.size());
        LSCSITaskResult result;
        SgIoReadResult(header, c.sense.data(), result);
        EXPECT_EQ(result.serviceResponse, c.response) << c.name;
        EXPECT_EQ(result.taskStatus, c.taskStatus) << c.name;
        EXPECT_EQ(LSCSISenseText(LSCSISenseBytes(result.sense)), c.senseText) << c.name;
        EXPECT_EQ(result.transferred, c.transferred) << c.name;
    }
}

} // namespace
