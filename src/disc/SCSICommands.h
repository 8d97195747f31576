#pragma once

#include "burn/BurnErrorCode.h"
#include "disc/SCSI.h"
#include "disc/SCSIRecords.h"
#include "jobs/ProcessInterface.h"

#include <string>
#include <vector>

// One function per MMC operation of the data disc job: each builds the command, runs it
// through ProcessSCSIExecuteCommand and decodes the reply. Functions returning an int give 0
// (done), 1 (stopped) or 2 (failed); those returning a BurnErrorCode give error 1 for a stop
// and otherwise the error named beside them, with the drive's sense bytes.
//
// Timeouts in milliseconds; 0 as a wait's limit means no limit. Speeds in kilobytes per second.

// An error record of a failed drive step: the code, the detail text and the sense of the
// device's last command.
BurnErrorCode LSCSIError(BurnErrorCodeValue code, const LSCSI& device, const char* text = nullptr);
// The error of a command's result: 1 for a stop, else 46 with the text.
BurnErrorCode LSCSIResultError(int result, const LSCSI& device, const char* text = nullptr);
// Error 1, "User cancelled the burn".
inline constexpr BurnErrorCodeValue kSCSIStopped = 1;

// Identification.

// "VENDOR PRODUCT" from INQUIRY; empty when the drive does not answer.
std::string GetDeviceMMCName(LSCSITransport& transport);
std::string GetDeviceMMCName(LProcessInterface& job, LSCSI& device);

// Reading.

// READ(10) of `count` sectors into `buffer` (count × sectorSize bytes).
int ProcessSCSIReadSectors(LProcessInterface& job, LSCSI& device, void* buffer, uint32_t sector,
                           uint32_t count, uint32_t sectorSize);
// TEST UNIT READY once, with its own timeout.
int ProcessSCSITestUnitReady(LProcessInterface& job, LSCSI& device, uint32_t timeoutMs);
// Error 46.
BurnErrorCode ProcessSCSICDReadATIP(LProcessInterface& job, LSCSI& device, ATIPInfo& atip);
// Error 46 "read disc information failed".
BurnErrorCode ProcessSCSIGetDiskInformation(LProcessInterface& job, LSCSI& device,
                                            DiskInformation& info);
// Track 255 is the invisible or incomplete track; a drive that refuses it is asked for track
// 1. Error 46 "Read Track Information - Invalid Track" or "... - No Data Returned".
BurnErrorCode ProcessSCSIReadTrackInformation(LProcessInterface& job, LSCSI& device,
                                              uint32_t track, TrackInformation& info);
// READ DISC STRUCTURE of `format` (0: the physical format). Error 36 when the drive cannot
// read the disc's control data (3/31/00), else 46 "Read DVD structure failed".
BurnErrorCode ProcessSCSIReadDiskStructure(LProcessInterface& job, LSCSI& device, int media,
                                           uint8_t format, DVDPhysicalFormat& structure);
// The capacity in sectors that READ FORMAT CAPACITIES gives for the media; 0xFFFFFFFF when it
// gives none. The decoded reply goes to `capacities` when given.
uint32_t ProcessSCSIReadFormatCapacity(LProcessInterface& job, LSCSI& device, int media,
                                       LFormatCapacities* capacities = nullptr);
// The sectors the disc's file system (or, failing that, the disc) occupies; 0 when unknown.
uint32_t ProcessSCSIReadUsedCapacity(LProcessInterface& job, LSCSI& device, int media);

// Configuration and mode pages.

// GET CONFIGURATION of one feature into `reply` (8 + wanted bytes). Error 46
// "Get configuration failed".
BurnErrorCode ProcessSCSIGetConfiguration(LProcessInterface& job, LSCSI& device,
                                          uint16_t feature, std::vector<uint8_t>& reply,
                                          size_t wanted);
// The configuration header (of feature 1, the core feature).
BurnErrorCode ProcessSCSIGetFeatureHeader(LProcessInterface& job, LSCSI& device,
                                          DriveFeatureHeader& header);
// Whether the drive has the feature, and whether it is current for the loaded disc.
bool ProcessSCSIHasFeature(LProcessInterface& job, LSCSI& device, uint16_t feature,
                           bool* current = nullptr);
// MODE SENSE(10) of a page's current values: `page` gets the page from its page code on, at
// most `length` bytes; empty when the drive returned nothing.
int ProcessSCSIReadModePage(LProcessInterface& job, LSCSI& device, uint8_t pageCode,
                            std::vector<uint8_t>& page, size_t length);
// MODE SELECT(10) of a page given from its page code on, behind the drive's own header.
int ProcessSCSISetModePage(LProcessInterface& job, LSCSI& device, const uint8_t* page,
                           size_t length);
// Error 33 "Set Write Mode".
BurnErrorCode ProcessSCSISetWriteMode(LProcessInterface& job, LSCSI& device,
                                      const WriteParamModePage& parameters);
// Turns the drive's write cache on. Error 46 "Caching page not implemented" or
// "Setting caching failed".
BurnErrorCode ProcessSCSISetCachingMode(LProcessInterface& job, LSCSI& device);

// Waiting and the tray.

