#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/DiskBurnSettings.h"
#include "disc/Compilation.h"
#include "jobs/ProcessInterface.h"

#include <string>

// The data disc job: a compilation (or an existing image file) written as an ISO image file.
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
};

// Writes the image: done when the error code is 0, stopped when a stop came before the writing
// began, failed otherwise (the text is given to SetError). The image is written beside its
// destination, synced to the disk and put in its place only when complete, so a stop or a
// failure leaves no partial image and an earlier file of that name as it was. A file at the
// destination is replaced only when it is a disc image (".iso" or ".img"); anything else is
// refused (error 5). A failed write names the file and the system's reason; a full disk gives
// error 37.
LProcessResult Process(LProcessInterface& progress, LBurnDataDisk& job);
