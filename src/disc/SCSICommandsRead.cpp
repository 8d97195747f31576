// Reading what the drive knows about itself and the disc.
#include "disc/SCSICommands.h"

#include "burn/BurnMediaTypes.h"
#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr uint32_t kInfoTimeoutMs = 5000;
constexpr uint32_t kReadTimeoutMs = 10000;
constexpr uint32_t kStructureTimeoutMs = 3000;
constexpr uint32_t kTrackInfoMinimum = 28; // the oldest drives' track information block
constexpr uint8_t kInquiryLength = 36;

// Replies that start with their own 16-bit length: read the first 4 bytes, then the length
// the drive reported (plus the length field), at most `size`.
template <typename MakeCDB>
int ReadSizedReply(LProcessInterface& job, LSCSI& device, MakeCDB make, uint8_t* reply,
                   size_t size, uint32_t timeoutMs, size_t* reported = nullptr) {
    std::fill(reply, reply + size, 0);
    int result = ProcessSCSIExecuteCommand(job, device, make(4), reply, 4, timeoutMs, false);
    if (result != PROCESS_DONE) return result;
    const size_t length = size_t{MMCGet16(reply)} + 2;
    if (reported) *reported = length;
    const size_t wanted = std::clamp<size_t>(length, 4, size);
    return ProcessSCSIExecuteCommand(job, device, make(static_cast<uint16_t>(wanted)), reply,
                                     wanted, timeoutMs, false);
}

bool IsBluRay(int media) {
    return media == MEDIA_BDROM || media == MEDIA_BDR || media == MEDIA_BDRE;
}

} // namespace

std::string GetDeviceMMCName(LSCSITransport& transport) {
    const LSCSICDB cdb = CDBInquiry(kInquiryLength);
    uint8_t reply[kInquiryLength] = {};
    LSCSICommand command{cdb.bytes, cdb.length, reply, sizeof reply, LSCSIDirection::FromDevice,
                         kInfoTimeoutMs};
    LSCSITaskResult result;
    if (!transport.Execute(command, result) || result.serviceResponse != SERVICE_TASK_COMPLETE ||
        result.taskStatus != TASK_STATUS_GOOD)
        return {};
    return DecodeInquiryName(reply, sizeof reply);
}

std::string GetDeviceMMCName(LProcessInterface& job, LSCSI& device) {
    uint8_t reply[kInquiryLength] = {};
    if (ProcessSCSIExecuteCommand(job, device, CDBInquiry(kInquiryLength), reply, sizeof reply,
                                  kInfoTimeoutMs, false) != PROCESS_DONE)
        return {};
    return DecodeInquiryName(reply, sizeof reply);
}

int ProcessSCSIReadSectors(LProcessInterface& job, LSCSI& device, void* buffer, uint32_t sector,
                           uint32_t count, uint32_t sectorSize) {
    return ProcessSCSIExecuteCommand(job, device, CDBRead10(sector, static_cast<uint16_t>(count)),
                                     buffer, size_t{count} * sectorSize, kReadTimeoutMs, false);
}

int ProcessSCSITestUnitReady(LProcessInterface& job, LSCSI& device, uint32_t timeoutMs) {
    return ProcessSCSIExecuteCommand(job, device, CDBTestUnitReady(), nullptr, 0, timeoutMs, false);
}

BurnErrorCode ProcessSCSICDReadATIP(LProcessInterface& job, LSCSI& device, ATIPInfo& atip) {
    uint8_t reply[32] = {};
    job.SetStatus("ATIP.dummy.read", kSCSIDebugStatusLine);
    int result = ProcessSCSIExecuteCommand(job, device, CDBReadATIP(4), reply, 4, kInfoTimeoutMs,
                                           false);
    if (result == PROCESS_DONE) {
        const size_t length = std::clamp<size_t>(size_t{MMCGet16(reply)} + 2, 4, sizeof reply);
        char status[40];
        std::snprintf(status, sizeof status, "ATIP.actual.read(%zu)", length);
        job.SetStatus(status, kSCSIDebugStatusLine);
        result = ProcessSCSIExecuteCommand(job, device, CDBReadATIP(static_cast<uint16_t>(length)),
                                           reply, length, kInfoTimeoutMs, false);
    }
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, nullptr);
    DecodeATIPInfo(reply, sizeof reply, atip);
    return {};
}

BurnErrorCode ProcessSCSIGetDiskInformation(LProcessInterface& job, LSCSI& device,
                                            DiskInformation& info) {
    uint8_t reply[34];
    const int result = ReadSizedReply(job, device, CDBReadDiscInformation, reply, sizeof reply,
                                      kInfoTimeoutMs);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "read disc information failed");
    DecodeDiskInformation(reply, sizeof reply, info);
    return {};
}

BurnErrorCode ProcessSCSIReadTrackInformation(LProcessInterface& job, LSCSI& device,
                                              uint32_t track, TrackInformation& info) {
    uint8_t reply[36];
    size_t reported = 0;
    auto read = [&](uint32_t number) {
        return ReadSizedReply(
            job, device, [number](uint16_t length) { return CDBReadTrackInformation(number, length); },
            reply, sizeof reply, kInfoTimeoutMs, &reported);
    };
    int result = read(track);
    if (result == PROCESS_FAILED && track == 255) result = read(1);
    if (result != PROCESS_DONE)
        return LSCSIResultError(result, device, "Read Track Information - Invalid Track");
    if (reported < kTrackInfoMinimum)
        return LSCSIError(46, device, "Read Track Information - No Data Returned");
    DecodeTrackInformation(reply, sizeof reply, info);
    return {};
}