// Polls TEST UNIT READY (or READ TRACK INFORMATION of track 255) every 100 ms until the drive
// is ready. No disc with `failWithoutMedium`: error 14 at once. A reason to fail other than
// "medium changed", "not ready" and "no disc" ends the wait without error. When the time is
// up: 44 (still becoming ready, or medium changed), 14 (no disc), else 46 "Wait unit ready
// failed".
BurnErrorCode ProcessSCSIWaitUnitReady(LProcessInterface& job, LSCSI& device,
                                       bool failWithoutMedium, uint32_t timeoutMs,
                                       bool useTrackInformation = false);
// The same, moving the progress bar: by the drive's own progress of a long operation when it
// reports one, else by the time spent.
BurnErrorCode ProcessSCSIWaitUnitReadyWithProgress(LProcessInterface& job, LSCSI& device,
                                                   bool failWithoutMedium, uint32_t timeoutMs,
                                                   bool useTrackInformation = false);
// For drives with a removable medium or a changer: polls MECHANISM STATUS every second until
// the mechanism is idle. Error 46 "Wait mechanism ready failed" when the time is up.
BurnErrorCode ProcessSCSIWaitMechanismReady(LProcessInterface& job, LSCSI& device,
                                            uint32_t timeoutMs);
// Opens the tray (allowing removal first) and closes it. Error 46 "Eject failed" or
// "Load failed".
BurnErrorCode ProcessSCSIEject(LProcessInterface& job, LSCSI& device);
BurnErrorCode ProcessSCSILoad(LProcessInterface& job, LSCSI& device);
// Ejects and reloads the disc so the drive reads it afresh, and waits for it.
BurnErrorCode ProcessSCSICycleDrive(LProcessInterface& job, LSCSI& device);

// Writing.

// Whether writes go out as WRITE(10) instead of WRITE(12), and with the streaming bit. They
// hold for the rest of the program once a drive has refused the other way.
struct LSCSIWriteFlags {
    bool useWrite10 = false;
    bool streaming = true;
};
LSCSIWriteFlags GetSCSIWriteFlags();
void SetSCSIWriteFlags(LSCSIWriteFlags flags);

// Errors 32 "Error Writing to Disk", 34 (bad write address), 36 (unreadable disc after
// cycling).
BurnErrorCode ProcessSCSIWriteSectors(LProcessInterface& job, LSCSI& device, const void* buffer,
                                      uint32_t sector, uint32_t count, uint32_t sectorSize);
// Waits for the drive, flushes its cache and waits for the flush. Error 46 "Synchronize Cache".
BurnErrorCode ProcessSCSISynchronizeCache(LProcessInterface& job, LSCSI& device);
// Flushes the cache, closes (1 track, 2 session, 3 ..., 6 finalise a plus-R disc) and waits
// for the drive, with the progress bar when asked. Error 46 "Close Track/Session".
BurnErrorCode ProcessSCSICloseTrackSession(LProcessInterface& job, LSCSI& device,
                                           uint8_t closeFunction, uint16_t track,
                                           bool withProgress);
// Reserves at least 300 sectors. A drive that cannot read or write the disc (3/57/00 or
// 3/0C/00) is cycled once. Error 46 "Reserve Track".
BurnErrorCode ProcessSCSIReserveTrack(LProcessInterface& job, LSCSI& device, uint32_t sectors);
// Error 46 "Format Unit". The drive formats on its own afterwards: wait for it.
BurnErrorCode ProcessSCSIFormatUnit(LProcessInterface& job, LSCSI& device, const SFormat& format);
// BLANK of a blanking type (0 all, 1 minimal, 5 reopen the last session) from a sector. A
// drive that cannot read the disc (3/57/00) is cycled once. Error 46 "Blank". The drive blanks
// on its own afterwards: wait for it.
BurnErrorCode ProcessSCSIBlank(LProcessInterface& job, LSCSI& device, uint8_t blankingType,
                               uint32_t start);

// Speeds, media and capacity.

// GET PERFORMANCE: the write speeds for the loaded disc.
int ProcessSCSIGetWriteSpeeds(LProcessInterface& job, LSCSI& device, LWriteSpeeds& speeds);
// Sets the write speed to `factor` times the media's unit speed; a factor of 0 or less (or
// more than the drive can do) asks for the fastest. CDs take SET CD SPEED capped at
// `maxWriteSpeed`; other discs SET STREAMING up to `endSector`, whose refusal is ignored.
// Error 46 "Set CD Speed failed".
BurnErrorCode ProcessSCSISetWriteSpeed(LProcessInterface& job, LSCSI& device, double factor,
                                       uint32_t maxWriteSpeed, int media, uint32_t endSector);
// The media type (LBurnMediaTypes) of a profile number; 19 ("No Disk") for an unknown one.
int MediaTypeOfProfile(uint16_t profile);
// The loaded disc's media type, by its profile or, when the drive has no profile list, by the
// disc information (CD-RW when erasable, else CD-R).
BurnErrorCode ProcessSCSIGetLoadedMediaType(LProcessInterface& job, LSCSI& device, int& media);
BurnErrorCode ProcessSCSIGetDeviceCapabilities(LProcessInterface& job, LSCSI& device,
                                               DriveCapabilities& capabilities);
// The sectors the disc can take. Error 29 when a CD has no free sectors left, 42 when the
// drive cannot say.
BurnErrorCode ProcessSCSIGetWritableCapacity(LProcessInterface& job, LSCSI& device,
                                             const DiskInformation& info, int media,
                                             uint32_t& capacity);
