#include "disc/BurnDataDiskDrive.h"

#include "burn/BurnMediaTypes.h"
#include "disc/BufferVector.h"
#include "disc/BurnDataDisk.h"
#include "disc/BurnDataDiskSteps.h"
#include "disc/DiscCheck.h"
#include "disc/FormatText.h"

#include <chrono>
#include <vector>

namespace {

constexpr uint32_t kFirstReadyMs = 1000;
constexpr uint32_t kReadyTryMs = 2000;
constexpr uint32_t kReadyWaitMs = 60000;
constexpr uint32_t kReadyPollMs = 50;
constexpr uint32_t kMechanismWaitMs = 60000;
constexpr uint32_t kBlankWaitMs = 600000;
constexpr uint8_t kWriteParametersPage = 0x05;
constexpr size_t kWriteParametersSize = 56;
// Zeros written over a formatted disc's start: past the ISO descriptors (16), the UDF
// integrity sequence (64) and the UDF anchor (256), so the old file systems are gone.
constexpr uint32_t kWipeSectors = 288;

BurnErrorCode Stopped() {
    return BurnErrorCode(kSCSIStopped);
}

std::string MediaName(int media) {
    char name[32];
    return GetMediaTypeString(media, name);
}

// The project for the media's kind when the project is one for any disc.
int SettleProject(int project, int media) {
    int kind = 0;
    switch (MediaName(media)[0]) {
    case 'D': kind = 1; break;
    case 'H': kind = 2; break;
    case 'B': kind = 3; break;
    default: kind = 0; break;
    }
    static constexpr int kISO[] = {PROJECT_ISO_JOLIET_CD, PROJECT_ISO_JOLIET_DVD, PROJECT_ISO_HDDVD,
                                   PROJECT_ISO_BLURAY};
    static constexpr int kUDF[] = {PROJECT_UDF_CD, PROJECT_UDF_DVD, PROJECT_UDF_HDDVD,
                                   PROJECT_UDF_BLURAY};
    if (project == PROJECT_ISO_DISK) return kISO[kind];
    if (project == PROJECT_UDF_DISK) return kUDF[kind];
    return project;
}

bool CanWriteCategory(const DriveCapabilities& c, int category) {
    switch (category) {
    case 1:
        return c.canWriteDVDR || c.canWriteDVDRW || c.canWriteDVDPR || c.canWriteDVDPRDL ||
               c.canWriteDVDPRW || c.canWriteDVDPRWDL;
    case 2: return c.canWriteHDDVD;
    case 3: return c.canWriteBD;
    default: return c.canWriteCDR || c.canWriteCDRW;
    }
}

// The first drive error of a media kind's category: 16 (CD), 20 (loaded disk not a DVD)...
BurnErrorCodeValue CategoryError(BurnErrorCodeValue cd, int category) {
    switch (category) {
    case 1: return cd + 1;
    case 2: return cd + 2;
    case 3: return cd + 3;
    default: return cd;
    }
}

bool IsFormattedKind(int media) {
    return media == MEDIA_DVDPRW || media == MEDIA_DVDPRW_DL || media == MEDIA_BDRE ||
           media == MEDIA_HDDVDRAM || media == MEDIA_DVDRAM;
}

// The format descriptors to try, the one suited to the media first.
std::vector<LFormatDescriptor> FormatChoices(LProcessInterface& progress, LSCSI& device, int media) {
    LFormatCapacities capacities;
    ProcessSCSIReadFormatCapacity(progress, device, media, &capacities);
    const uint8_t preferred = media == MEDIA_DVDPRW || media == MEDIA_DVDPRW_DL ? 0x26
                              : media == MEDIA_BDRE                            ? 0x30
                                                                               : 0x00;
    std::vector<LFormatDescriptor> choices;
    for (const LFormatDescriptor& d : capacities.descriptors)
        if (d.formatType == preferred) choices.push_back(d);
    for (const LFormatDescriptor& d : capacities.descriptors)
        if (d.formatType != preferred) choices.push_back(d);
    if (choices.empty()) {
        // A drive that lists nothing still formats the whole disc as it is.
        LFormatDescriptor whole;
        whole.blocks = capacities.currentBlocks;
        whole.formatType = preferred;
        choices.push_back(whole);
    }
    return choices;
}

BurnErrorCode FormatDisc(LProcessInterface& progress, LSCSI& device, int media) {
    BurnErrorCode error =
        ProcessFormatUnitWithChoices(progress, device, FormatChoices(progress, device, media));
    if (error.code) return error;
    error = ProcessSCSIWaitUnitReadyWithProgress(progress, device, false, kBlankWaitMs);
    if (error.code) return error;
    const std::vector<uint8_t> zeros(16 * kSectorSize, 0);
    for (uint32_t sector = 0; sector < kWipeSectors; sector += 16) {
        error = ProcessSCSIWriteSectors(progress, device, zeros.data(), sector, 16, kSectorSize);
        if (error.code) return error;
    }
    return ProcessSCSISynchronizeCache(progress, device);
}

} // namespace

