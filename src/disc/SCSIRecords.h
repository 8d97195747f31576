#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The drive's answers as the burn job uses them. Every decoder takes the reply bytes as the
// drive sent them (big-endian) and however many arrived; fields the reply does not reach stay
// 0. The numbers in the records are in host order.

// A minutes/seconds/frames address of a CD.
struct LMSF {
    uint8_t minutes = 0;
    uint8_t seconds = 0;
    uint8_t frames = 0;

    // (minutes × 60 + seconds) × 75 + frames.
    uint32_t Sectors() const { return (minutes * 60u + seconds) * 75u + frames; }
    // Neither all 0 nor all 0xFF: a real address.
    bool IsSet() const;
};

// READ TOC/PMA/ATIP format 4: what is pressed into a blank CD.
struct ATIPInfo {
    uint16_t dataLength = 0;
    uint8_t writingPower = 0;
    bool erasable = false; // CD-RW
    uint8_t discSubType = 0;
    LMSF leadInStart;
    LMSF leadOutStart; // the last possible start of the lead-out: the disc's capacity
};

// READ DISC INFORMATION (standard disc information, 34 bytes).
enum LDiscStatus : uint8_t {
    DISC_EMPTY = 0,
    DISC_INCOMPLETE = 1,
    DISC_COMPLETE = 2,
    DISC_OTHER = 3,
};

struct DiskInformation {
    uint16_t dataLength = 0;
    bool erasable = false;
    uint8_t lastSessionState = 0; // 0 empty, 1 incomplete, 3 complete
    uint8_t discStatus = DISC_EMPTY;
    uint8_t firstTrack = 0;
    uint16_t sessions = 0;
    uint16_t firstTrackInLastSession = 0;
    uint16_t lastTrackInLastSession = 0;
    bool discIdValid = false;
    bool barCodeValid = false;
    bool unrestrictedUse = false;
    bool applicationCodeValid = false;
    bool dirty = false;
    uint8_t backgroundFormat = 0; // 0 none, 1 started, 2 in progress, 3 complete
    uint8_t discType = 0;
    uint32_t discId = 0;
    // Start of the last session's lead-in and last possible start of the lead-out: an MSF
    // address in the low three bytes on CDs, a sector number on DVD+R.
    uint32_t lastSessionLeadIn = 0;
    uint32_t lastPossibleLeadOut = 0;
    uint64_t barCode = 0;
    uint8_t applicationCode = 0;
    uint8_t opcTables = 0;

    LMSF LeadOutMSF() const;
};

// READ TRACK INFORMATION, at most 36 bytes.
struct TrackInformation {
    uint16_t dataLength = 0;
    uint16_t track = 0;
    uint16_t session = 0;
    bool damage = false;
    bool copy = false;
    uint8_t trackMode = 0;
    bool reserved = false; // RT
    bool blank = false;
    bool packet = false;
    bool fixedPacket = false;
    uint8_t dataMode = 0;
    bool lastRecordedValid = false;
    bool nextWritableValid = false;
    uint32_t start = 0;
    uint32_t nextWritable = 0; // 0 when the reply marks it invalid
    uint32_t freeBlocks = 0;
    uint32_t fixedPacketSize = 0;
    uint32_t size = 0;
    uint32_t lastRecorded = 0;
};

// READ DISC STRUCTURE format 0 of a DVD or HD DVD: the physical format of layer 0. `bytes`
// keeps the whole reply as returned (2052 bytes), for the other formats as well.
struct DVDPhysicalFormat {
    static constexpr size_t kSize = 2052;
    uint16_t dataLength = 0;
    uint8_t bookType = 0;
    uint8_t partVersion = 0;
    uint8_t discSize = 0;
    uint8_t maximumRate = 0;
    uint8_t layers = 0; // layers minus one
    uint8_t trackPath = 0;
    uint8_t layerType = 0;
    uint8_t linearDensity = 0;
    uint8_t trackDensity = 0;
    uint32_t startSector = 0;
    uint32_t endSector = 0;
    uint32_t layer0EndSector = 0;
    bool burstCuttingArea = false;
    std::vector<uint8_t> bytes;
};

// The GET CONFIGURATION header.
struct DriveFeatureHeader {
    uint32_t dataLength = 0;
    uint16_t currentProfile = 0;
};

// One feature descriptor of a GET CONFIGURATION reply; `data` points into the reply.
struct LFeatureDescriptor {
    uint16_t code = 0;
    uint8_t version = 0;
    bool persistent = false;
    bool current = false;
    const uint8_t* data = nullptr;
    size_t size = 0;
};

// What the drive can do, in speeds of kilobytes per second.
struct DriveCapabilities {
    bool canWriteCDR = false;
    bool canWriteCDRW = false;
    bool canWriteDVDR = false;
    bool canWriteDVDRW = false;
    bool canWriteDVDPR = false;
    bool canWriteDVDPRDL = false;
    bool canWriteDVDPRW = false;
    bool canWriteDVDPRWDL = false;
    bool canWriteHDDVD = false;
    bool canWriteBD = false;
    bool canErase = false;
    bool canTestWrite = false;
    std::vector<uint32_t> writeSpeeds;
    uint32_t maxReadSpeed = 0;
    uint32_t maxWriteSpeed = 0;
};

// GET PERFORMANCE: the write speeds the drive offers for the loaded disc.
struct LWriteSpeeds {
    std::vector<uint32_t> writeSpeeds;
    uint32_t maxReadSpeed = 0;
    uint32_t maxWriteSpeed = 0;
};

