#pragma once

#include "disc/SCSI.h"

// The command descriptor blocks of the MMC operations the burn job uses. Numbers go in
// big-endian; allocation and parameter list lengths are in bytes.

enum LMMCOperation : uint8_t {
    MMC_TEST_UNIT_READY = 0x00,
    MMC_FORMAT_UNIT = 0x04,
    MMC_INQUIRY = 0x12,
    MMC_START_STOP_UNIT = 0x1B,
    MMC_PREVENT_ALLOW_MEDIUM_REMOVAL = 0x1E,
    MMC_READ_FORMAT_CAPACITIES = 0x23,
    MMC_READ_CAPACITY = 0x25,
    MMC_READ_10 = 0x28,
    MMC_WRITE_10 = 0x2A,
    MMC_SYNCHRONIZE_CACHE = 0x35,
    MMC_READ_TOC_PMA_ATIP = 0x43,
    MMC_GET_CONFIGURATION = 0x46,
    MMC_READ_DISC_INFORMATION = 0x51,
    MMC_READ_TRACK_INFORMATION = 0x52,
    MMC_RESERVE_TRACK = 0x53,
    MMC_MODE_SELECT_10 = 0x55,
    MMC_MODE_SENSE_10 = 0x5A,
    MMC_CLOSE_TRACK_SESSION = 0x5B,
    MMC_BLANK = 0xA1,
    MMC_WRITE_12 = 0xAA,
    MMC_GET_PERFORMANCE = 0xAC,
    MMC_READ_DISC_STRUCTURE = 0xAD,
    MMC_SET_STREAMING = 0xB6,
    MMC_SET_CD_SPEED = 0xBB,
    MMC_MECHANISM_STATUS = 0xBD,
};

LSCSICDB CDBTestUnitReady();
LSCSICDB CDBInquiry(uint8_t length);
LSCSICDB CDBRead10(uint32_t sector, uint16_t count);
// WRITE(12), with the streaming bit when asked, or WRITE(10).
LSCSICDB CDBWrite12(uint32_t sector, uint32_t count, bool streaming);
LSCSICDB CDBWrite10(uint32_t sector, uint16_t count);
// READ TOC/PMA/ATIP of the ATIP, addresses as minutes, seconds and frames.
LSCSICDB CDBReadATIP(uint16_t length);
LSCSICDB CDBReadDiscInformation(uint16_t length);
// READ TRACK INFORMATION addressed by track number (255: the invisible or incomplete track).
LSCSICDB CDBReadTrackInformation(uint32_t track, uint16_t length);
LSCSICDB CDBReadDiscStructure(bool bluRay, uint8_t format, uint16_t length);
LSCSICDB CDBReadFormatCapacities(uint16_t length);
LSCSICDB CDBReadCapacity();
// GET CONFIGURATION of one feature.
LSCSICDB CDBGetConfiguration(uint16_t feature, uint16_t length);
// MODE SENSE(10) of a page's current values, without block descriptors.
LSCSICDB CDBModeSense(uint8_t page, uint16_t length);
// MODE SELECT(10) with the page-format bit.
LSCSICDB CDBModeSelect(uint16_t length);
// GET PERFORMANCE of up to 20 write speed descriptors (type 3), or of the nominal write
// performance (type 0) that older drives answer instead.
LSCSICDB CDBGetPerformance(bool writeSpeedType);
LSCSICDB CDBSetCDSpeed(bool constantAngularVelocity, uint16_t readSpeed, uint16_t writeSpeed);
// SET STREAMING with one performance descriptor.
LSCSICDB CDBSetStreaming(uint16_t length);
LSCSICDB CDBMechanismStatus(uint16_t length);
// SYNCHRONIZE CACHE, answered at once: the drive writes its cache on its own.
LSCSICDB CDBSynchronizeCache();
// CLOSE TRACK/SESSION, answered at once.
LSCSICDB CDBCloseTrackSession(uint8_t closeFunction, uint16_t track);
LSCSICDB CDBReserveTrack(uint32_t sectors);
// FORMAT UNIT with a parameter list of format type descriptors.
LSCSICDB CDBFormatUnit();
// BLANK answered at once, from `start` for the blanking types that take an address.
LSCSICDB CDBBlank(uint8_t blankingType, uint32_t start);
LSCSICDB CDBStartStopUnit(bool loadEject, bool start);
LSCSICDB CDBPreventAllowMediumRemoval(bool prevent);
