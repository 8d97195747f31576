// The reply decoders: fields in host order, short and hostile replies, and the profile table.
#include "SCSIScriptedTransport.h"

#include "burn/BurnMediaTypes.h"
#include "disc/SCSIBytes.h"
#include "disc/SCSICommands.h"
#include "disc/SCSIRecords.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace {

// `size` zero bytes with the hexadecimal runs placed at their offsets.
std::vector<uint8_t> Reply(size_t size, std::initializer_list<std::pair<size_t, const char*>> runs) {
    std::vector<uint8_t> bytes(size);
    for (const auto& [at, text] : runs) {
        const std::vector<uint8_t> run = Hex(text);
        std::copy(run.begin(), run.end(), bytes.begin() + static_cast<ptrdiff_t>(at));
    }
    return bytes;
}

TEST(SCSIDecodeTest, DiscTrackAndATIPRecords) {
    // An incomplete CD-RW: erasable, last session incomplete, tracks 1 to 3 of session 2.
    const auto disc = Reply(34, {{0, "00 20 15 01 02 03 03 20 00 00 00 00"},
                                 {16, "00 36 3A 00 00 4F 3B 47"}, {32, "A5 02"}});
    DiskInformation info;
    DecodeDiskInformation(disc.data(), disc.size(), info);
    EXPECT_TRUE(info.erasable);
    EXPECT_EQ(info.lastSessionState, 1);
    EXPECT_EQ(info.discStatus, DISC_INCOMPLETE);
    EXPECT_EQ(info.sessions, 2);
    EXPECT_EQ(info.lastTrackInLastSession, 3);
    EXPECT_TRUE(info.unrestrictedUse);
    EXPECT_EQ(info.lastSessionLeadIn, 0x00363A00u);
    EXPECT_EQ(info.LeadOutMSF().Sectors(), (79u * 60 + 59) * 75 + 71);
    EXPECT_EQ(info.applicationCode, 0xA5);

    // Track 300 of session 258, next writable address marked invalid.
    const auto track = Reply(36, {{0, "00 22 2C 02 00 04 40 02 00 00 01 00 00 00 12 34 00 05 00 00"},
                                  {24, "00 06 00 00 00 00 FF FF"}, {32, "01 01"}});
    TrackInformation ti;
    DecodeTrackInformation(track.data(), track.size(), ti);
    EXPECT_EQ(ti.track, 300);
    EXPECT_EQ(ti.session, 258);
    EXPECT_EQ(ti.trackMode, 4);
    EXPECT_TRUE(ti.blank);
    EXPECT_FALSE(ti.nextWritableValid);
    EXPECT_EQ(ti.nextWritable, 0u);
    EXPECT_EQ(ti.start, 0x100u);
    EXPECT_EQ(ti.freeBlocks, 0x50000u);
    EXPECT_EQ(ti.size, 0x60000u);
    EXPECT_TRUE(ti.lastRecordedValid);

    const auto atip = Reply(32, {{0, "00 1E 00 00 50 00 40 00 61 1A 42 00 4F 3B 47"}});
    ATIPInfo a;
    DecodeATIPInfo(atip.data(), atip.size(), a);
    EXPECT_TRUE(a.erasable);
    EXPECT_EQ(a.leadOutStart.Sectors(), 359996u);
    EXPECT_FALSE((LMSF{0xFF, 0xFF, 0xFF}).IsSet());
}

