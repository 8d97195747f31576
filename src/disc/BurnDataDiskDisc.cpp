// The data disc job's path to a disc in the drive.
#include "disc/BurnDataDiskDrive.h"
#include "disc/BurnDataDiskSteps.h"
#include "disc/BurnStrategies.h"
#include "disc/FormatText.h"
#include "disc/HybridDataDisk.h"
#include "disc/SectorTargets.h"

#include <algorithm>

namespace {

constexpr uint32_t kVerifyFirstWaitMs = 60000;
constexpr uint32_t kVerifyMechanismWaitMs = 60000;
constexpr uint32_t kVerifyReadyTryMs = 40000;
// The room the file systems take besides the files, for the size an erase is told of.
constexpr uint64_t kFileSystemAllowance = 4000000;

bool Written(const BurnErrorCode& error) {
    return error.code == 0 || error.code == 41;
}

// The image's size in sectors as far as it is known before the build ends.
uint32_t EstimatedSectors(LAbstractFileSystem& compilation) {
    uint64_t bytes = 0;
    compilation.ForEachItem([&bytes](LAbstractBurnFile& item) {
        if (!item.folder) bytes += (item.size + kSectorSize - 1) / kSectorSize * kSectorSize;
    });
    return static_cast<uint32_t>(std::min<uint64_t>((bytes + kFileSystemAllowance + 2047) / 2048,
                                                    0xFFFFFFFFu));
}

// Where the image goes: the next writable address of the disc's last track when the drive
// names one, else sector 0.
void FindWriteStart(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                    const DiskInformation& info) {
    job.startSector = 0;
    job.track = std::max<uint16_t>(1, info.lastTrackInLastSession);
    if (info.lastTrackInLastSession == 0) return;
    TrackInformation track;
    if (ProcessSCSIReadTrackInformation(progress, device, info.lastTrackInLastSession, track).code == 0 &&
        track.nextWritableValid)
        job.startSector = track.nextWritable;
}

// Waits until the drive holds a readable disc again after the burn, closing the tray when the
// job ejected it, and asking for the disc while there is none.
BurnErrorCode WaitForDiscToVerify(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device) {
    progress.SetProgress(0);
    progress.SetStatus("Verifying the burn", 0);
    progress.SetStatus("Please close the drive if it stays open", 1);
    // A drive busy with the end of the burn gets its time; an open tray (no disc) ends the wait
    // at once, as the tray is closed next.
    BurnErrorCode error = ProcessSCSIWaitUnitReady(progress, device, true, kVerifyFirstWaitMs);
    if (error.code == kSCSIStopped) return error;
    if (ProcessSCSIWaitMechanismReady(progress, device, kVerifyMechanismWaitMs).code == kSCSIStopped)
        return BurnErrorCode(kSCSIStopped);
    if (job.settings.cdLoadEject && ProcessSCSILoad(progress, device).code == kSCSIStopped)
        return BurnErrorCode(kSCSIStopped);
    if (ProcessSCSIWaitMechanismReady(progress, device, kVerifyMechanismWaitMs).code == kSCSIStopped)
        return BurnErrorCode(kSCSIStopped);
    bool asked = false;
    for (;;) {
        error = ProcessSCSIWaitUnitReady(progress, device, true, kVerifyReadyTryMs);
        if (error.code == 0 || error.code == kSCSIStopped) return error;
        if (error.code != 14 && error.code != 44) return error;
        progress.SetStatus("No disk in drive please insert a disk", 1);
        // The tray comes out once, for the disc to be put back.
        if (error.code == 14 && !asked) ProcessSCSIEject(progress, device);
        asked = asked || error.code == 14;
        if (progress.ProcessWait(kVerifyReadyTryMs / 40)) return BurnErrorCode(kSCSIStopped);
    }
}

BurnErrorCode VerifyDisc(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                         LHybridDataDisk& builder) {
    BurnErrorCode error = WaitForDiscToVerify(progress, job, device);
    if (error.code) return error;
    progress.SetStatus("Please wait...", 1);
    LDiscVerifyTarget target(progress, device, job.startSector, builder.SectorsPerWrite());
    return builder.BurnCompilation(progress, target);
}

// Checks that the image fits the disc and sets the speed for it; error 1 with the message when
// it does not fit.
BurnErrorCode CheckCapacityAndSpeed(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                                    const DiskInformation& info, const LHybridDataDisk& builder) {
    if (job.settings.overburn) return {};
    uint32_t capacity = 0;
    BurnErrorCode error = ProcessSCSIGetWritableCapacity(progress, device, info, job.media, capacity);
    if (error.code) return error;
    if (builder.SectorCount() > capacity) {
        char media[32];
        const std::string text = LFormatText(
            "The %s has a capacity of %4.2fMb and you are trying to write %4.2fMb. Please insert a "
            "larger capacity disk or try fewer files.",
            GetMediaTypeString(job.media, media), capacity / 512.0, builder.SectorCount() / 512.0);
        ShowBurnDataDiskError(progress, job, text);
        return BurnErrorCode(1);
    }
    SetJobWriteSpeed(progress, job, device, job.capabilities, job.startSector + builder.LastSector());
    return {};
}

LProcessResult Finish(LProcessInterface& progress, LBurnDataDisk& job, const BurnErrorCode& error,
                      bool writing) {
    if (error.code == 0) return PROCESS_DONE;
    // A stop before writing; a refusal shown to the user with code 1 is a failure.
    if (error.code == 1 && !writing && job.errorText.empty()) {
        job.error = error;
        return PROCESS_STOPPED;
    }
    // A failure whose text was shown already keeps it; the others are described.
    job.error = error;
    if (!job.errorText.empty()) return PROCESS_FAILED;
    return FailBurnDataDisk(progress, job, error);
}

} // namespace

