// The command blocks byte by byte, and the parameter lists the layer sends.
#include "SCSIScriptedTransport.h"

#include "disc/SCSICDB.h"
#include "disc/SCSIRecords.h"

#include <gtest/gtest.h>

namespace {

std::vector<uint8_t> Bytes(const LSCSICDB& cdb) {
    return {cdb.bytes, cdb.bytes + cdb.length};
}

TEST(SCSICDBTest, EachCommandBlock) {
    const struct {
        const char* name;
        LSCSICDB cdb;
        const char* bytes;
    } cases[] = {
        {"test unit ready", CDBTestUnitReady(), "00 00 00 00 00 00"},
        {"inquiry", CDBInquiry(36), "12 00 00 00 24 00"},
        {"read(10)", CDBRead10(0x12345678, 16), "28 00 12 34 56 78 00 00 10 00"},
        {"write(12) streaming", CDBWrite12(0x10, 16, true), "AA 00 00 00 00 10 00 00 00 10 80 00"},
        {"write(12)", CDBWrite12(0x10, 32, false), "AA 00 00 00 00 10 00 00 00 20 00 00"},
        {"write(10)", CDBWrite10(0x01020304, 32), "2A 00 01 02 03 04 00 00 20 00"},
        {"atip", CDBReadATIP(4), "43 02 04 00 00 00 00 00 04 00"},
        {"disc information", CDBReadDiscInformation(34), "51 00 00 00 00 00 00 00 22 00"},
        {"track information", CDBReadTrackInformation(255, 36), "52 01 00 00 00 FF 00 00 24 00"},
        {"disc structure dvd", CDBReadDiscStructure(false, 0, 2052),
         "AD 00 00 00 00 00 00 00 08 04 00 00"},
        {"disc structure bd", CDBReadDiscStructure(true, 0x0A, 12),
         "AD 01 00 00 00 00 00 0A 00 0C 00 00"},
        {"format capacities", CDBReadFormatCapacities(260), "23 00 00 00 00 00 00 01 04 00"},
        {"read capacity", CDBReadCapacity(), "25 00 00 00 00 00 00 00 00 00"},
        {"get configuration", CDBGetConfiguration(0x2F, 72), "46 02 00 2F 00 00 00 00 48 00"},
        {"mode sense", CDBModeSense(0x2A, 8), "5A 08 2A 00 00 00 00 00 08 00"},
        {"mode select", CDBModeSelect(64), "55 10 00 00 00 00 00 00 40 00"},
        {"write speeds", CDBGetPerformance(true), "AC 00 00 00 00 00 00 00 00 14 03 00"},
        {"nominal performance", CDBGetPerformance(false), "AC 14 00 00 00 00 00 00 00 14 00 00"},
        {"set cd speed", CDBSetCDSpeed(true, 0xFFFF, 1416), "BB 01 FF FF 05 88 00 00 00 00 00 00"},
        {"set streaming", CDBSetStreaming(28), "B6 00 00 00 00 00 00 00 00 00 1C 00"},
        {"mechanism status", CDBMechanismStatus(8), "BD 00 00 00 00 00 00 00 00 08 00 00"},
        {"synchronize cache", CDBSynchronizeCache(), "35 02 00 00 00 00 00 00 00 00"},
        {"close session", CDBCloseTrackSession(2, 0), "5B 01 02 00 00 00 00 00 00 00"},
        {"close track", CDBCloseTrackSession(1, 0x0102), "5B 01 01 00 01 02 00 00 00 00"},
        {"reserve track", CDBReserveTrack(300), "53 00 00 00 00 00 00 01 2C 00"},
        {"format unit", CDBFormatUnit(), "04 11 00 00 00 00"},
        {"blank", CDBBlank(1, 0), "A1 11 00 00 00 00 00 00 00 00 00 00"},
        {"blank from", CDBBlank(5, 0x1234), "A1 15 00 00 12 34 00 00 00 00 00 00"},
        {"eject", CDBStartStopUnit(true, false), "1B 00 00 00 02 00"},
        {"load", CDBStartStopUnit(true, true), "1B 00 00 00 03 00"},
        {"allow removal", CDBPreventAllowMediumRemoval(false), "1E 00 00 00 00 00"},
    };
    for (const auto& c : cases) EXPECT_EQ(Bytes(c.cdb), Hex(c.bytes)) << c.name;
}

TEST(SCSICDBTest, ParameterListsEncodeAndDecodeBack) {
    // The write parameters of a CD-R: under-run protection with track-at-once, Mode 1.
    WriteParamModePage parameters;
    parameters.bufferUnderrunFree = true;
    parameters.writeType = WRITE_TYPE_TRACK_AT_ONCE;
    parameters.trackMode = 6;
    parameters.dataBlockType = 8;
    parameters.audioPause = 150;
    parameters.packetSize = 0x01020304;
    uint8_t page[WriteParamModePage::kSize];
    parameters.Encode(page);
    EXPECT_EQ(std::vector<uint8_t>(page, page + 16),
              Hex("05 36 41 06 08 00 00 00 00 00 01 02 03 04 00 96"));
    WriteParamModePage back;
    DecodeWriteParamModePage(page, sizeof page, back);
    uint8_t again[WriteParamModePage::kSize];
    back.Encode(again);
    EXPECT_EQ(0, std::memcmp(page, again, sizeof page));

    SFormat format;
    format.descriptor = {0x00231000, 0x26, 0x000800};
    uint8_t list[SFormat::kSize];
    format.Encode(list);
    EXPECT_EQ(std::vector<uint8_t>(list, list + sizeof list), Hex("00 02 00 08 00 23 10 00 98 00 08 00"));

    LStreamingDescriptor streaming;
    streaming.endSector = 0x00100000;
    streaming.readSize = 16620;
    streaming.readTime = 1000;
    streaming.writeSize = 5540;
    streaming.writeTime = 1000;
    uint8_t descriptor[LStreamingDescriptor::kSize];
    streaming.Encode(descriptor);
    EXPECT_EQ(std::vector<uint8_t>(descriptor, descriptor + sizeof descriptor),
              Hex("00 000000 00000000 00100000 000040EC 000003E8 000015A4 000003E8"));
}

} // namespace