TEST(SCSIDecodeTest, StructureConfigurationAndCapacities) {
    const auto structure = Reply(2052, {{0, "08 02 00 00 01 0F 21 00 00 03 00 00 00 22 6F 7F 00 00 00 00 80"}});
    DVDPhysicalFormat dvd;
    DecodeDVDPhysicalFormat(structure.data(), structure.size(), dvd);
    EXPECT_EQ(dvd.startSector, 0x30000u);
    EXPECT_EQ(dvd.endSector, 0x226F7Fu);
    EXPECT_EQ(dvd.layers, 1);
    EXPECT_TRUE(dvd.burstCuttingArea);
    EXPECT_EQ(dvd.bytes.size(), DVDPhysicalFormat::kSize);

    // A profile list where DVD+R (0x1B) and DVD+R DL (0x2B) are both marked current: the larger
    // wins; with none current the header's profile is taken.
    auto config = Reply(28, {{0, "00 00 00 18 00 00 00 1A"}, {8, "00 00 03 10"},
                             {12, "00 1B 01 00 00 2B 01 00 00 1A 00 00 00 09 00 00"}});
    EXPECT_EQ(DecodeCurrentProfile(config.data(), config.size()), 0x2B);
    config[14] = config[18] = 0;
    EXPECT_EQ(DecodeCurrentProfile(config.data(), config.size()), 0x1A);
    LFeatureDescriptor feature;
    EXPECT_TRUE(FindFeature(config.data(), config.size(), 0, feature));
    EXPECT_EQ(feature.size, 16u);
    EXPECT_FALSE(FindFeature(config.data(), config.size(), 0x2F, feature));
    // A descriptor whose length runs past the reply is cut at the reply's end.
    config[11] = 0xF0;
    ASSERT_TRUE(FindFeature(config.data(), config.size(), 0, feature));
    EXPECT_EQ(feature.size, 16u);

    const auto capacities = Reply(28, {{0, "00 00 00 18 00 23 05 40 02 00 08 00"},
                                       {12, "00 23 05 40 00 00 08 00 00 22 00 00 98 00 08 00"}});
    LFormatCapacities formats;
    DecodeFormatCapacities(capacities.data(), capacities.size(), formats);
    EXPECT_EQ(formats.currentBlocks, 0x230540u);
    EXPECT_EQ(formats.currentType, CAPACITY_FORMATTED);
    EXPECT_EQ(formats.currentBlockLength, 2048u);
    ASSERT_EQ(formats.descriptors.size(), 2u);
    EXPECT_EQ(formats.descriptors[1].formatType, 0x26);
    EXPECT_EQ(formats.descriptors[1].blocks, 0x220000u);
}

TEST(SCSIDecodeTest, WriteSpeedsAndCapabilities) {
    // A length that claims more descriptors than arrived reads only those that did; one that
    // claims none is no answer.
    LWriteSpeeds speeds;
    const auto claims = Reply(40, {{0, "00 00 00 F4"}, {16, "00 00 40 EC 00 00 2B 48"},
                                   {32, "00 00 40 EC 00 00 15 A4"}});
    ASSERT_TRUE(DecodeWriteSpeeds(claims.data(), claims.size(), true, speeds));
    EXPECT_EQ(speeds.writeSpeeds, (std::vector<uint32_t>{11080, 5540}));
    EXPECT_FALSE(DecodeWriteSpeeds(Hex("00 00 00 04 00 00 00 00").data(), 8, true, speeds));

    DriveCapabilities capabilities;
    const auto page = Reply(22, {{0, "2A 14 3F 37"}, {8, "1B 90"}, {18, "1B 90"}});
    DecodeCapabilitiesPage(page.data(), page.size(), capabilities);
    EXPECT_TRUE(capabilities.canWriteCDR);
    EXPECT_TRUE(capabilities.canWriteCDRW);
    EXPECT_TRUE(capabilities.canTestWrite);
    EXPECT_TRUE(capabilities.canErase);
    EXPECT_EQ(capabilities.maxWriteSpeed, 7056u);
}

TEST(SCSIDecodeTest, UsedSizeInquiryAndSmallReplies) {
    auto iso = Reply(2048, {{0, "01 43 44 30 30 31 01"}, {80, "10 27 00 00 00 00 27 10"}});
    EXPECT_EQ(DecodeISOVolumeSize(iso.data(), iso.size()), 10000u);
    iso[1] = 'X';
    EXPECT_EQ(DecodeISOVolumeSize(iso.data(), iso.size()), 0u);

    // A logical volume integrity descriptor with two partitions of 100 and 50 sectors.
    auto udf = Reply(2048, {{0, "09 00 02 00 00 00 00 00"}, {72, "02 00 00 00 00 00 00 00"},
                            {88, "64 00 00 00 32 00 00 00"}});
    uint8_t checksum = 0;
    for (int i = 0; i < 16; ++i) checksum = static_cast<uint8_t>(checksum + (i == 4 ? 0 : udf[i]));
    udf[4] = checksum;
    EXPECT_EQ(DecodeUDFIntegritySize(udf.data(), udf.size()), 150u);
    udf[72] = 0xFF; // more partitions than the sector holds
    EXPECT_EQ(DecodeUDFIntegritySize(udf.data(), udf.size()), 0u);

    std::vector<uint8_t> inquiry(36, ' ');
    std::memcpy(&inquiry[8], "HL-DT-ST", 8);
    std::memcpy(&inquiry[16], "DVDRAM GH24NSD1 ", 16);
    EXPECT_EQ(DecodeInquiryName(inquiry.data(), inquiry.size()), "HL-DT-ST DVDRAM GH24NSD1");
    inquiry[11] = 0;
    EXPECT_EQ(DecodeInquiryName(inquiry.data(), inquiry.size()), "HL- DVDRAM GH24NSD1");
    EXPECT_EQ(DecodeReadCapacity(Hex("00 00 0F FF 00 00 08 00").data(), 8), 4096u);

}

