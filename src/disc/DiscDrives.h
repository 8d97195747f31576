#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/BurnMediaTypes.h"
#include "burn/DiskBurnSettings.h"
#include "burn/DiscService.h"
#include "jobs/ProcessInterface.h"

#include <cstdint>
#include <string>

// What the burner scan keeps of one drive.
struct LBurnerRecord {
    bool canWriteCD = false;
    bool canWriteCDSAO = false;
    bool canWriteDVD = false;
    bool canWriteDVDPlusR = false;
    bool canWriteDVDRAM = false;
    uint32_t maximumWriteSpeed = 0; // kilobytes per second
    static constexpr int kMaxSpeeds = 21;
    // Write speeds in tenths of "x", a 0 ending the list.
    uint16_t speeds[kMaxSpeeds] = {};
    char vendor[9] = {};
    char product[17] = {};
    int mediaType = MEDIA_NO_DISK;
    // The disc is blank and appendable, or erasable.
    bool usableDisc = false;
};

// The burner scan: at most 8 drives of the service's list.
struct ProcessFindBurners {
    static constexpr int kMaxBurners = 8;
    // Kilobytes per second that count as "1x": 1385 for DVD kinds (media 3 to 11), else 177.
    int speedUnit = 177;
    int count = 0;
    LBurnerRecord burners[kMaxBurners];
};

// 1385 for the DVD media kinds, 177 for the others.
int SpeedUnitForMedia(int mediaType);

// The job: 0 when at least one burner exists, 2 otherwise.
LProcessResult Process(LProcessInterface& progress, ProcessFindBurners& job);

// A speed in kilobytes per second as tenths of "x" of the unit.
uint16_t SpeedInTenths(double kilobytesPerSecond, int speedUnit);

// The media type of a kind of disc as the burner scan names it; 19 for none or unknown.
int MediaTypeOfKind(LDiscMediaKind kind);

// Free and used blocks and the media type of the drive's disc: error 14 without a disc, 29 for
// a disc with used blocks.
BurnErrorCode GetDiskInformation(LDiscDevice& device, uint32_t& freeBlocks, uint32_t& usedBlocks,
                                 int& mediaType);
// The same for the drive at the "CDDrive" index: 15 without a burner there, 46 for an index of
// 255 or more.
BurnErrorCode LDiskGetCapacityTemplate(LProcessInterface& progress, uint32_t& freeBlocks,
                                       uint32_t& usedBlocks, int& mediaType);

// The capacity text of the settings page: the stored one, or (refresh) the loaded disc's, stored.
std::string GetCDCapacity(bool refresh);
// The text for a disc of `freeBlocks` free blocks: "%5.2f MB" or, for an audio CD (output
// format 4), its playing time.
std::string CapacityText(uint32_t freeBlocks, int outputFormat);

// The burner's name, "vendor product"; empty when there is no burner at the index.
std::string MapDriveNumberToString(unsigned index);

// The erase job for the "CDDrive" burner.
struct ProcessEraseDisk {
    BurnErrorCode error;
};
LProcessResult Process(LProcessInterface& progress, ProcessEraseDisk& job);
// The same with the drive ("CDDrive") and the kind of erase ("FullErase") given.
LProcessResult Process(LProcessInterface& progress, ProcessEraseDisk& job,
                       const LDiskBurnSettings& settings);
