#include "disc/SCSICDB.h"

#include "disc/SCSIBytes.h"

namespace {

constexpr uint8_t kImmediate = 0x01;

// Most commands carry their allocation length in bytes 7 and 8.
LSCSICDB WithLength(uint8_t opcode, uint16_t length) {
    LSCSICDB cdb(opcode);
    MMCPut16(cdb.bytes + 7, length);
    return cdb;
}

} // namespace

LSCSICDB CDBTestUnitReady() {
    return LSCSICDB(MMC_TEST_UNIT_READY);
}

LSCSICDB CDBInquiry(uint8_t length) {
    LSCSICDB cdb(MMC_INQUIRY);
    cdb.bytes[4] = length;
    return cdb;
}

LSCSICDB CDBRead10(uint32_t sector, uint16_t count) {
    LSCSICDB cdb(MMC_READ_10);
    MMCPut32(cdb.bytes + 2, sector);
    MMCPut16(cdb.bytes + 7, count);
    return cdb;
}

LSCSICDB CDBWrite12(uint32_t sector, uint32_t count, bool streaming) {
    LSCSICDB cdb(MMC_WRITE_12);
    MMCPut32(cdb.bytes + 2, sector);
    MMCPut32(cdb.bytes + 6, count);
    if (streaming) cdb.bytes[10] = 0x80;
    return cdb;
}

LSCSICDB CDBWrite10(uint32_t sector, uint16_t count) {
    LSCSICDB cdb(MMC_WRITE_10);
    MMCPut32(cdb.bytes + 2, sector);
    MMCPut16(cdb.bytes + 7, count);
    return cdb;
}

LSCSICDB CDBReadATIP(uint16_t length) {
    LSCSICDB cdb = WithLength(MMC_READ_TOC_PMA_ATIP, length);
    cdb.bytes[1] = 0x02;
    cdb.bytes[2] = 0x04;
    return cdb;
}

LSCSICDB CDBReadDiscInformation(uint16_t length) {
    return WithLength(MMC_READ_DISC_INFORMATION, length);
}

LSCSICDB CDBReadTrackInformation(uint32_t track, uint16_t length) {
    LSCSICDB cdb = WithLength(MMC_READ_TRACK_INFORMATION, length);
    cdb.bytes[1] = 0x01;
    MMCPut32(cdb.bytes + 2, track);
    return cdb;
}

LSCSICDB CDBReadDiscStructure(bool bluRay, uint8_t format, uint16_t length) {
    LSCSICDB cdb(MMC_READ_DISC_STRUCTURE);
    cdb.bytes[1] = bluRay ? 0x01 : 0x00;
    cdb.bytes[7] = format;
    MMCPut16(cdb.bytes + 8, length);
    return cdb;
}

LSCSICDB CDBReadFormatCapacities(uint16_t length) {
    return WithLength(MMC_READ_FORMAT_CAPACITIES, length);
}

LSCSICDB CDBReadCapacity() {
    return LSCSICDB(MMC_READ_CAPACITY);
}

LSCSICDB CDBGetConfiguration(uint16_t feature, uint16_t length) {
    LSCSICDB cdb = WithLength(MMC_GET_CONFIGURATION, length);
    cdb.bytes[1] = 0x02;
    MMCPut16(cdb.bytes + 2, feature);
    return cdb;
}

LSCSICDB CDBModeSense(uint8_t page, uint16_t length) {
    LSCSICDB cdb = WithLength(MMC_MODE_SENSE_10, length);
    cdb.bytes[1] = 0x08;
    cdb.bytes[2] = page & 0x3F;
    return cdb;
}

LSCSICDB CDBModeSelect(uint16_t length) {
    LSCSICDB cdb = WithLength(MMC_MODE_SELECT_10, length);
    cdb.bytes[1] = 0x10;
    return cdb;
}

LSCSICDB CDBGetPerformance(bool writeSpeedType) {
    LSCSICDB cdb(MMC_GET_PERFORMANCE);
    cdb.bytes[1] = writeSpeedType ? 0x00 : 0x14;
    cdb.bytes[9] = 20;
    cdb.bytes[10] = writeSpeedType ? 0x03 : 0x00;
    return cdb;
}

LSCSICDB CDBSetCDSpeed(bool constantAngularVelocity, uint16_t readSpeed, uint16_t writeSpeed) {
    LSCSICDB cdb(MMC_SET_CD_SPEED);
    cdb.bytes[1] = constantAngularVelocity ? 0x01 : 0x00;
    MMCPut16(cdb.bytes + 2, readSpeed);
    MMCPut16(cdb.bytes + 4, writeSpeed);
    return cdb;
}

LSCSICDB CDBSetStreaming(uint16_t length) {
    LSCSICDB cdb(MMC_SET_STREAMING);
    MMCPut16(cdb.bytes + 9, length);
    return cdb;
}

LSCSICDB CDBMechanismStatus(uint16_t length) {
    LSCSICDB cdb(MMC_MECHANISM_STATUS);
    MMCPut16(cdb.bytes + 8, length);
    return cdb;
}

LSCSICDB CDBSynchronizeCache() {
    LSCSICDB cdb(MMC_SYNCHRONIZE_CACHE);
    cdb.bytes[1] = 0x02;
    return cdb;
}

LSCSICDB CDBCloseTrackSession(uint8_t closeFunction, uint16_t track) {
    LSCSICDB cdb(MMC_CLOSE_TRACK_SESSION);
    cdb.bytes[1] = kImmediate;
    cdb.bytes[2] = closeFunction & 0x07;
    MMCPut16(cdb.bytes + 4, track);
    return cdb;
}

LSCSICDB CDBReserveTrack(uint32_t sectors) {
    LSCSICDB cdb(MMC_RESERVE_TRACK);
    MMCPut32(cdb.bytes + 5, sectors);
    return cdb;
}

LSCSICDB CDBFormatUnit() {
    LSCSICDB cdb(MMC_FORMAT_UNIT);
    cdb.bytes[1] = 0x11;
    return cdb;
}

LSCSICDB CDBBlank(uint8_t blankingType, uint32_t start) {
    LSCSICDB cdb(MMC_BLANK);
    cdb.bytes[1] = static_cast<uint8_t>(0x10 | (blankingType & 0x07));
    MMCPut32(cdb.bytes + 2, start);
    return cdb;
}

LSCSICDB CDBStartStopUnit(bool loadEject, bool start) {
    LSCSICDB cdb(MMC_START_STOP_UNIT);
    cdb.bytes[4] = static_cast<uint8_t>(loadEject << 1 | start);
    return cdb;
}

LSCSICDB CDBPreventAllowMediumRemoval(bool prevent) {
    LSCSICDB cdb(MMC_PREVENT_ALLOW_MEDIUM_REMOVAL);
    cdb.bytes[4] = prevent ? 0x01 : 0x00;
    return cdb;
}