BurnErrorCode ProcessSCSIReadDiskStructure(LProcessInterface& job, LSCSI& device, int media,
                                           uint8_t format, DVDPhysicalFormat& structure) {
    std::vector<uint8_t> reply(DVDPhysicalFormat::kSize);
    const int result = ProcessSCSIExecuteCommand(
        job, device, CDBReadDiscStructure(IsBluRay(media), format, DVDPhysicalFormat::kSize),
        reply.data(), reply.size(), kStructureTimeoutMs, false);
    if (result == PROCESS_FAILED && TestSCSIStatus(device, 3, 0x31, 0x00))
        return LSCSIError(36, device);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Read DVD structure failed");
    DecodeDVDPhysicalFormat(reply.data(), reply.size(), structure);
    return {};
}

uint32_t ProcessSCSIReadFormatCapacity(LProcessInterface& job, LSCSI& device, int media,
                                       LFormatCapacities* capacities) {
    constexpr uint32_t kNone = 0xFFFFFFFF;
    uint8_t reply[LFormatCapacities::kReplySize] = {};
    if (ProcessSCSIExecuteCommand(job, device, CDBReadFormatCapacities(sizeof reply), reply,
                                  sizeof reply, kInfoTimeoutMs, false) != PROCESS_DONE)
        return kNone;
    LFormatCapacities decoded;
    DecodeFormatCapacities(reply, sizeof reply, decoded);
    if (capacities) *capacities = decoded;
    if (decoded.currentType == CAPACITY_UNFORMATTED) return decoded.currentBlocks;
    uint32_t largest = 0;
    for (const LFormatDescriptor& descriptor : decoded.descriptors)
        if (descriptor.formatType == 0) largest = std::max(largest, descriptor.blocks);
    if (largest) return largest;
    // Sequential kinds report no full-format size: the data area of the disc structure, less
    // the run-in and run-out of the lead-in and lead-out, is what a track can take.
    const bool sequential = media == MEDIA_DVDMR || media == MEDIA_DVDMRW ||
                            media == MEDIA_DVDMR_DL || media == MEDIA_BDR;
    if (sequential) {
        DVDPhysicalFormat structure;
        if (ProcessSCSIReadDiskStructure(job, device, media, 0, structure).code == 0 &&
            structure.endSector > structure.startSector &&
            structure.endSector - structure.startSector > 609)
            return structure.endSector - structure.startSector - 607;
    } else if (decoded.currentBlocks > 608) {
        return decoded.currentBlocks - 608;
    }
    return kNone;
}

uint32_t ProcessSCSIReadUsedCapacity(LProcessInterface& job, LSCSI& device, int media) {
    constexpr uint32_t kSectorSize = 2048;
    std::vector<uint8_t> sector(kSectorSize);
    if (ProcessSCSIReadSectors(job, device, sector.data(), 16, 1, kSectorSize) == PROCESS_DONE) {
        if (const uint32_t size = DecodeISOVolumeSize(sector.data(), sector.size())) return size;
    }
    if (ProcessSCSIReadSectors(job, device, sector.data(), 64, 1, kSectorSize) == PROCESS_DONE) {
        if (const uint32_t size = DecodeUDFIntegritySize(sector.data(), sector.size())) return size;
    }
    if (media == MEDIA_DVDMRW || (media >= MEDIA_DVDPRW && media <= MEDIA_DVDROM)) {
        DVDPhysicalFormat structure;
        if (ProcessSCSIReadDiskStructure(job, device, media, 0, structure).code == 0 &&
            structure.endSector >= structure.startSector)
            return structure.endSector - structure.startSector + 1;
    }
    uint8_t capacity[8] = {};
    if (ProcessSCSIExecuteCommand(job, device, CDBReadCapacity(), capacity, sizeof capacity,
                                  kInfoTimeoutMs, false) != PROCESS_DONE)
        return 0;
    return DecodeReadCapacity(capacity, sizeof capacity);
}

BurnErrorCode ProcessSCSIGetConfiguration(LProcessInterface& job, LSCSI& device,
                                          uint16_t feature, std::vector<uint8_t>& reply,
                                          size_t wanted) {
    const size_t length = std::min<size_t>(8 + wanted, 0xFFFF);
    reply.assign(length, 0);
    const int result = ProcessSCSIExecuteCommand(
        job, device, CDBGetConfiguration(feature, static_cast<uint16_t>(length)), reply.data(),
        length, kInfoTimeoutMs, false);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Get configuration failed");
    return {};
}

BurnErrorCode ProcessSCSIGetFeatureHeader(LProcessInterface& job, LSCSI& device,
                                          DriveFeatureHeader& header) {
    std::vector<uint8_t> reply;
    BurnErrorCode error = ProcessSCSIGetConfiguration(job, device, 0x0001, reply, 12);
    if (error.code == 0) DecodeFeatureHeader(reply.data(), reply.size(), header);
    return error;
}

bool ProcessSCSIHasFeature(LProcessInterface& job, LSCSI& device, uint16_t feature, bool* current) {
    std::vector<uint8_t> reply;
    LFeatureDescriptor descriptor;
    const bool found = ProcessSCSIGetConfiguration(job, device, feature, reply, 64).code == 0 &&
                       FindFeature(reply.data(), reply.size(), feature, descriptor);
    if (current) *current = found && descriptor.current;
    return found;
}
