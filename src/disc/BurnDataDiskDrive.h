#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/DiskBurnSettings.h"
#include "disc/SCSICommands.h"
#include "jobs/ProcessInterface.h"

#include <vector>

struct LBurnDataDisk;

// The drive side of the data disc job before writing: opening the drive, checking it and the
// disc against the project, and erasing a used rewritable disc. Each step gives the job's
// error (1 when stopped) and, for the errors the user must act on, tells why through SetError.

// Opens the drive at the "CDDrive" index, waits until it is ready, finds the loaded media
// (job.media) and turns the any-disc projects (16 to 18) into the project for that media.
// Errors: 15 no such drive, 14 no disc or the drive fails, 43 a drive without MMC write
// parameters.
BurnErrorCode ProcessOpenDriveAndProject(LProcessInterface& progress, LBurnDataDisk& job,
                                         LSCSI& device);

// Opens the drive (above), reads the disc information and what the drive can do, and checks
// that the drive writes the project's kind of disc (16 CD, 17 DVD, 18 HD DVD, 19 Blu-ray) and
// that the loaded disc suits the project (20 DVD, 21 CD, 22 HD DVD, 23 Blu-ray).
BurnErrorCode ProcessCheckDriveAndDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                       LSCSI& device, DiskInformation& info,
                                       DriveCapabilities& capabilities);

// Whether the disc holds nothing: by the disc status, and for the overwritable kinds (whose
// status says nothing about their contents) by finding no file system at their start.
bool IsDiskBlank(LProcessInterface& progress, LSCSI& device, const DiskInformation& info,
                 int media);

// A used disc is refused (2) unless it is erasable and erasing is allowed ("EraseCDRW", or
// project 19): then it is blanked (25 when that fails). An audio CD project on an incomplete
// disc reopens its last session instead. Afterwards the write cache is turned on and the
// speed set, both of which may fail without harm. `info` is re-read when the disc changed.
BurnErrorCode ProcessEraseDiskIfNeeded(LProcessInterface& progress, LBurnDataDisk& job,
                                       LSCSI& device, DiskInformation& info,
                                       uint32_t imageSectors,
                                       const DriveCapabilities& capabilities);

// Blanks a rewritable disc: FORMAT UNIT for DVD+RW, BD-RE and HD-DVD-RAM (then zeros over the
// old file system's start), BLANK of `blankingType` (0 all, 1 minimal, 5 reopen the last
// session) for CD-RW and DVD-RW; then waits for the drive with the progress bar.
BurnErrorCode ProcessSCSIBlankDisk(LProcessInterface& progress, LSCSI& device, int media,
                                   uint8_t blankingType, uint32_t start);

// FORMAT UNIT with the first of `choices`, or the second when the drive refuses the first.
BurnErrorCode ProcessFormatUnitWithChoices(LProcessInterface& progress, LSCSI& device,
                                           const std::vector<LFormatDescriptor>& choices);

// Sets the write speed from the "Speed" setting for a write that ends at `lastSector`.
BurnErrorCode SetJobWriteSpeed(LProcessInterface& progress, const LBurnDataDisk& job,
                               LSCSI& device, const DriveCapabilities& capabilities,
                               uint32_t lastSector);
