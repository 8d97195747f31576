#include "disc/BurnStrategies.h"

#include "burn/BurnMediaTypes.h"
#include "disc/BurnDataDisk.h"
#include "disc/BurnDataDiskDrive.h"
#include "disc/HybridDataDisk.h"
#include "disc/SCSICommands.h"
#include "disc/SectorTargets.h"

#include <vector>

namespace {

constexpr uint8_t kWriteParametersPage = 0x05;
constexpr uint8_t kBlockTypeMode1 = 8;
constexpr uint16_t kAudioPause = 150;
constexpr uint8_t kCloseStopFormat = 0;
constexpr uint8_t kCloseTrack = 1;
constexpr uint8_t kCloseSession = 2;
constexpr uint8_t kCloseFinalize = 3;
constexpr uint8_t kCloseFinalizePlusR = 6;
constexpr uint8_t kFormatComplete = 3;

// The drive's write parameters with the strategy's changes; error 33 when they are refused.
BurnErrorCode SetWriteParameters(LProcessInterface& progress, LSCSI& device, int writeType,
                                 int trackMode) {
    std::vector<uint8_t> page;
    if (ProcessSCSIReadModePage(progress, device, kWriteParametersPage, page,
                                WriteParamModePage::kSize) == PROCESS_STOPPED)
        return BurnErrorCode(kSCSIStopped);
    WriteParamModePage parameters;
    DecodeWriteParamModePage(page.data(), page.size(), parameters);
    parameters.bufferUnderrunFree = true;
    parameters.testWrite = false;
    if (writeType >= 0) parameters.writeType = static_cast<uint8_t>(writeType);
    if (trackMode >= 0) parameters.trackMode = static_cast<uint8_t>(trackMode);
    parameters.multiSession = 0;
    parameters.dataBlockType = kBlockTypeMode1;
    parameters.audioPause = kAudioPause;
    return ProcessSCSISetWriteMode(progress, device, parameters);
}

// The image's sectors as a reservation: at least 300, in whole runs of 16 on DVDs.
uint32_t ReserveSectors(const LHybridDataDisk& builder, uint32_t unit) {
    return (builder.SectorCount() + unit - 1) / unit * unit;
}

// Writes the image; a file that could not be read does not stop the strategy.
BurnErrorCode WriteImage(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                         LHybridDataDisk& builder, BurnErrorCode& written) {
    BurnErrorCode error = ProcessSCSIWaitUnitReady(progress, device, false, 0);
    if (error.code) return error;
    LDiscWriteTarget target(progress, device, job.startSector);
    written = builder.BurnCompilation(progress, target);
    return written.code == 41 ? BurnErrorCode() : written;
}

// Runs the steps in turn until one fails; the error of the write (41) when all went well.
class Steps {
public:
    Steps(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device, LHybridDataDisk& builder)
        : progress_(progress), job_(job), device_(device), builder_(builder) {}

    Steps& Parameters(int writeType, int trackMode) {
        return Run([&] { return SetWriteParameters(progress_, device_, writeType, trackMode); });
    }
    Steps& Reserve(uint32_t unit) {
        return Run([&] { return ProcessSCSIReserveTrack(progress_, device_, ReserveSectors(builder_, unit)); });
    }
    Steps& Write() {
        return Run([&] { return WriteImage(progress_, job_, device_, builder_, written_); });
    }
    Steps& Status(const char* text) {
        if (!error_.code) progress_.SetStatus(text, 1);
        return *this;
    }
    Steps& Synchronize() {
        return Run([&] { return ProcessSCSISynchronizeCache(progress_, device_); });
    }
    Steps& Close(uint8_t function, bool withProgress = false) {
        const uint16_t track = function == kCloseTrack ? job_.track : 0;
        return Run([&] { return ProcessSCSICloseTrackSession(progress_, device_, function, track, withProgress); });
    }
    template <typename F> Steps& Run(F step) {
        if (!error_.code) error_ = step();
        return *this;
    }
    BurnErrorCode Result() const { return error_.code ? error_ : written_; }

private:
    LProcessInterface& progress_;
    LBurnDataDisk& job_;
    LSCSI& device_;
    LHybridDataDisk& builder_;
    BurnErrorCode error_;
    BurnErrorCode written_;
};

} // namespace

