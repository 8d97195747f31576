#include "burn/BurnErrorCode.h"

#include <cstring>

namespace {

constexpr const char* kErrMessages[] = {
    "No errors",
    "User cancelled the burn",
    "The inserted disk is not empty",
    "Unsupported format of DVD disk",
    "Can not read format of DVD disk",
    "Create ISO image failed",
    "Unable to create file structure in ISO image",
    "Unable to find next writtable address on DVD-RW",
    "Unable to set write speed",
    "Could not append to the existing session",
    "Could not start new session",
    "Create UDF image failed",
    "Device not ready",
    "Could not reserve track space",
    "There appears to be no disk in the drive, please insert one and try again",
    "The Selected drive does not exist",
    "The selected drive cannot write or record CDs",
    "The selected drive cannot write or record DVDs",
    "The selected drive cannot write or record HD DVDs",
    "The selected drive cannot write or record Blu-rays",
    "The loaded disk is not a DVD",
    "The loaded disk is not a CD",
    "The loaded disk is not a HD DVD",
    "The loaded disk is not a Blu-ray",
    "Disk needs erasing and the drive cannot erase disks",
    "Error erasing the disk",
    "Error converting audio files for burning",
    "Too many tracks for the disk",
    "Disk capacity has been exceeded",
    "Disk in the drive is already burned",
    "Verification of the burn failed",
    "Error Reading from Disk",
    "Error Writing to Disk",
    "Set Write Mode Failed",
    "Error with write address",
    "Send Cue Sheet Failed",
    "Cannot read essential part of the disk, probably the disk is not compatible with your drive",
    "Not enough free harddrive space to do this action",
    "Cannot create an ISO image because the loaded disk is not a data disk",
    "Drive is busy, please wait and try again",
    "DVD Authoring failed, please check the video files and available free space",
    "File to be written to disk is not found - check the file is present and on an available "
    "drive",
    "Disk in the drive is unreadable",
    "Burner does not support MMC, unusable by Pressdisc",
    "Drive not ready",
    "Session at Once burning FAILED to customise the track pause and/or write CD-TEXT, it may be "
    "your drive does not support this. The disk was still burned successfully and can be played.",
    "Unknown SCSI access error",
};

} // namespace

const char* GetBurnErrorMessage(const BurnErrorCodeValue& code) {
    if (code >= std::size(kErrMessages)) return "Unknown error";
    return kErrMessages[code];
}

BurnErrorCodeData::BurnErrorCodeData(BurnErrorCodeValue value, const char* detail,
                                     LSenseBytes sense)
    : code(value), senseKey(sense.key), additionalSenseCode(sense.code),
      additionalSenseCodeQualifier(sense.qualifier) {
    if (detail) std::strncpy(text, detail, kTextSize - 1);
}

void BurnErrorCode::AddInformation(BurnErrorCodeValue value, const char* detail, LSenseBytes sense) {
    chain_.emplace_front(value, detail, sense);
}

std::string BurnErrorCode::Describe() const {
    const BurnErrorCodeData& shown = chain_.empty() ? *this : chain_.front();
    std::string text = GetBurnErrorMessage(shown.code);
    if (shown.text[0]) text += std::string(": ") + shown.text;
    return text;
}
