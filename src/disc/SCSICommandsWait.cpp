// Waiting for the drive and its mechanism, the tray, and cycling a drive that lost the disc.
#include "disc/SCSICommands.h"

#include "disc/SCSICDB.h"
#include "disc/SCSISense.h"

#include <algorithm>

namespace {

constexpr uint32_t kUnitReadyTryMs = 2000;
constexpr uint32_t kUnitReadyPollMs = 100;
constexpr uint32_t kMechanismTryMs = 2000;
constexpr uint32_t kMechanismPollMs = 1000;
constexpr uint32_t kTrayTimeoutMs = 60000;
constexpr uint32_t kMediumRemovalTimeoutMs = 5000;
constexpr uint32_t kCycleWaitMs = 60000;

constexpr uint16_t kFeatureRemovableMedium = 0x0003;
constexpr uint16_t kFeatureEmbeddedChanger = 0x0102;

bool IsSense(LSenseBytes sense, uint8_t key, uint8_t asc) {
    return sense.key == key && sense.code == asc;
}

BurnErrorCode WaitUnitReady(LProcessInterface& job, LSCSI& device, bool failWithoutMedium,
                            uint32_t timeoutMs, bool useTrackInformation, bool withProgress) {
    uint32_t spent = 0;
    for (;;) {
        uint32_t waited = 0;
        uint8_t track[36];
        const int result =
            useTrackInformation
                ? ProcessSCSIExecuteCommand(job, device, CDBReadTrackInformation(255, sizeof track),
                                            track, sizeof track, kUnitReadyTryMs, false, &waited)
                : ProcessSCSIExecuteCommand(job, device, CDBTestUnitReady(), nullptr, 0,
                                            kUnitReadyTryMs, false, &waited);
        if (result == PROCESS_DONE) return {};
        if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
        const LSenseBytes sense = device.GetSense();
        const bool noMedium = IsSense(sense, 2, 0x3A);
        if (noMedium && failWithoutMedium) return LSCSIError(14, device);
        // Any other complaint means the drive is there and answering: let the next command
        // say what is wrong.
        if (!IsSense(sense, 6, 0x28) && !IsSense(sense, 2, 0x04) && !noMedium &&
            !IsSense(sense, 2, 0x00))
            return {};
        if (withProgress) {
            double fraction = 0;
            if (LSCSISenseProgress(device.GetSenseData(), fraction))
                job.SetProgress(fraction);
            else if (timeoutMs)
                job.SetProgress(std::min(1.0, double(spent) / timeoutMs));
        }
        if (job.ProcessWait(kUnitReadyPollMs)) return BurnErrorCode(kSCSIStopped);
        spent += kUnitReadyPollMs + waited;
        if (timeoutMs && spent >= timeoutMs) {
            if ((IsSense(sense, 2, 0x04) && sense.qualifier == 0x01) ||
                (IsSense(sense, 6, 0x28) && sense.qualifier == 0x00))
                return LSCSIError(44, device);
            if (noMedium) return LSCSIError(14, device);
            return LSCSIError(46, device, "Wait unit ready failed");
        }
    }
}

BurnErrorCode StartStopUnit(LProcessInterface& job, LSCSI& device, bool load, const char* text) {
    const int result = ProcessSCSIExecuteCommand(job, device, CDBStartStopUnit(true, load), nullptr,
                                                 0, kTrayTimeoutMs, false);
    if (result != PROCESS_DONE) return LSCSIResultError(result, device, text);
    return {};
}

} // namespace

BurnErrorCode ProcessSCSIWaitUnitReady(LProcessInterface& job, LSCSI& device,
                                       bool failWithoutMedium, uint32_t timeoutMs,
                                       bool useTrackInformation) {
    return WaitUnitReady(job, device, failWithoutMedium, timeoutMs, useTrackInformation, false);
}

BurnErrorCode ProcessSCSIWaitUnitReadyWithProgress(LProcessInterface& job, LSCSI& device,
                                                   bool failWithoutMedium, uint32_t timeoutMs,
                                                   bool useTrackInformation) {
    return WaitUnitReady(job, device, failWithoutMedium, timeoutMs, useTrackInformation, true);
}

BurnErrorCode ProcessSCSIWaitMechanismReady(LProcessInterface& job, LSCSI& device,
                                            uint32_t timeoutMs) {
    if (!ProcessSCSIHasFeature(job, device, kFeatureRemovableMedium) &&
        !ProcessSCSIHasFeature(job, device, kFeatureEmbeddedChanger))
        return job.IsToStop() ? BurnErrorCode(kSCSIStopped) : BurnErrorCode();
    for (uint32_t spent = 0;;) {
        uint8_t status[8] = {};
        const int result = ProcessSCSIExecuteCommand(job, device, CDBMechanismStatus(sizeof status),
                                                     status, sizeof status, kMechanismTryMs, false);
        if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
        if (result != PROCESS_DONE) return {};
        const uint8_t state = DecodeChangerState(status, sizeof status);
        if (state == 0 || state == 3) return {};
        if (job.ProcessWait(kMechanismPollMs)) return BurnErrorCode(kSCSIStopped);
        spent += kMechanismPollMs;
        if (timeoutMs && spent >= timeoutMs)
            return LSCSIError(46, device, "Wait mechanism ready failed");
    }
}

BurnErrorCode ProcessSCSIEject(LProcessInterface& job, LSCSI& device) {
    // A drive that never locked its tray may refuse to unlock it; the eject still decides.
    const int result = ProcessSCSIExecuteCommand(job, device, CDBPreventAllowMediumRemoval(false),
                                                 nullptr, 0, kMediumRemovalTimeoutMs, false);
    if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
    return StartStopUnit(job, device, false, "Eject failed");
}

BurnErrorCode ProcessSCSILoad(LProcessInterface& job, LSCSI& device) {
    return StartStopUnit(job, device, true, "Load failed");
}

BurnErrorCode ProcessSCSICycleDrive(LProcessInterface& job, LSCSI& device) {
    device.SetCycled();
    BurnErrorCode error = ProcessSCSIEject(job, device);
    if (error.code) return error;
    // With the tray out the drive reports no disc: that is the eject finished.
    error = ProcessSCSIWaitUnitReady(job, device, true, kCycleWaitMs);
    if (error.code && error.code != 14) return error;
    error = ProcessSCSIWaitMechanismReady(job, device, kCycleWaitMs);
    if (error.code) return error;
    error = ProcessSCSILoad(job, device);
    if (error.code) return error;
    error = ProcessSCSIWaitUnitReady(job, device, false, kCycleWaitMs);
    if (error.code) return error;
    return ProcessSCSIWaitUnitReady(job, device, false, 0);
}
