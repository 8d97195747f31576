// Mode pages: reading and setting them, the write parameters and the write cache.
#include "disc/SCSICommands.h"

#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"

#include <algorithm>

namespace {

constexpr uint32_t kModeSenseTimeoutMs = 5000;
constexpr uint32_t kModeSelectTimeoutMs = 3000;
constexpr size_t kModeHeaderSize = 8;
constexpr uint8_t kCachingPage = 0x08;
constexpr uint8_t kWriteCacheEnable = 0x04;

} // namespace

int ProcessSCSIReadModePage(LProcessInterface& job, LSCSI& device, uint8_t pageCode,
                            std::vector<uint8_t>& page, size_t length) {
    page.clear();
    uint8_t header[kModeHeaderSize] = {};
    int result = ProcessSCSIExecuteCommand(job, device, CDBModeSense(pageCode, sizeof header),
                                           header, sizeof header, kModeSenseTimeoutMs, false);
    if (result != PROCESS_DONE) return result;
    const size_t total = std::min<size_t>(size_t{MMCGet16(header)} + 2,
                                          kModeHeaderSize + MMCGet16(header + 6) + length);
    if (total <= kModeHeaderSize) return PROCESS_DONE;
    std::vector<uint8_t> reply(total);
    result = ProcessSCSIExecuteCommand(job, device,
                                       CDBModeSense(pageCode, static_cast<uint16_t>(total)),
                                       reply.data(), total, kModeSenseTimeoutMs, false);
    if (result != PROCESS_DONE) return result;
    const size_t start = kModeHeaderSize + MMCGet16(&reply[6]);
    if (start + 2 > reply.size() || (reply[start] & 0x3F) != (pageCode & 0x3F)) return PROCESS_FAILED;
    const size_t pageSize = std::min({size_t{reply[start + 1]} + 2, reply.size() - start, length});
    page.assign(reply.begin() + static_cast<ptrdiff_t>(start),
                reply.begin() + static_cast<ptrdiff_t>(start + pageSize));
    return PROCESS_DONE;
}

int ProcessSCSISetModePage(LProcessInterface& job, LSCSI& device, const uint8_t* page,
                           size_t length) {
    uint8_t header[kModeHeaderSize] = {};
    int result = ProcessSCSIExecuteCommand(job, device, CDBModeSense(page[0], sizeof header),
                                           header, sizeof header, kModeSenseTimeoutMs, false);
    if (result != PROCESS_DONE) return result;
    std::vector<uint8_t> list(kModeHeaderSize + length);
    list[2] = header[2]; // the medium type; everything else of the header is 0 when selecting
    std::copy(page, page + length, list.begin() + kModeHeaderSize);
    list[kModeHeaderSize] &= 0x3F; // the "parameters savable" bit is reserved in MODE SELECT
    return ProcessSCSIExecuteCommand(job, device, CDBModeSelect(static_cast<uint16_t>(list.size())),
                                     list.data(), list.size(), kModeSelectTimeoutMs, true);
}

BurnErrorCode ProcessSCSISetWriteMode(LProcessInterface& job, LSCSI& device,
                                      const WriteParamModePage& parameters) {
    uint8_t page[WriteParamModePage::kSize];
    parameters.Encode(page);
    const int result = ProcessSCSISetModePage(job, device, page, sizeof page);
    if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
    if (result != PROCESS_DONE) return LSCSIError(33, device, "Set Write Mode");
    return {};
}

BurnErrorCode ProcessSCSISetCachingMode(LProcessInterface& job, LSCSI& device) {
    std::vector<uint8_t> page;
    int result = ProcessSCSIReadModePage(job, device, kCachingPage, page, 20);
    if (result == PROCESS_DONE && page.size() < 3) result = PROCESS_FAILED;
    if (result != PROCESS_DONE)
        return LSCSIResultError(result, device, "Caching page not implemented");
    page[2] |= kWriteCacheEnable;
    result = ProcessSCSISetModePage(job, device, page.data(), page.size());
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Setting caching failed");
    return {};
}
