// The loaded disc, what the drive can write, and how much the disc can take.
#include "disc/SCSICommands.h"

#include "burn/BurnMediaTypes.h"

namespace {

constexpr size_t kProfileListWanted = 4 + 64 * 4;

struct FeatureBit {
    uint16_t feature;
    bool DriveCapabilities::*flag;
};

// Features whose first data byte says, in bit 0, that the drive writes that kind of disc.
constexpr FeatureBit kWriteFeatures[] = {
    {0x002A, &DriveCapabilities::canWriteDVDPRW},
    {0x002B, &DriveCapabilities::canWriteDVDPR},
    {0x003A, &DriveCapabilities::canWriteDVDPRWDL},
    {0x003B, &DriveCapabilities::canWriteDVDPRDL},
};
constexpr uint16_t kFeatureDVDRWrite = 0x002F;
constexpr uint16_t kFeatureBDWrite = 0x0041;
constexpr uint16_t kFeatureHDDVDWrite = 0x0051;
constexpr uint8_t kCapabilitiesPage = 0x2A;

// Runs GET CONFIGURATION of a feature; its descriptor, or false. A stop is kept in `stopped`.
bool Feature(LProcessInterface& job, LSCSI& device, uint16_t code, std::vector<uint8_t>& reply,
             LFeatureDescriptor& descriptor, bool& stopped) {
    const BurnErrorCode error = ProcessSCSIGetConfiguration(job, device, code, reply, 64);
    stopped = stopped || error.code == kSCSIStopped;
    return error.code == 0 && FindFeature(reply.data(), reply.size(), code, descriptor);
}

bool FirstBit(const LFeatureDescriptor& descriptor, int bit) {
    return descriptor.size > 0 && ((descriptor.data[0] >> bit) & 1);
}

} // namespace

int MediaTypeOfProfile(uint16_t profile) {
    switch (profile) {
    case 0x08: return MEDIA_CDROM;
    case 0x09: return MEDIA_CDR;
    case 0x0A: return MEDIA_CDRW;
    case 0x10:
    case 0x40: return MEDIA_DVDROM;
    case 0x11: return MEDIA_DVDMR;
    case 0x12: return MEDIA_DVDRAM;
    case 0x13:
    case 0x14: return MEDIA_DVDMRW;
    case 0x15:
    case 0x16: return MEDIA_DVDMR_DL;
    case 0x1A: return MEDIA_DVDPRW;
    case 0x1B: return MEDIA_DVDPR;
    case 0x2A: return MEDIA_DVDPRW_DL;
    case 0x2B: return MEDIA_DVDPR_DL;
    case 0x41:
    case 0x42: return MEDIA_BDR;
    case 0x43: return MEDIA_BDRE;
    case 0x50: return MEDIA_HDDVDROM;
    case 0x51: return MEDIA_HDDVDR;
    case 0x52: return MEDIA_HDDVDRAM;
    default: return MEDIA_NO_DISK;
    }
}

BurnErrorCode ProcessSCSIGetLoadedMediaType(LProcessInterface& job, LSCSI& device, int& media) {
    std::vector<uint8_t> reply;
    BurnErrorCode error = ProcessSCSIGetConfiguration(job, device, 0x0000, reply, kProfileListWanted);
    if (error.code == 0) {
        media = MediaTypeOfProfile(DecodeCurrentProfile(reply.data(), reply.size()));
        return error;
    }
    if (error.code == kSCSIStopped) return error;
    // A drive without profiles is a CD writer: the disc information tells CD-RW from CD-R.
    DiskInformation info;
    error = ProcessSCSIGetDiskInformation(job, device, info);
    if (error.code == 0) media = info.erasable ? MEDIA_CDRW : MEDIA_CDR;
    return error;
}

BurnErrorCode ProcessSCSIGetDeviceCapabilities(LProcessInterface& job, LSCSI& device,
                                               DriveCapabilities& capabilities) {
    capabilities = {};
    std::vector<uint8_t> page;
    int result = ProcessSCSIReadModePage(job, device, kCapabilitiesPage, page, 22);
    if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
    if (result == PROCESS_DONE) DecodeCapabilitiesPage(page.data(), page.size(), capabilities);

    bool stopped = false;
    std::vector<uint8_t> reply;
    LFeatureDescriptor feature;
    if (Feature(job, device, kFeatureDVDRWrite, reply, feature, stopped)) {
        capabilities.canWriteDVDR = true;
        capabilities.canTestWrite = capabilities.canTestWrite || FirstBit(feature, 2);
        capabilities.canWriteDVDRW = FirstBit(feature, 1);
    }
    for (const FeatureBit& write : kWriteFeatures)
        if (Feature(job, device, write.feature, reply, feature, stopped))
            capabilities.*write.flag = FirstBit(feature, 0);
    capabilities.canWriteBD = Feature(job, device, kFeatureBDWrite, reply, feature, stopped);
    capabilities.canWriteHDDVD = Feature(job, device, kFeatureHDDVDWrite, reply, feature, stopped);
    if (stopped) return BurnErrorCode(kSCSIStopped);
    capabilities.canErase = capabilities.canErase || capabilities.canWriteDVDRW ||
                            capabilities.canWriteDVDPRW || capabilities.canWriteBD;

    LWriteSpeeds speeds;
    result = ProcessSCSIGetWriteSpeeds(job, device, speeds);
    if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
    if (result == PROCESS_DONE) {
        capabilities.writeSpeeds = speeds.writeSpeeds;
        capabilities.maxReadSpeed = speeds.maxReadSpeed;
        capabilities.maxWriteSpeed = speeds.maxWriteSpeed;
    }
    return {};
}

BurnErrorCode ProcessSCSIGetWritableCapacity(LProcessInterface& job, LSCSI& device,
                                             const DiskInformation& info, int media,
                                             uint32_t& capacity) {
    constexpr uint32_t kNone = 0xFFFFFFFF;
    if (media == MEDIA_BDRE) {
        capacity = ProcessSCSIReadUsedCapacity(job, device, media);
        if (capacity) return {};
    }
    if (media != MEDIA_CDR && media != MEDIA_CDRW && media != MEDIA_CDROM && media != MEDIA_DVDPR) {
        capacity = ProcessSCSIReadFormatCapacity(job, device, media);
        if (capacity != kNone) return {};
    }
    if (job.IsToStop()) return BurnErrorCode(kSCSIStopped);
    const LMSF leadOut = info.LeadOutMSF();
    if (leadOut.IsSet()) {
        capacity = media == MEDIA_DVDPR ? info.lastPossibleLeadOut - info.lastSessionLeadIn
                                        : leadOut.Sectors();
        return {};
    }
    job.SetStatus("read.ATIP", kSCSIDebugStatusLine);
    ATIPInfo atip;
    BurnErrorCode error = ProcessSCSICDReadATIP(job, device, atip);
    if (error.code == kSCSIStopped) return error;
    if (error.code) {
        capacity = atip.leadOutStart.Sectors();
        return {};
    }
    job.SetStatus("read.format.capacity", kSCSIDebugStatusLine);
    capacity = ProcessSCSIReadFormatCapacity(job, device, media);
    if (capacity != kNone) return {};
    job.SetStatus("read.trackl.information", kSCSIDebugStatusLine);
    TrackInformation track;
    error = ProcessSCSIReadTrackInformation(job, device, 255, track);
    if (error.code == kSCSIStopped) return error;
    if (error.code || track.freeBlocks == 0) return LSCSIError(29, device);
    if (track.freeBlocks == kNone) return LSCSIError(42, device);
    capacity = track.freeBlocks;
    return {};
}