// The write parameters mode page (page 5), 56 bytes as sent.
enum LWriteType : uint8_t {
    WRITE_TYPE_PACKET = 0,
    WRITE_TYPE_TRACK_AT_ONCE = 1,
    WRITE_TYPE_SESSION_AT_ONCE = 2,
    WRITE_TYPE_RAW = 3,
};

struct WriteParamModePage {
    static constexpr size_t kSize = 56;
    bool bufferUnderrunFree = false;
    bool linkSizeValid = false;
    bool testWrite = false;
    uint8_t writeType = WRITE_TYPE_TRACK_AT_ONCE;
    uint8_t multiSession = 0;
    bool fixedPacket = false;
    bool copy = false;
    uint8_t trackMode = 0;
    uint8_t dataBlockType = 0;
    uint8_t linkSize = 0;
    uint8_t applicationCode = 0;
    uint8_t sessionFormat = 0;
    uint32_t packetSize = 0;
    uint16_t audioPause = 0;
    uint8_t mediaCatalogNumber[16] = {};
    uint8_t isrc[16] = {};
    uint8_t subHeader[4] = {};
    uint8_t vendorSpecific[4] = {};

    // The page as MODE SELECT sends it: page code 5, page length 0x36.
    void Encode(uint8_t (&page)[kSize]) const;
};

// READ FORMAT CAPACITIES: the current capacity and up to 31 formattable descriptors.
enum LCapacityType : uint8_t {
    CAPACITY_UNFORMATTED = 1,
    CAPACITY_FORMATTED = 2,
    CAPACITY_NO_MEDIA = 3,
};

struct LFormatDescriptor {
    uint32_t blocks = 0;
    uint8_t formatType = 0;
    uint32_t parameter = 0; // 24 bits, meaning by format type
};

struct LFormatCapacities {
    static constexpr size_t kReplySize = 260;
    uint32_t currentBlocks = 0;
    uint8_t currentType = 0;
    uint32_t currentBlockLength = 0;
    std::vector<LFormatDescriptor> descriptors;
};

// A FORMAT UNIT parameter list: a 4-byte header (descriptor length 8) and one descriptor.
struct SFormat {
    static constexpr size_t kSize = 12;
    uint8_t headerFlags = 0x02; // IMMED: the drive answers at once and formats on its own
    LFormatDescriptor descriptor;

    void Encode(uint8_t (&list)[kSize]) const;
};

// The SET STREAMING performance descriptor.
struct LStreamingDescriptor {
    static constexpr size_t kSize = 28;
    uint8_t flags = 0;
    uint32_t startSector = 0;
    uint32_t endSector = 0;
    uint32_t readSize = 0;
    uint32_t readTime = 0;
    uint32_t writeSize = 0;
    uint32_t writeTime = 0;

    void Encode(uint8_t (&list)[kSize]) const;
};

// Decoders: one per reply, safe on any bytes (a fuzz target calls them directly).
void DecodeATIPInfo(const uint8_t* reply, size_t size, ATIPInfo& out);
void DecodeDiskInformation(const uint8_t* reply, size_t size, DiskInformation& out);
void DecodeTrackInformation(const uint8_t* reply, size_t size, TrackInformation& out);
void DecodeDVDPhysicalFormat(const uint8_t* reply, size_t size, DVDPhysicalFormat& out);
void DecodeFeatureHeader(const uint8_t* reply, size_t size, DriveFeatureHeader& out);
// The descriptor of `code` in a GET CONFIGURATION reply; false when the reply has none.
bool FindFeature(const uint8_t* reply, size_t size, uint16_t code, LFeatureDescriptor& out);
// The profile of the loaded disc: the largest profile marked current in the profile list
// (feature 0), else the header's current profile.
uint16_t DecodeCurrentProfile(const uint8_t* reply, size_t size);
void DecodeWriteParamModePage(const uint8_t* page, size_t size, WriteParamModePage& out);
void DecodeFormatCapacities(const uint8_t* reply, size_t size, LFormatCapacities& out);
// GET PERFORMANCE of type 3 (write speed descriptors) or, with `writeSpeedType` false, of
// type 0 (one nominal performance); false when a type-3 reply holds no descriptor.
bool DecodeWriteSpeeds(const uint8_t* reply, size_t size, bool writeSpeedType, LWriteSpeeds& out);
// The CD writing bits of the capabilities mode page (0x2A), given from its page code on.
void DecodeCapabilitiesPage(const uint8_t* page, size_t size, DriveCapabilities& out);
// MECHANISM STATUS: the changer state (bits 5 and 6 of byte 0); 0 ready.
uint8_t DecodeChangerState(const uint8_t* reply, size_t size);
// READ CAPACITY: the number of sectors (last sector + 1); 0 when the reply is short.
uint32_t DecodeReadCapacity(const uint8_t* reply, size_t size);
// The used size of a disc from a sector it holds: an ISO 9660 primary volume descriptor
// (sector 16) gives its volume space size, a UDF logical volume integrity descriptor (sector
// 64) the sum of its partition sizes; 0 for anything else.
uint32_t DecodeISOVolumeSize(const uint8_t* sector, size_t size);
uint32_t DecodeUDFIntegritySize(const uint8_t* sector, size_t size);
// "VENDOR PRODUCT" of an INQUIRY reply: bytes 8 to 15 and 16 to 31, each cut at the first 0
// and trimmed of spaces.
std::string DecodeInquiryName(const uint8_t* reply, size_t size);
