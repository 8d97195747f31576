#pragma once

#include "disc/SCSI.h"
#include "disc/SCSITransport.h"

#include <scsi/sg.h>

#include <memory>
#include <string>
#include <vector>

// Real optical drives on Linux: SCSI commands through the SG_IO ioctl of /dev/sr* nodes.

// A drive as the program's drive list names it; matched against the drive's own INQUIRY
// answer.
struct LDriveIdentity {
    std::string vendor;
    std::string product;
};

class LSgIoTransport : public LSCSITransport {
public:
    // Opens a drive node. Exclusive opening (O_RDWR|O_NONBLOCK|O_EXCL), for burning, fails while
    // anything else has the device open or its disc mounted; a busy device is tried once more
    // after a second. Without `exclusive` the node is opened read-only for identification.
    static std::unique_ptr<LSgIoTransport> Open(const std::string& path, bool exclusive,
                                                std::string& error);
    ~LSgIoTransport() override;
    LSgIoTransport(const LSgIoTransport&) = delete;
    LSgIoTransport& operator=(const LSgIoTransport&) = delete;

    bool Execute(const LSCSICommand& command, LSCSITaskResult& result) override;
    const std::string& Path() const { return path_; }

private:
    LSgIoTransport(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}

    int fd_;
    std::string path_;
};

// The request for one command; `sense` receives up to `senseSize` bytes of sense data.
void SgIoFillHeader(const LSCSICommand& command, sg_io_hdr_t& header, uint8_t* sense,
                    size_t senseSize);
// How the command ended, from the header the ioctl filled in and its sense bytes.
void SgIoReadResult(const sg_io_hdr_t& header, const uint8_t* sense, LSCSITaskResult& result);

// The optical drive nodes of a device folder ("sr0", "sr1", ...) in number order.
std::vector<std::string> ListSgIoDevices(const std::string& folder = "/dev");

// Opens, exclusively, the /dev/sr* node whose INQUIRY vendor and product equal (without regard
// to case) those of the index-th entry of `drives`; null, with the reason in `error`, when
// there is no such entry, no drive node, no match, or the drive is busy.
std::unique_ptr<LSCSITransport> OpenSgIoDrive(int index, const std::vector<LDriveIdentity>& drives,
                                              std::string& error,
                                              const std::string& folder = "/dev");

// An opener for LSCSI::OpenCDROMDrive over the given drive list.
LSCSI::Opener SgIoDriveOpener(std::vector<LDriveIdentity> drives, std::string folder = "/dev");
