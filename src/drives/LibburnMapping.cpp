#include "drives/LibburnMapping.h"

#include <algorithm>
#include <cstring>

using namespace burn;

LDiscMediaKind MapLibburnProfile(int profile) {
    switch (profile) {
    case 0x00: return LDiscMediaKind::None;
    case 0x08: return LDiscMediaKind::CDROM;
    case 0x09: return LDiscMediaKind::CDR;
    case 0x0a: return LDiscMediaKind::CDRW;
    case 0x10: return LDiscMediaKind::DVDROM;
    case 0x11:
    case 0x15:
    case 0x16: return LDiscMediaKind::DVDR;
    case 0x12: return LDiscMediaKind::DVDRAM;
    case 0x13:
    case 0x14: return LDiscMediaKind::DVDRW;
    case 0x1a: return LDiscMediaKind::DVDPlusRW;
    case 0x1b:
    case 0x2b: return LDiscMediaKind::DVDPlusR;
    case 0x40: return LDiscMediaKind::BDROM;
    case 0x41:
    case 0x42: return LDiscMediaKind::BDR;
    case 0x43: return LDiscMediaKind::BDRE;
    default: return LDiscMediaKind::Other;
    }
}

LDiscDeviceInfo MapLibburnInfo(const burn_drive_info& info) {
    LDiscDeviceInfo out;
    out.vendor = std::string(info.vendor, strnlen(info.vendor, sizeof info.vendor));
    out.product = std::string(info.product, strnlen(info.product, sizeof info.product));
    while (!out.vendor.empty() && out.vendor.back() == ' ') out.vendor.pop_back();
    while (!out.product.empty() && out.product.back() == ' ') out.product.pop_back();
    out.canWriteCD = info.write_cdr || info.write_cdrw;
    out.canWriteCDSAO = out.canWriteCD && info.sao_block_types != 0;
    out.canWriteDVD = info.write_dvdr;
    // libburn does not tell DVD+R apart: a drive that writes DVD-R writes DVD+R as well.
    out.canWriteDVDPlusR = info.write_dvdr;
    out.canWriteDVDRAM = info.write_dvdram;
    return out;
}

LDiscDeviceStatus MapLibburnDisc(burn_disc_status status, int profile, bool erasable,
                                 off_t freeBytes, uint32_t capacityBlocks) {
    LDiscDeviceStatus out;
    if (status == BURN_DISC_UNREADY) {
        out.inTransition = true;
        return out;
    }
    if (status == BURN_DISC_EMPTY) return out;
    out.mediaPresent = true;
    out.kind = MapLibburnProfile(profile);
    out.blank = status == BURN_DISC_BLANK;
    out.appendable = status == BURN_DISC_BLANK || status == BURN_DISC_APPENDABLE;
    out.erasable = erasable;
    out.freeBlocks = out.appendable && freeBytes > 0 ? uint32_t(freeBytes / 2048) : 0;
    if (!out.blank)
        out.usedBlocks = std::max<uint32_t>(1, capacityBlocks > out.freeBlocks
                                                   ? capacityBlocks - out.freeBlocks : 0);
    return out;
}

std::vector<double> MapLibburnSpeeds(const burn_speed_descriptor* list, int profile) {
    std::vector<double> speeds;
    for (const burn_speed_descriptor* entry = list; entry; entry = entry->next) {
        if (entry->write_speed <= 0) continue;
        if (entry->profile_loaded > 0 && entry->profile_loaded != profile) continue;
        if (std::find(speeds.begin(), speeds.end(), double(entry->write_speed)) == speeds.end())
            speeds.push_back(entry->write_speed);
    }
    std::sort(speeds.begin(), speeds.end(), std::greater<>());
    return speeds;
}

LDiscOperationStatus MapLibburnProgress(burn_drive_status status, const burn_progress& progress,
                                        bool erasing, bool wroteWell) {
    LDiscOperationStatus out;
    if (progress.sectors > 0)
        out.fraction = std::clamp(float(progress.sector) / float(progress.sectors), 0.0f, 1.0f);
    const int track = erasing ? 0 : progress.track + 1;
    switch (status) {
    case BURN_DRIVE_IDLE:
        out.state = wroteWell ? LDiscOperationState::Done : LDiscOperationState::Failed;
        out.fraction = 1.0f;
        break;
    case BURN_DRIVE_SPAWNING:
    case BURN_DRIVE_GRABBING:
        out.state = LDiscOperationState::Preparing;
        out.fraction = -1.0f;
        break;
    case BURN_DRIVE_WRITING_LEADIN:
        out.state = LDiscOperationState::SessionOpen;
        break;
    case BURN_DRIVE_WRITING_PREGAP:
        out.state = LDiscOperationState::Preparing;
        out.currentTrack = track;
        break;
    case BURN_DRIVE_WRITING:
        out.state = LDiscOperationState::TrackWrite;
        out.currentTrack = track;
        break;
    case BURN_DRIVE_CLOSING_TRACK:
        out.state = LDiscOperationState::TrackClose;
        out.currentTrack = track;
        break;
    case BURN_DRIVE_WRITING_LEADOUT:
    case BURN_DRIVE_CLOSING_SESSION:
        out.state = LDiscOperationState::SessionClose;
        break;
    case BURN_DRIVE_ERASING:
    case BURN_DRIVE_FORMATTING:
        out.state = LDiscOperationState::Erasing;
        break;
    case BURN_DRIVE_READING:
    case BURN_DRIVE_READING_SYNC:
        out.state = LDiscOperationState::Verifying;
        break;
    case BURN_DRIVE_WRITING_SYNC:
        out.state = LDiscOperationState::Finishing;
        break;
    }
    return out;
}
