// Writing sectors, flushing, closing, reserving, formatting and blanking.
#include "disc/SCSICommands.h"

#include "disc/SCSICDB.h"

#include <algorithm>
#include <atomic>

namespace {

constexpr uint32_t kWriteTimeoutMs = 120000;
constexpr uint32_t kSynchronizeTimeoutMs = 1800000;
constexpr uint32_t kSynchronizeWaitMs = 10000;
constexpr uint32_t kCloseTimeoutMs = 2000;
constexpr uint32_t kReserveTimeoutMs = 120000;
constexpr uint32_t kFormatTimeoutMs = 5000;
constexpr uint32_t kBlankTimeoutMs = 3000;
constexpr uint32_t kMinimumTrackSectors = 300;
constexpr uint32_t kStreamingSectorSize = 2048;

// Learnt from the drives of this run: once a drive refuses WRITE(12) or the streaming bit,
// every later write goes the other way.
std::atomic<bool> gUseWrite10{false};
std::atomic<bool> gStreaming{true};

bool Is(const LSCSI& device, uint8_t key, uint8_t asc, uint8_t ascq) {
    return TestSCSIStatus(device, key, asc, ascq);
}

} // namespace

LSCSIWriteFlags GetSCSIWriteFlags() {
    return {gUseWrite10.load(), gStreaming.load()};
}

void SetSCSIWriteFlags(LSCSIWriteFlags flags) {
    gUseWrite10 = flags.useWrite10;
    gStreaming = flags.streaming;
}

BurnErrorCode ProcessSCSIWriteSectors(LProcessInterface& job, LSCSI& device, const void* buffer,
                                      uint32_t sector, uint32_t count, uint32_t sectorSize) {
    if (sectorSize != kStreamingSectorSize) gStreaming = false;
    void* data = const_cast<void*>(buffer); // the transport only reads it for a write
    const size_t length = size_t{count} * sectorSize;
    for (;;) {
        const bool write10 = gUseWrite10;
        const bool streaming = gStreaming;
        if (write10 || !streaming) {
            BurnErrorCode error = ProcessSCSIWaitUnitReady(job, device, false, 0);
            if (error.code) return error;
        }
        const LSCSICDB cdb = write10 ? CDBWrite10(sector, static_cast<uint16_t>(count))
                                     : CDBWrite12(sector, count, streaming);
        const int result =
            ProcessSCSIExecuteCommand(job, device, cdb, data, length, kWriteTimeoutMs, true);
        if (result == PROCESS_DONE) return {};
        if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
        if (TestSCSIStatus(device, 2, 0x04)) {
            BurnErrorCode error = ProcessSCSIWaitUnitReady(job, device, false, 0);
            if (error.code) return error;
            continue;
        }
        if (Is(device, 5, 0x21, 0x02) || Is(device, 5, 0x30, 0x06)) return LSCSIError(34, device);
        const bool badField = Is(device, 5, 0x24, 0x00);
        if (!badField && !Is(device, 5, 0x20, 0x00)) {
            if (!Is(device, 3, 0x57, 0x00)) return LSCSIError(32, device);
            if (device.WasCycled()) return LSCSIError(36, device);
            BurnErrorCode error = ProcessSCSICycleDrive(job, device);
            if (error.code) return error;
            continue;
        }
        if (badField && streaming) {
            gStreaming = false;
            continue;
        }
        if (write10) return LSCSIError(32, device);
        gUseWrite10 = true;
    }
}

BurnErrorCode ProcessSCSISynchronizeCache(LProcessInterface& job, LSCSI& device) {
    // A drive still busy with the last write gets a moment; the flush itself says whether
    // anything is wrong.
    BurnErrorCode error = ProcessSCSIWaitUnitReady(job, device, false, kSynchronizeWaitMs);
    if (error.code == kSCSIStopped) return error;
    const int result = ProcessSCSIExecuteCommand(job, device, CDBSynchronizeCache(), nullptr, 0,
                                                 kSynchronizeTimeoutMs, false);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Synchronize Cache");
    return ProcessSCSIWaitUnitReady(job, device, false, kSynchronizeTimeoutMs);
}

BurnErrorCode ProcessSCSICloseTrackSession(LProcessInterface& job, LSCSI& device,
                                           uint8_t closeFunction, uint16_t track,
                                           bool withProgress) {
    BurnErrorCode error = ProcessSCSISynchronizeCache(job, device);
    if (error.code) return error;
    const int result = ProcessSCSIExecuteCommand(job, device, CDBCloseTrackSession(closeFunction, track),
                                                 nullptr, 0, kCloseTimeoutMs, false);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Close Track/Session");
    return withProgress ? ProcessSCSIWaitUnitReadyWithProgress(job, device, false, 0)
                        : ProcessSCSIWaitUnitReady(job, device, false, 0);
}

BurnErrorCode ProcessSCSIReserveTrack(LProcessInterface& job, LSCSI& device, uint32_t sectors) {
    const LSCSICDB cdb = CDBReserveTrack(std::max(sectors, kMinimumTrackSectors));
    for (;;) {
        const int result =
            ProcessSCSIExecuteCommand(job, device, cdb, nullptr, 0, kReserveTimeoutMs, false);
        if (result == PROCESS_DONE) return {};
        const bool unreadable = Is(device, 3, 0x57, 0x00) || Is(device, 3, 0x0C, 0x00);
        if (result != PROCESS_FAILED || !unreadable || device.WasCycled())
            return LSCSIResultError(result, device, "Reserve Track");
        BurnErrorCode error = ProcessSCSICycleDrive(job, device);
        if (error.code) return error;
    }
}

BurnErrorCode ProcessSCSIFormatUnit(LProcessInterface& job, LSCSI& device, const SFormat& format) {
    uint8_t list[SFormat::kSize];
    format.Encode(list);
    const int result = ProcessSCSIExecuteCommand(job, device, CDBFormatUnit(), list, sizeof list,
                                                 kFormatTimeoutMs, true);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Format Unit");
    return {};
}

BurnErrorCode ProcessSCSIBlank(LProcessInterface& job, LSCSI& device, uint8_t blankingType,
                               uint32_t start) {
    for (;;) {
        const int result = ProcessSCSIExecuteCommand(job, device, CDBBlank(blankingType, start),
                                                     nullptr, 0, kBlankTimeoutMs, false);
        if (result == PROCESS_DONE) return {};
        if (result != PROCESS_FAILED || !Is(device, 3, 0x57, 0x00) || device.WasCycled())
            return LSCSIResultError(result, device, "Blank");
        BurnErrorCode error = ProcessSCSICycleDrive(job, device);
        if (error.code) return error;
    }
}
