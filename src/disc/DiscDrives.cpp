#include "disc/DiscDrives.h"

#include "burn/DiskBurnSettings.h"
#include "disc/DiscCheck.h"
#include "disc/DiskEventListener.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "platform/Settings.h"
#include "sound/SoundTime.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

void CopyText(char* out, size_t size, const std::string& text) {
    std::strncpy(out, text.c_str(), size - 1);
    out[size - 1] = 0;
}

} // namespace

int SpeedUnitForMedia(int mediaType) {
    return mediaType >= MEDIA_DVDMR && mediaType <= MEDIA_DVDROM ? 1385 : 177;
}

uint16_t SpeedInTenths(double kilobytesPerSecond, int speedUnit) {
    const int speed = std::max(0, int(kilobytesPerSecond));
    return uint16_t((speed + 20) / speedUnit * 10);
}

int MediaTypeOfKind(LDiscMediaKind kind) {
    switch (kind) {
    case LDiscMediaKind::CDR: return MEDIA_CDR;
    case LDiscMediaKind::CDRW: return MEDIA_CDRW;
    case LDiscMediaKind::CDROM: return MEDIA_CDROM;
    case LDiscMediaKind::DVDR: return MEDIA_DVDMR;
    case LDiscMediaKind::DVDRW: return MEDIA_DVDMRW;
    case LDiscMediaKind::DVDROM: return MEDIA_DVDROM;
    case LDiscMediaKind::DVDRAM: return MEDIA_DVDRAM;
    case LDiscMediaKind::DVDPlusR: return MEDIA_DVDPR;
    case LDiscMediaKind::DVDPlusRW: return MEDIA_DVDPRW;
    case LDiscMediaKind::BDR: return MEDIA_BDR;
    case LDiscMediaKind::BDRE: return MEDIA_BDRE;
    case LDiscMediaKind::BDROM: return MEDIA_BDROM;
    default: return MEDIA_NO_DISK;
    }
}

LProcessResult Process(LProcessInterface& progress, ProcessFindBurners& job) {
    LDiskEventsOff eventsOff;
    progress.SetStatus("Scanning Available Drives", 0);
    progress.SetStatus("Please wait...", 1);
    const std::vector<LDiscDeviceRef> devices = DiscService().CopyDeviceArray();
    job.count = std::min<int>(int(devices.size()), ProcessFindBurners::kMaxBurners);
    for (int i = 0; i < job.count; ++i) {
        LBurnerRecord& record = job.burners[i];
        record = LBurnerRecord();
        const LDiscDeviceStatus status = devices[i]->CopyStatus();
        if (status.mediaPresent) {
            record.usableDisc = (status.blank && status.appendable) || status.erasable;
            record.mediaType = MediaTypeOfKind(status.kind);
        }
        const size_t speeds = std::min<size_t>(status.burnSpeeds.size(), LBurnerRecord::kMaxSpeeds);
        for (size_t s = 0; s < speeds; ++s)
            record.speeds[s] = SpeedInTenths(status.burnSpeeds[s], job.speedUnit);
        record.maximumWriteSpeed = status.maximumWriteSpeed;
        const LDiscDeviceInfo info = devices[i]->CopyInfo();
        CopyText(record.vendor, sizeof record.vendor, info.vendor);
        CopyText(record.product, sizeof record.product, info.product);
        record.canWriteCD = info.canWriteCD;
        record.canWriteCDSAO = info.canWriteCDSAO;
        record.canWriteDVD = info.canWriteDVD;
        record.canWriteDVDPlusR = info.canWriteDVDPlusR;
        record.canWriteDVDRAM = info.canWriteDVDRAM;
    }
    return job.count > 0 ? PROCESS_DONE : PROCESS_FAILED;
}