BurnErrorCode ProcessOpenDriveAndProject(LProcessInterface& progress, LBurnDataDisk& job,
                                         LSCSI& device) {
    progress.SetStatus("Opening.Drive", kSCSIDebugStatusLine);
    if (!device.OpenCDROMDrive(job.settings.cdDrive))
        return BurnErrorCode(15, device.GetOpenError().c_str());
    DriveFeatureHeader header;
    if (ProcessSCSIGetFeatureHeader(progress, device, header).code == kSCSIStopped) return Stopped();

    progress.SetStatus("Waiting.for.Drive.Ready", kSCSIDebugStatusLine);
    for (int i = 0; i < 2; ++i)
        if (ProcessSCSITestUnitReady(progress, device, kFirstReadyMs) == PROCESS_STOPPED)
            return Stopped();
    if (ProcessSCSIWaitMechanismReady(progress, device, kMechanismWaitMs).code == kSCSIStopped)
        return Stopped();
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        const int result = ProcessSCSITestUnitReady(progress, device, kReadyTryMs);
        if (result == PROCESS_DONE) break;
        if (result == PROCESS_STOPPED || progress.IsToStop()) return Stopped();
        const auto spent = std::chrono::steady_clock::now() - start;
        if (!TestSCSIStatus(device, 2, 0x04) || spent >= std::chrono::milliseconds(kReadyWaitMs)) {
            job.media = MEDIA_NO_DISK;
            return LSCSIError(14, device);
        }
        if (progress.ProcessWait(kReadyPollMs)) return Stopped();
    }

    std::vector<uint8_t> page;
    const int read = ProcessSCSIReadModePage(progress, device, kWriteParametersPage, page,
                                             kWriteParametersSize);
    if (read == PROCESS_STOPPED) return Stopped();
    if (page.empty()) return LSCSIError(43, device);

    BurnErrorCode error = ProcessSCSIGetLoadedMediaType(progress, device, job.media);
    if (error.code == kSCSIStopped) return error;
    if (error.code) return LSCSIError(14, device);
    job.project = SettleProject(job.project, job.media);
    return {};
}

BurnErrorCode ProcessCheckDriveAndDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                       LSCSI& device, DiskInformation& info,
                                       DriveCapabilities& capabilities) {
    progress.SetStatus("Checking drive and media", 1);
    BurnErrorCode error = ProcessOpenDriveAndProject(progress, job, device);
    if (error.code) return error;
    error = ProcessSCSIGetDiskInformation(progress, device, info);
    if (error.code) return error;
    error = ProcessSCSIGetDeviceCapabilities(progress, device, capabilities);
    if (error.code) return error;
    const int category = GetProjectMediaCategory(job.project);
    if (!CanWriteCategory(capabilities, category)) return BurnErrorCode(CategoryError(16, category));
    if (job.media != MEDIA_NO_DISK && !IsMediaMatchProject(job.media, job.project)) {
        char project[32];
        ShowBurnDataDiskError(progress, job, LFormatText("The disk type being burned is a %s and you have loaded a %s. "
                                      "Please insert an appropriate disk.",
                                      GetProjectTypeString(job.project, project),
                                      MediaName(job.media).c_str()));
        // A DVD project's error comes first in the table.
        static constexpr BurnErrorCodeValue kMismatch[] = {21, 20, 22, 23};
        return BurnErrorCode(kMismatch[category]);
    }
    return {};
}

bool IsDiskBlank(LProcessInterface& progress, LSCSI& device, const DiskInformation& info,
                 int media) {
    if (!IsFormattedKind(media)) return info.discStatus == DISC_EMPTY;
    if (info.discStatus == DISC_EMPTY) return true;
    std::vector<uint8_t> sector(kSectorSize);
    if (ProcessSCSIReadSectors(progress, device, sector.data(), 16, 1, kSectorSize) == PROCESS_DONE &&
        DecodeISOVolumeSize(sector.data(), sector.size()) != 0)
        return false;
    return ProcessSCSIReadSectors(progress, device, sector.data(), 64, 1, kSectorSize) != PROCESS_DONE ||
           DecodeUDFIntegritySize(sector.data(), sector.size()) == 0;
}

