#include "disc/SCSIRecords.h"

#include "disc/SCSIBytes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

// The first N bytes of a reply, zero beyond what arrived: every decoder reads from this, so a
// short or empty reply leaves the later fields 0.
template <size_t N>
std::array<uint8_t, N> Padded(const uint8_t* reply, size_t size) {
    std::array<uint8_t, N> bytes{};
    if (reply) std::memcpy(bytes.data(), reply, std::min(size, N));
    return bytes;
}

bool Bit(uint8_t byte, int bit) {
    return (byte >> bit) & 1;
}

uint32_t LE32(const uint8_t* p) {
    return p[0] | p[1] << 8 | p[2] << 16 | uint32_t{p[3]} << 24;
}

LMSF MSFAt(const uint8_t* p) {
    return {p[0], p[1], p[2]};
}

std::string TrimmedField(const uint8_t* p, size_t width) {
    std::string text(reinterpret_cast<const char*>(p), width);
    text = text.substr(0, text.find('\0'));
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

bool LMSF::IsSet() const {
    const bool zero = minutes == 0 && seconds == 0 && frames == 0;
    const bool ones = minutes == 0xFF && seconds == 0xFF && frames == 0xFF;
    return !zero && !ones;
}

LMSF DiskInformation::LeadOutMSF() const {
    return {static_cast<uint8_t>(lastPossibleLeadOut >> 16),
            static_cast<uint8_t>(lastPossibleLeadOut >> 8),
            static_cast<uint8_t>(lastPossibleLeadOut)};
}

void DecodeATIPInfo(const uint8_t* reply, size_t size, ATIPInfo& out) {
    const auto b = Padded<32>(reply, size);
    out = {};
    out.dataLength = MMCGet16(&b[0]);
    out.writingPower = (b[4] >> 4) & 7;
    out.erasable = Bit(b[6], 6);
    out.discSubType = (b[6] >> 3) & 7;
    out.leadInStart = MSFAt(&b[8]);
    out.leadOutStart = MSFAt(&b[12]);
}

void DecodeDiskInformation(const uint8_t* reply, size_t size, DiskInformation& out) {
    const auto b = Padded<34>(reply, size);
    out = {};
    out.dataLength = MMCGet16(&b[0]);
    out.erasable = Bit(b[2], 4);
    out.lastSessionState = (b[2] >> 2) & 3;
    out.discStatus = b[2] & 3;
    out.firstTrack = b[3];
    out.sessions = static_cast<uint16_t>(b[9] << 8 | b[4]);
    out.firstTrackInLastSession = static_cast<uint16_t>(b[10] << 8 | b[5]);
    out.lastTrackInLastSession = static_cast<uint16_t>(b[11] << 8 | b[6]);
    out.discIdValid = Bit(b[7], 7);
    out.barCodeValid = Bit(b[7], 6);
    out.unrestrictedUse = Bit(b[7], 5);
    out.applicationCodeValid = Bit(b[7], 4);
    out.dirty = Bit(b[7], 2);
    out.backgroundFormat = b[7] & 3;
    out.discType = b[8];
    out.discId = MMCGet32(&b[12]);
    out.lastSessionLeadIn = MMCGet32(&b[16]);
    out.lastPossibleLeadOut = MMCGet32(&b[20]);
    out.barCode = uint64_t{MMCGet32(&b[24])} << 32 | MMCGet32(&b[28]);
    out.applicationCode = b[32];
    out.opcTables = b[33];
}

void DecodeTrackInformation(const uint8_t* reply, size_t size, TrackInformation& out) {
    const auto b = Padded<36>(reply, size);
    out = {};
    out.dataLength = MMCGet16(&b[0]);
    out.track = static_cast<uint16_t>(b[32] << 8 | b[2]);
    out.session = static_cast<uint16_t>(b[33] << 8 | b[3]);
    out.damage = Bit(b[5], 5);
    out.copy = Bit(b[5], 4);
    out.trackMode = b[5] & 0x0F;
    out.reserved = Bit(b[6], 7);
    out.blank = Bit(b[6], 6);
    out.packet = Bit(b[6], 5);
    out.fixedPacket = Bit(b[6], 4);
    out.dataMode = b[6] & 0x0F;
    out.lastRecordedValid = Bit(b[7], 1);
    out.nextWritableValid = Bit(b[7], 0);
    out.start = MMCGet32(&b[8]);
    out.nextWritable = out.nextWritableValid ? MMCGet32(&b[12]) : 0;
    out.freeBlocks = MMCGet32(&b[16]);
    out.fixedPacketSize = MMCGet32(&b[20]);
    out.size = MMCGet32(&b[24]);
    out.lastRecorded = MMCGet32(&b[28]);
}

void DecodeDVDPhysicalFormat(const uint8_t* reply, size_t size, DVDPhysicalFormat& out) {
    const auto b = Padded<DVDPhysicalFormat::kSize>(reply, size);
    out = {};
    out.bytes.assign(b.begin(), b.end());
    out.dataLength = MMCGet16(&b[0]);
    out.bookType = b[4] >> 4;
    out.partVersion = b[4] & 0x0F;
    out.discSize = b[5] >> 4;
    out.maximumRate = b[5] & 0x0F;
    out.layers = (b[6] >> 5) & 3;
    out.trackPath = Bit(b[6], 4);
    out.layerType = b[6] & 0x0F;
    out.linearDensity = b[7] >> 4;
    out.trackDensity = b[7] & 0x0F;
    out.startSector = MMCGet24(&b[9]);
    out.endSector = MMCGet24(&b[13]);
    out.layer0EndSector = MMCGet24(&b[17]);
    out.burstCuttingArea = Bit(b[20], 7);
}

void DecodeFeatureHeader(const uint8_t* reply, size_t size, DriveFeatureHeader& out) {
    const auto b = Padded<8>(reply, size);
    out.dataLength = MMCGet32(&b[0]);
    out.currentProfile = MMCGet16(&b[6]);
}

bool FindFeature(const uint8_t* reply, size_t size, uint16_t code, LFeatureDescriptor& out) {
    if (!reply || size < 8) return false;
    const size_t end = std::min<uint64_t>(size, uint64_t{4} + MMCGet32(reply));
    for (size_t at = 8; at + 4 <= end;) {
        const uint8_t* d = reply + at;
        const size_t length = d[3];
        if (MMCGet16(d) == code) {
            out.code = code;
            out.version = (d[2] >> 2) & 0x0F;
            out.persistent = Bit(d[2], 1);
            out.current = Bit(d[2], 0);
            out.data = d + 4;
            out.size = std::min(length, end - at - 4);
            return true;
        }
        at += 4 + length;
    }
    return false;
}

uint16_t DecodeCurrentProfile(const uint8_t* reply, size_t size) {
    DriveFeatureHeader header;
    DecodeFeatureHeader(reply, size, header);
    LFeatureDescriptor profiles;
    uint16_t current = 0;
    if (FindFeature(reply, size, 0x0000, profiles)) {
        for (size_t at = 0; at + 4 <= profiles.size; at += 4) {
            const uint16_t profile = MMCGet16(profiles.data + at);
            if (Bit(profiles.data[at + 2], 0)) current = std::max(current, profile);
        }
    }
    return current ? current : header.currentProfile;
}

void DecodeWriteParamModePage(const uint8_t* page, size_t size, WriteParamModePage& out) {
    const auto b = Padded<WriteParamModePage::kSize>(page, size);
    out = {};
    out.bufferUnderrunFree = Bit(b[2], 6);
    out.linkSizeValid = Bit(b[2], 5);
    out.testWrite = Bit(b[2], 4);
    out.writeType = b[2] & 0x0F;
    out.multiSession = b[3] >> 6;
    out.fixedPacket = Bit(b[3], 5);
    out.copy = Bit(b[3], 4);
    out.trackMode = b[3] & 0x0F;
    out.dataBlockType = b[4] & 0x0F;
    out.linkSize = b[5];
    out.applicationCode = b[7] & 0x3F;
    out.sessionFormat = b[8];
    out.packetSize = MMCGet32(&b[10]);
    out.audioPause = MMCGet16(&b[14]);
    std::memcpy(out.mediaCatalogNumber, &b[16], 16);
    std::memcpy(out.isrc, &b[32], 16);
    std::memcpy(out.subHeader, &b[48], 4);
    std::memcpy(out.vendorSpecific, &b[52], 4);
}

void DecodeFormatCapacities(const uint8_t* reply, size_t size, LFormatCapacities& out) {
    const auto b = Padded<LFormatCapacities::kReplySize>(reply, size);
    out = {};
    const size_t listLength = b[3];
    if (listLength < 8) return;
    out.currentBlocks = MMCGet32(&b[4]);
    out.currentType = b[8] & 3;
    out.currentBlockLength = MMCGet24(&b[9]);
    const size_t available = std::min(size, LFormatCapacities::kReplySize);
    for (size_t at = 12; at + 8 <= std::min(available, 4 + listLength); at += 8)
        out.descriptors.push_back({MMCGet32(&b[at]), static_cast<uint8_t>(b[at + 4] >> 2),
                                   MMCGet24(&b[at + 5])});
}

bool DecodeWriteSpeeds(const uint8_t* reply, size_t size, bool writeSpeedType, LWriteSpeeds& out) {
    constexpr size_t kDescriptors = 20;
    const auto b = Padded<8 + kDescriptors * 16>(reply, size);
    out = {};
    const size_t available = std::min(size, b.size());
    if (!writeSpeedType) {
        if (available < 16) return false;
        const uint32_t speed = MMCGet32(&b[12]);
        out.writeSpeeds = {speed};
        out.maxReadSpeed = out.maxWriteSpeed = speed;
        return true;
    }
    const size_t count = std::min<uint64_t>({MMCGet32(&b[0]) / 16, kDescriptors,
                                             available < 8 ? 0 : (available - 8) / 16});
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* d = &b[8 + i * 16];
        out.writeSpeeds.push_back(MMCGet32(d + 12));
        out.maxReadSpeed = std::max(out.maxReadSpeed, MMCGet32(d + 8));
        out.maxWriteSpeed = std::max(out.maxWriteSpeed, MMCGet32(d + 12));
    }
    return count > 0;
}