BurnErrorCode GetDiskInformation(LDiscDevice& device, uint32_t& freeBlocks, uint32_t& usedBlocks,
                                 int& mediaType) {
    const LDiscDeviceStatus status = device.CopyStatus();
    if (!status.mediaPresent) return BurnErrorCode(14);
    freeBlocks = status.freeBlocks;
    usedBlocks = status.usedBlocks;
    switch (status.kind) {
    case LDiscMediaKind::CDROM:
    case LDiscMediaKind::CDR:
    case LDiscMediaKind::CDRW:
    case LDiscMediaKind::DVDROM:
    case LDiscMediaKind::DVDRAM:
    case LDiscMediaKind::DVDR:
    case LDiscMediaKind::DVDRW:
    case LDiscMediaKind::DVDPlusRW: mediaType = MediaTypeOfKind(status.kind); break;
    default: mediaType = MEDIA_NO_DISK; break;
    }
    return BurnErrorCode(usedBlocks > 0 ? 29 : 0);
}

BurnErrorCode LDiskGetCapacityTemplate(LProcessInterface&, uint32_t& freeBlocks,
                                       uint32_t& usedBlocks, int& mediaType) {
    const LDiskBurnSettings settings;
    if (settings.cdDrive >= 255) return BurnErrorCode(46);
    LDiscDeviceRef device = CopyDeviceByIndex(settings.cdDrive);
    if (!device) return BurnErrorCode(15);
    return GetDiskInformation(*device, freeBlocks, usedBlocks, mediaType);
}

std::string CapacityText(uint32_t freeBlocks, int outputFormat) {
    char text[64] = {};
    if (outputFormat != 4) {
        std::snprintf(text, sizeof text, "%5.2f MB", freeBlocks / 512.0);
    } else {
        // An audio block holds 588 stereo frames at 44100 Hz.
        const int frames = int(std::min<uint64_t>(uint64_t(freeBlocks) * 588, INT32_MAX));
        LSoundTime::FromSamples(frames, 44100)._GetText2(text);
    }
    return text[0] ? text : "N/A";
}

std::string GetCDCapacity(bool refresh) {
    if (!refresh) return LUserSettingGetString("CD", "Capacity", "Unknown");
    LProcessInterfaceVoid progress;
    uint32_t freeBlocks = 0;
    uint32_t usedBlocks = 0;
    int mediaType = MEDIA_NO_DISK;
    const BurnErrorCode error = LDiskGetCapacityTemplate(progress, freeBlocks, usedBlocks, mediaType);
    std::string text;
    if (error.code == 14) text = "No Disc in Drive";
    else if (error.code == 29) text = "Disc Already Used";
    else text = CapacityText(freeBlocks, LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1));
    LUserSettingSetString("CD", "Capacity", text.c_str());
    return text;
}

std::string MapDriveNumberToString(unsigned index) {
    LDiscDeviceRef device = CopyDeviceByIndex(index);
    if (!device) return "";
    const LDiscDeviceInfo info = device->CopyInfo();
    return info.vendor + " " + info.product;
}

LProcessResult Process(LProcessInterface& progress, ProcessEraseDisk& job) {
    return Process(progress, job, LDiskBurnSettings());
}

LProcessResult Process(LProcessInterface& progress, ProcessEraseDisk& job,
                       const LDiskBurnSettings& settings) {
    LDiskEventsOff eventsOff;
    LDiscDeviceRef device = CopyDeviceByIndex(settings.cdDrive);
    if (!device) {
        job.error = BurnErrorCode(15);
        return PROCESS_FAILED;
    }
    LAcquireMediaReservation(*device);
    progress.SetStatus("Erase Disk", 0);
    progress.SetProgressIndeterminateOn();
    const int result = ProcessCheckDriveAndDisk(progress, *device, settings, kEraseProjectType);
    if (result != 0) job.error = BurnErrorCode(14);
    LReleaseAllMediaReservations(*device);
    device->ReleaseExclusiveAccess();
    return LProcessResult(result);
}
