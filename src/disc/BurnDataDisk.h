#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/DiskBurnSettings.h"
#include "burn/BurnMediaTypes.h"
#include "disc/Compilation.h"
#include "disc/SCSIRecords.h"
#include "jobs/ProcessInterface.h"

#include <string>

// The data disc job: a compilation (or an existing image file) written to a disc in the drive
// at the "CDDrive" index, or as an ISO image file when an output image path is given.
struct LBurnDataDisk {
    LBurnDataDisk(LAbstractFileSystem& compilation, std::string outputImage, int projectType)
        : compilation(compilation), project(projectType), outputImage(std::move(outputImage)) {}

    BurnErrorCode error;
    LDiskBurnSettings settings;
    LAbstractFileSystem& compilation;
    int project;
    std::string outputImage;
    // Non-empty: this image file is written instead of the compilation.
    std::string sourceImage;
    // Non-empty: the boot image for sectors 0 to 15, instead of the "BootableSectors" setting.
    std::string bootImage;

    // What the job found in the drive: the loaded media (18 for an image file), what the
    // drive can do, where on the disc the image starts and the track it is written into.
    int media = MEDIA_NO_DISK;
    DriveCapabilities capabilities;
    uint32_t startSector = 0;
    uint16_t track = 1;
    // The text the user was shown for the failure (given to SetError); empty while none.
    std::string errorText;
};

// Writes the disc or the image: done when the error code is 0, stopped when a stop came before
// the writing began, failed otherwise (the text is given to SetError); a stop while writing is
// error 1. A disc is checked, erased when it must and may be, written by the strategy for its
// media, closed, ejected after the burn when "CDLoadEject" is set and read back when
// "VerifyBurn" is set; the drive is closed on every path. An image file is written beside its
// destination, synced to the disk and put in its place only when complete, so a stop or a
// failure leaves no partial image and an earlier file of that name as it was. A file at the
// destination is replaced only when it is a disc image (".iso" or ".img"); anything else is
// refused (error 5). A failed write names the file and the system's reason; a full disk gives
// error 37.
LProcessResult Process(LProcessInterface& progress, LBurnDataDisk& job);
