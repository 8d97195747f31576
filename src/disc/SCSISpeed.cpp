// Write speeds: what the drive offers and setting one.
#include "disc/SCSICommands.h"

#include "burn/BurnMediaTypes.h"
#include "disc/SCSICDB.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr uint32_t kSpeedTimeoutMs = 5000;
constexpr uint16_t kFeatureCDRWCAVWrite = 0x0027;
constexpr uint16_t kSpeedFastest = 0xFFFF;

// Kilobytes per second of "1x" on each kind of disc.
constexpr uint32_t kCDSpeedUnit = 177;
constexpr uint32_t kDVDSpeedUnit = 1385;
constexpr uint32_t kBDSpeedUnit = 4495;

uint32_t SpeedUnit(int media) {
    switch (media) {
    case MEDIA_DVDMR:
    case MEDIA_DVDMRW:
    case MEDIA_DVDMR_DL:
    case MEDIA_DVDPR:
    case MEDIA_DVDPR_DL:
    case MEDIA_DVDPRW:
    case MEDIA_DVDPRW_DL:
        return kDVDSpeedUnit;
    case MEDIA_HDDVDR:
    case MEDIA_HDDVDRAM:
    case MEDIA_BDR:
    case MEDIA_BDRE:
        return kBDSpeedUnit;
    default:
        return kCDSpeedUnit;
    }
}

BurnErrorCode SetCDSpeed(LProcessInterface& job, LSCSI& device, double factor,
                         uint32_t maxWriteSpeed) {
    bool cav = false;
    ProcessSCSIHasFeature(job, device, kFeatureCDRWCAVWrite, &cav);
    uint32_t speed = kSpeedFastest;
    if (factor > 0) {
        speed = static_cast<uint32_t>(std::lround(factor * kCDSpeedUnit));
        if (maxWriteSpeed) speed = std::min(speed, maxWriteSpeed);
        speed = std::min<uint32_t>(speed, kSpeedFastest);
    }
    const int result = ProcessSCSIExecuteCommand(
        job, device, CDBSetCDSpeed(cav, kSpeedFastest, static_cast<uint16_t>(speed)), nullptr, 0,
        kSpeedTimeoutMs, false);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Set CD Speed failed");
    return ProcessSCSIWaitUnitReady(job, device, false, 0);
}

} // namespace

int ProcessSCSIGetWriteSpeeds(LProcessInterface& job, LSCSI& device, LWriteSpeeds& speeds) {
    uint8_t reply[8 + 20 * 16] = {};
    int result = ProcessSCSIExecuteCommand(job, device, CDBGetPerformance(true), reply,
                                           sizeof reply, kSpeedTimeoutMs, false);
    if (result == PROCESS_STOPPED) return result;
    if (result == PROCESS_DONE && DecodeWriteSpeeds(reply, sizeof reply, true, speeds))
        return PROCESS_DONE;
    std::fill(std::begin(reply), std::end(reply), 0);
    result = ProcessSCSIExecuteCommand(job, device, CDBGetPerformance(false), reply, sizeof reply,
                                       kSpeedTimeoutMs, false);
    if (result != PROCESS_DONE) return result;
    return DecodeWriteSpeeds(reply, sizeof reply, false, speeds) ? PROCESS_DONE : PROCESS_FAILED;
}

BurnErrorCode ProcessSCSISetWriteSpeed(LProcessInterface& job, LSCSI& device, double factor,
                                       uint32_t maxWriteSpeed, int media, uint32_t endSector) {
    if (media == MEDIA_CDR || media == MEDIA_CDRW)
        return SetCDSpeed(job, device, factor, maxWriteSpeed);

    BurnErrorCode error = ProcessSCSIWaitUnitReady(job, device, false, 0);
    if (error.code) return error;
    LWriteSpeeds speeds;
    const int result = ProcessSCSIGetWriteSpeeds(job, device, speeds);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, "Set CD Speed failed");
    uint32_t speed = factor > 0 ? static_cast<uint32_t>(std::lround(factor * SpeedUnit(media))) : 0;
    if (speed == 0 || speed > speeds.maxWriteSpeed) speed = speeds.maxWriteSpeed;

    LStreamingDescriptor descriptor;
    descriptor.endSector = endSector;
    descriptor.readSize = speeds.maxReadSpeed;
    descriptor.readTime = 1000;
    descriptor.writeSize = speed;
    descriptor.writeTime = 1000;
    uint8_t list[LStreamingDescriptor::kSize];
    descriptor.Encode(list);
    // Drives that cannot stream at a chosen speed write at their own: not worth failing for.
    if (ProcessSCSIExecuteCommand(job, device, CDBSetStreaming(sizeof list), list, sizeof list,
                                  kSpeedTimeoutMs, true) == PROCESS_STOPPED)
        return BurnErrorCode(kSCSIStopped);
    return {};
}