// Every decoder reads only the bytes it is given, whatever they claim (run under the address
// sanitizer, an overread fails the test), an empty reply among them.
TEST(SCSIDecodeTest, EveryDecoderSurvivesArbitraryBytes) {
    std::mt19937 random(26);
    for (int round = 0; round < 3000; ++round) {
        const size_t size = round == 0 ? 0 : random() % 2100;
        std::vector<uint8_t> bytes(size);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() % 4 ? random() : 0xFF);
        // An exact-size heap copy, so reading past its end is caught.
        const std::unique_ptr<uint8_t[]> reply(new uint8_t[size + 1]);
        std::copy(bytes.begin(), bytes.end(), reply.get());
        const uint8_t* p = reply.get();
        ATIPInfo atip;
        DecodeATIPInfo(p, size, atip);
        DiskInformation disc;
        DecodeDiskInformation(p, size, disc);
        TrackInformation track;
        DecodeTrackInformation(p, size, track);
        DVDPhysicalFormat structure;
        DecodeDVDPhysicalFormat(p, size, structure);
        DriveFeatureHeader header;
        DecodeFeatureHeader(p, size, header);
        LFeatureDescriptor feature;
        const uint16_t firstFeature = size >= 10 ? MMCGet16(p + 8) : 0;
        if (FindFeature(p, size, firstFeature, feature)) {
            EXPECT_LE(feature.data + feature.size, p + size);
        }
        DecodeCurrentProfile(p, size);
        WriteParamModePage parameters;
        DecodeWriteParamModePage(p, size, parameters);
        LFormatCapacities formats;
        DecodeFormatCapacities(p, size, formats);
        EXPECT_LE(formats.descriptors.size(), 31u);
        LWriteSpeeds speeds;
        DecodeWriteSpeeds(p, size, true, speeds);
        EXPECT_LE(speeds.writeSpeeds.size(), 20u);
        DecodeWriteSpeeds(p, size, false, speeds);
        DriveCapabilities capabilities;
        DecodeCapabilitiesPage(p, size, capabilities);
        DecodeChangerState(p, size);
        DecodeReadCapacity(p, size);
        DecodeISOVolumeSize(p, size);
        DecodeUDFIntegritySize(p, size);
        DecodeInquiryName(p, size);
    }
}

TEST(SCSIDecodeTest, ProfilesToMediaTypes) {
    const std::pair<uint16_t, int> cases[] = {
        {0x08, MEDIA_CDROM}, {0x09, MEDIA_CDR}, {0x0A, MEDIA_CDRW}, {0x10, MEDIA_DVDROM},
        {0x40, MEDIA_DVDROM}, {0x11, MEDIA_DVDMR}, {0x12, MEDIA_DVDRAM}, {0x13, MEDIA_DVDMRW},
        {0x14, MEDIA_DVDMRW}, {0x15, MEDIA_DVDMR_DL}, {0x16, MEDIA_DVDMR_DL},
        {0x1A, MEDIA_DVDPRW}, {0x1B, MEDIA_DVDPR}, {0x2A, MEDIA_DVDPRW_DL},
        {0x2B, MEDIA_DVDPR_DL}, {0x41, MEDIA_BDR}, {0x42, MEDIA_BDR}, {0x43, MEDIA_BDRE},
        {0x50, MEDIA_HDDVDROM}, {0x51, MEDIA_HDDVDR}, {0x52, MEDIA_HDDVDRAM},
        {0x00, MEDIA_NO_DISK}, {0x02, MEDIA_NO_DISK}, {0xFFFF, MEDIA_NO_DISK},
    };
    for (const auto& [profile, media] : cases) EXPECT_EQ(MediaTypeOfProfile(profile), media) << profile;
}

} // namespace
