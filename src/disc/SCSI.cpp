#include "disc/SCSI.h"

#include "disc/SCSISense.h"

#include <mutex>

namespace {

constexpr uint32_t kNotReadyRetryMs = 500;

size_t CDBLengthOf(uint8_t opcode) {
    switch (opcode >> 5) {
    case 0: return 6;
    case 1:
    case 2: return 10;
    default: return 12;
    }
}

std::mutex openerMutex;
LSCSI::Opener programOpener;

} // namespace

void SetSCSIDriveOpener(LSCSI::Opener opener) {
    std::lock_guard lock(openerMutex);
    programOpener = std::move(opener);
}

LSCSI::Opener SCSIDriveOpener() {
    std::lock_guard lock(openerMutex);
    return programOpener;
}

LSCSICDB::LSCSICDB(uint8_t opcode) : length(CDBLengthOf(opcode)) {
    bytes[0] = opcode;
}

bool LSCSI::OpenCDROMDrive(int index) {
    Close();
    openError_.clear();
    if (!opener_) opener_ = SCSIDriveOpener();
    if (!opener_) {
        openError_ = "No drives can be opened";
        return false;
    }
    transport_ = opener_(index, openError_);
    if (!transport_ && openError_.empty()) openError_ = "The drive could not be opened";
    return transport_ != nullptr;
}

void LSCSI::Open(std::unique_ptr<LSCSITransport> transport) {
    Close();
    transport_ = std::move(transport);
}

void LSCSI::Close() {
    transport_.reset();
    last_ = {};
    cycled_ = false;
}

bool LSCSI::Execute(const LSCSICommand& command) {
    last_ = {};
    if (!transport_) return false;
    LSCSITaskResult result;
    const bool delivered = transport_->Execute(command, result);
    last_ = result;
    if (!delivered) last_.serviceResponse = SERVICE_DELIVERY_OR_TARGET_FAILURE;
    return delivered;
}

bool LSCSI::GetErrorCodes(uint8_t& key, uint8_t& asc, uint8_t& ascq) const {
    key = asc = ascq = 0;
    if (last_.serviceResponse == SERVICE_TASK_COMPLETE && last_.taskStatus == TASK_STATUS_GOOD)
        return false;
    const LSenseBytes sense = LSCSISenseBytes(last_.sense);
    key = sense.key;
    asc = sense.code;
    ascq = sense.qualifier;
    return true;
}

LSenseBytes LSCSI::GetSense() const {
    LSenseBytes sense;
    GetErrorCodes(sense.key, sense.code, sense.qualifier);
    return sense;
}

bool TestSCSIStatus(const LSCSI& device, uint8_t key, uint8_t asc) {
    const LSenseBytes sense = device.GetSense();
    return sense.key == key && sense.code == asc;
}

bool TestSCSIStatus(const LSCSI& device, uint8_t key, uint8_t asc, uint8_t ascq) {
    return TestSCSIStatus(device, key, asc) && device.GetSense().qualifier == ascq;
}

int ProcessSCSIExecuteCommand(LProcessInterface& job, LSCSI& device, const LSCSICDB& cdb,
                              void* buffer, size_t length, uint32_t timeoutMs, bool toDevice,
                              uint32_t* waitedMs) {
    LSCSICommand command;
    command.cdb = cdb.bytes;
    command.cdbLength = cdb.length;
    if (buffer && length > 0) {
        command.buffer = buffer;
        command.length = length;
        command.direction = toDevice ? LSCSIDirection::ToDevice : LSCSIDirection::FromDevice;
    }
    if (waitedMs) *waitedMs = 0;
    for (uint32_t remaining = timeoutMs;;) {
        command.timeoutMs = remaining;
        if (!device.Execute(command)) return PROCESS_FAILED;
        if (device.GetServiceResponse() != SERVICE_TASK_COMPLETE) return PROCESS_FAILED;
        if (device.GetTaskStatus() == TASK_STATUS_GOOD) return PROCESS_DONE;
        const bool notReady = device.GetTaskStatus() == TASK_STATUS_CHECK_CONDITION &&
                              TestSCSIStatus(device, 2, 0x04);
        if (!notReady || remaining <= kNotReadyRetryMs) return PROCESS_FAILED;
        if (job.ProcessWait(kNotReadyRetryMs)) return PROCESS_STOPPED;
        remaining -= kNotReadyRetryMs;
        if (waitedMs) *waitedMs += kNotReadyRetryMs;
    }
}