BurnErrorCode ProcessBurnCDR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                             LHybridDataDisk& builder) {
    return Steps(progress, job, device, builder)
        .Parameters(WRITE_TYPE_TRACK_AT_ONCE, 6)
        .Reserve(1)
        .Write()
        .Status("Finalizing this Disk")
        .Synchronize()
        .Close(kCloseTrack)
        .Close(kCloseSession, true)
        .Result();
}

BurnErrorCode ProcessBurnDVDMR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                               LHybridDataDisk& builder) {
    return Steps(progress, job, device, builder)
        .Parameters(WRITE_TYPE_SESSION_AT_ONCE, 5)
        .Reserve(16)
        .Write()
        .Status("Finalizing this Disk")
        .Synchronize()
        .Close(kCloseTrack, true)
        .Close(kCloseSession)
        .Result();
}

BurnErrorCode ProcessBurnDVDMRW(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                                LHybridDataDisk& builder) {
    Steps steps(progress, job, device, builder);
    // A drive that cannot write DVD-RW sequentially writes it in place, as it is formatted.
    if (job.capabilities.canWriteDVDRW) steps.Parameters(-1, 5).Reserve(16);
    return steps.Write()
        .Status("Finalizing this Disk")
        .Synchronize()
        .Close(kCloseTrack)
        .Close(kCloseFinalize)
        .Result();
}

BurnErrorCode ProcessBurnPR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                            LHybridDataDisk& builder) {
    return Steps(progress, job, device, builder)
        .Reserve(16)
        .Write()
        .Status("Closing this Disk")
        .Synchronize()
        .Close(kCloseTrack)
        .Close(kCloseSession)
        .Status("Finalizing this Disk")
        .Close(kCloseFinalizePlusR)
        .Result();
}

BurnErrorCode ProcessBurnPRW(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                             LHybridDataDisk& builder) {
    Steps steps(progress, job, device, builder);
    steps.Write().Synchronize();
    return steps
        .Run([&] {
            DiskInformation info;
            BurnErrorCode error = ProcessSCSIGetDiskInformation(progress, device, info);
            if (error.code || info.backgroundFormat >= kFormatComplete) return error;
            error = ProcessSCSICloseTrackSession(progress, device, kCloseStopFormat, 0, true);
            if (error.code && error.code != kSCSIStopped)
                error = ProcessSCSICloseTrackSession(progress, device, kCloseFinalize, 0, false);
            return error;
        })
        .Result();
}

BurnErrorCode ProcessBurnHDDVDRAM(LProcessInterface& progress, LBurnDataDisk& job,
                                  LSCSI& device, LHybridDataDisk& builder) {
    Steps steps(progress, job, device, builder);
    steps.Parameters(-1, -1).Status("Creating new session").Run([&] {
        LFormatCapacities capacities;
        ProcessSCSIReadFormatCapacity(progress, device, job.media, &capacities);
        if (capacities.descriptors.empty() || capacities.descriptors[0].blocks < builder.SectorCount())
            return LSCSIError(28, device);
        BurnErrorCode error = ProcessFormatUnitWithChoices(progress, device, capacities.descriptors);
        if (error.code) return error;
        return ProcessSCSIWaitUnitReadyWithProgress(progress, device, false, 0);
    });
    return steps.Parameters(-1, 5)
        .Status("Please wait...")
        .Write()
        .Synchronize()
        .Status("Closing this Disk")
        .Close(kCloseTrack)
        .Close(kCloseSession)
        .Result();
}

BurnErrorCode RunBurnStrategy(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                              LHybridDataDisk& builder) {
    switch (job.media) {
    case MEDIA_CDR:
    case MEDIA_CDRW:
        return ProcessBurnCDR(progress, job, device, builder);
    case MEDIA_DVDMR:
    case MEDIA_DVDMR_DL:
        return ProcessBurnDVDMR(progress, job, device, builder);
    case MEDIA_DVDMRW:
        return ProcessBurnDVDMRW(progress, job, device, builder);
    case MEDIA_DVDPR:
    case MEDIA_DVDPR_DL:
    case MEDIA_HDDVDR:
    case MEDIA_BDR:
        return ProcessBurnPR(progress, job, device, builder);
    case MEDIA_DVDPRW:
    case MEDIA_DVDPRW_DL:
    case MEDIA_BDRE:
        return ProcessBurnPRW(progress, job, device, builder);
    case MEDIA_HDDVDRAM:
        return ProcessBurnHDDVDRAM(progress, job, device, builder);
    default:
        return {};
    }
}