void DecodeCapabilitiesPage(const uint8_t* page, size_t size, DriveCapabilities& out) {
    const auto b = Padded<22>(page, size);
    out.canWriteCDR = Bit(b[3], 0);
    out.canWriteCDRW = Bit(b[3], 1);
    out.canTestWrite = out.canTestWrite || Bit(b[3], 2);
    out.canErase = out.canErase || out.canWriteCDRW;
    out.maxReadSpeed = std::max<uint32_t>(out.maxReadSpeed, MMCGet16(&b[8]));
    out.maxWriteSpeed = std::max<uint32_t>(out.maxWriteSpeed, MMCGet16(&b[18]));
}

uint8_t DecodeChangerState(const uint8_t* reply, size_t size) {
    return reply && size > 0 ? (reply[0] >> 5) & 3 : 0;
}

uint32_t DecodeReadCapacity(const uint8_t* reply, size_t size) {
    if (!reply || size < 8) return 0;
    const uint32_t last = MMCGet32(reply);
    return last == 0xFFFFFFFF ? last : last + 1;
}

uint32_t DecodeISOVolumeSize(const uint8_t* sector, size_t size) {
    if (!sector || size < 84 || sector[0] != 1 || std::memcmp(sector + 1, "CD001", 5) != 0)
        return 0;
    return LE32(sector + 80);
}

uint32_t DecodeUDFIntegritySize(const uint8_t* sector, size_t size) {
    constexpr uint16_t kIntegrityTag = 9;
    if (!sector || size < 80 || (sector[0] | sector[1] << 8) != kIntegrityTag) return 0;
    uint8_t checksum = 0;
    for (int i = 0; i < 16; ++i)
        if (i != 4) checksum = static_cast<uint8_t>(checksum + sector[i]);
    if (checksum != sector[4]) return 0;
    const uint64_t partitions = LE32(sector + 72);
    if (partitions > (size - 80) / 8) return 0;
    uint64_t total = 0;
    for (uint64_t i = 0; i < partitions; ++i) total += LE32(sector + 80 + 4 * (partitions + i));
    return static_cast<uint32_t>(std::min<uint64_t>(total, 0xFFFFFFFF));
}

std::string DecodeInquiryName(const uint8_t* reply, size_t size) {
    const auto b = Padded<36>(reply, size);
    const std::string vendor = TrimmedField(&b[8], 8);
    const std::string product = TrimmedField(&b[16], 16);
    return vendor.empty() || product.empty() ? vendor + product : vendor + " " + product;
}