LProcessResult BurnToDisc(LProcessInterface& progress, LBurnDataDisk& job, const std::string& boot) {
    if (progress.IsToStop()) return PROCESS_STOPPED;
    progress.SetProgressIndeterminateOn();
    LSCSI device;
    DiskInformation info;
    BurnErrorCode error = ProcessCheckDriveAndDisk(progress, job, device, info, job.capabilities);
    if (error.code) return Finish(progress, job, error, false);

    LHybridDataDisk builder(job.compilation, job.project, job.media, job.sourceImage, boot);
    FindWriteStart(progress, job, device, info);
    if (job.sourceImage.empty()) builder.Start(LHybridDataDisk::kBuildPriority);
    const uint32_t estimate =
        job.sourceImage.empty() ? EstimatedSectors(job.compilation) : 0;
    error = ProcessEraseDiskIfNeeded(progress, job, device, info, estimate, job.capabilities);
    if (error.code) {
        builder.StopThreadNow();
        return Finish(progress, job, error, false);
    }
    if (!RunImageBuilder(progress, job, builder)) return BuilderResult(progress, job, builder);
    error = CheckCapacityAndSpeed(progress, job, device, info, builder);
    if (error.code) return Finish(progress, job, error, false);

    progress.SetStatus("Writing to Disk", 0);
    progress.SetStatus("Please wait...", 1);
    progress.SetProgressIndeterminateOff();
    progress.SetProgress(0);
    if (progress.IsToStop()) return PROCESS_STOPPED;
    error = RunBurnStrategy(progress, job, device, builder);
    if (Written(error)) {
        const BurnErrorCode synchronized = ProcessSCSISynchronizeCache(progress, device);
        if (synchronized.code) error = synchronized;
    }
    if (Written(error) && job.settings.cdLoadEject) ProcessSCSIEject(progress, device);
    if (Written(error) && job.settings.verifyBurn) {
        const BurnErrorCode verified = VerifyDisc(progress, job, device, builder);
        if (!Written(verified)) error = verified;
    }
    return Finish(progress, job, error, true);
}