BurnErrorCode SetJobWriteSpeed(LProcessInterface& progress, const LBurnDataDisk& job,
                               LSCSI& device, const DriveCapabilities& capabilities,
                               uint32_t lastSector) {
    return ProcessSCSISetWriteSpeed(progress, device, job.settings.speed,
                                    capabilities.maxWriteSpeed, job.media, lastSector);
}

BurnErrorCode ProcessEraseDiskIfNeeded(LProcessInterface& progress, LBurnDataDisk& job,
                                       LSCSI& device, DiskInformation& info,
                                       uint32_t imageSectors,
                                       const DriveCapabilities& capabilities) {
    const bool blank = IsDiskBlank(progress, device, info, job.media);
    if (progress.IsToStop()) return Stopped();
    if (!blank && !info.erasable) {
        if (job.settings.cdLoadEject) ProcessSCSIEject(progress, device);
        ShowBurnDataDiskError(progress, job, LFormatText("The inserted disk is a %s and is not empty or erasable, "
                                      "please insert another disk into the drive",
                                      MediaName(job.media).c_str()));
        return BurnErrorCode(2);
    }
    if (!blank && (job.settings.eraseCDRW || job.project == kEraseProjectType)) {
        SetJobWriteSpeed(progress, job, device, capabilities, imageSectors);
        BurnErrorCode error = ProcessSCSIBlankDisk(progress, device, job.media,
                                                   job.settings.fullErase ? 0 : 1, 0);
        if (error.code == kSCSIStopped) return error;
        if (error.code) {
            ShowBurnDataDiskError(progress, job, LFormatText("%s. Please try another disk or try using a lower speed.",
                                          error.Describe().c_str()));
            BurnErrorCode erase = LSCSIError(25, device);
            erase.AddInformation(error.code, error.text, {error.senseKey, error.additionalSenseCode,
                                                          error.additionalSenseCodeQualifier});
            return erase;
        }
        error = ProcessSCSIGetDiskInformation(progress, device, info);
        if (error.code) return error;
    } else if (!blank) {
        BurnErrorCode error = ProcessSCSIGetDiskInformation(progress, device, info);
        if (error.code) return error;
        if (job.project != PROJECT_AUDIO_CD || info.discStatus != DISC_INCOMPLETE) {
            ShowBurnDataDiskError(progress, job, LFormatText("%s. To erase it, select the option \"Erase Rewritables if "
                                          "they are not blank\" and try again.",
                                          GetBurnErrorMessage(2)));
            return BurnErrorCode(2);
        }
        TrackInformation track;
        const bool audio = info.lastTrackInLastSession != 0 &&
                           ProcessSCSIReadTrackInformation(progress, device,
                                                           info.lastTrackInLastSession, track)
                                   .code == 0 &&
                           (track.trackMode & 0x04) == 0;
        if (!audio) {
            ShowBurnDataDiskError(progress, job, "You are trying to append audio tracks and the loaded disk is not an "
                              "audio CD");
            return BurnErrorCode(25);
        }
        SetJobWriteSpeed(progress, job, device, capabilities, imageSectors);
        error = ProcessSCSIBlankDisk(progress, device, job.media, 5, 0);
        if (error.code) return error;
    }
    // Neither is needed for a good burn: a drive that refuses them still writes.
    ProcessSCSISetCachingMode(progress, device);
    SetJobWriteSpeed(progress, job, device, capabilities, imageSectors);
    return progress.IsToStop() ? Stopped() : BurnErrorCode();
}

BurnErrorCode ProcessFormatUnitWithChoices(LProcessInterface& progress, LSCSI& device,
                                           const std::vector<LFormatDescriptor>& choices) {
    BurnErrorCode error;
    for (size_t i = 0; i < choices.size() && i < 2; ++i) {
        SFormat format;
        format.descriptor = choices[i];
        error = ProcessSCSIFormatUnit(progress, device, format);
        if (error.code != 46) break;
    }
    return error;
}

BurnErrorCode ProcessSCSIBlankDisk(LProcessInterface& progress, LSCSI& device, int media,
                                   uint8_t blankingType, uint32_t start) {
    progress.SetStatus(LFormatText("%s Disk", blankingType == 5 ? "Opening" : "Erasing").c_str(), 0);
    progress.SetStatus("Please wait...", 1);
    if (media == MEDIA_DVDPRW || media == MEDIA_DVDPRW_DL || media == MEDIA_BDRE ||
        media == MEDIA_HDDVDRAM)
        return FormatDisc(progress, device, media);
    BurnErrorCode error = ProcessSCSIBlank(progress, device, blankingType, start);
    if (error.code) return error;
    return ProcessSCSIWaitUnitReadyWithProgress(progress, device, false, kBlankWaitMs);
}
