#pragma once

#include "burn/BurnErrorCode.h"
#include "disc/SCSITransport.h"
#include "jobs/ProcessInterface.h"

#include <functional>
#include <memory>
#include <string>

// A handle on one optical drive, spoken to with SCSI Multimedia Commands through a transport.
// It keeps how the last command ended (service response, task status, fixed-format sense) so
// that a failing step can put the drive's own reason into its BurnErrorCode.
class LSCSI {
public:
    // Opens the index-th drive of the program's burner list; on failure returns null and says
    // why in `error`. The drive adapters provide it (SG_IO for real drives, the virtual drive).
    using Opener = std::function<std::unique_ptr<LSCSITransport>(int index, std::string& error)>;

    // Without an opener, the program's own (SetSCSIDriveOpener) is used.
    LSCSI() = default;
    explicit LSCSI(Opener opener) : opener_(std::move(opener)) {}
    explicit LSCSI(std::unique_ptr<LSCSITransport> transport) { Open(std::move(transport)); }
    LSCSI(const LSCSI&) = delete;
    LSCSI& operator=(const LSCSI&) = delete;

    // Closes whatever was open and opens the index-th drive through the opener.
    bool OpenCDROMDrive(int index);
    void Open(std::unique_ptr<LSCSITransport> transport);
    void Close();
    bool IsOpen() const { return transport_ != nullptr; }
    // Why the last OpenCDROMDrive failed.
    const std::string& GetOpenError() const { return openError_; }

    // Runs one command and keeps how it ended; false when the drive could not be reached.
    bool Execute(const LSCSICommand& command);

    uint8_t GetServiceResponse() const { return last_.serviceResponse; }
    uint8_t GetTaskStatus() const { return last_.taskStatus; }
    const uint8_t (&GetSenseData() const)[kSCSISenseSize] { return last_.sense; }
    size_t GetTransferred() const { return last_.transferred; }
    // True, with the sense key, ASC and ASCQ, when the last command did not end with good
    // status; otherwise false and all three 0.
    bool GetErrorCodes(uint8_t& key, uint8_t& asc, uint8_t& ascq) const;
    // The same three bytes for an error record; all 0 after a good command.
    LSenseBytes GetSense() const;

    // A drive is cycled (ejected and reloaded) at most once to recover from a disc it cannot
    // read; this remembers that it was.
    bool WasCycled() const { return cycled_; }
    void SetCycled() { cycled_ = true; }

private:
    Opener opener_;
    std::unique_ptr<LSCSITransport> transport_;
    std::string openError_;
    LSCSITaskResult last_;
    bool cycled_ = false;
};

// The program's way of opening drives by their index in the burner list, installed by the drive
// adapters at start-up (real drives through SG_IO, the Virtual Burner through its virtual MMC
// drive). Until one is installed, every opening fails.
void SetSCSIDriveOpener(LSCSI::Opener opener);
LSCSI::Opener SCSIDriveOpener();

// Whether the last command's sense is KEY/ASC (any ASCQ) or KEY/ASC/ASCQ.
bool TestSCSIStatus(const LSCSI& device, uint8_t key, uint8_t asc);
bool TestSCSIStatus(const LSCSI& device, uint8_t key, uint8_t asc, uint8_t ascq);

// A command descriptor block; its length follows from the operation code's group.
struct LSCSICDB {
    explicit LSCSICDB(uint8_t opcode);
    uint8_t bytes[12] = {};
    size_t length = 0;
};

// The status line that takes the layer's step marks ("ATIP.dummy.read"): kept for diagnosis
// by interfaces that record it, not shown by the progress windows, which show lines 0 and 1.
inline constexpr int kSCSIDebugStatusLine = 2;

// Runs a command: 0 done, 1 stopped by the user, 2 failed. Without a buffer (or with length 0)
// there is no data phase. A drive that answers "not ready" (2/04) is asked again every 500 ms
// while the timeout lasts; that is the only retry. `waitedMs`, when given, gets the time spent
// waiting between those tries.
int ProcessSCSIExecuteCommand(LProcessInterface& job, LSCSI& device, const LSCSICDB& cdb,
                              void* buffer, size_t length, uint32_t timeoutMs, bool toDevice,
                              uint32_t* waitedMs = nullptr);
