#include "disc/UDFFileSystem.h"

#include "disc/ISONames.h"
#include "platform/ProgramInfo.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr uint16_t TAG_PRIMARY = 1;
constexpr uint16_t TAG_ANCHOR = 2;
constexpr uint16_t TAG_IMPLEMENTATION_USE = 4;
constexpr uint16_t TAG_PARTITION = 5;
constexpr uint16_t TAG_LOGICAL_VOLUME = 6;
constexpr uint16_t TAG_UNALLOCATED = 7;
constexpr uint16_t TAG_TERMINATING = 8;
constexpr uint16_t TAG_INTEGRITY = 9;
constexpr uint16_t TAG_FILE_SET = 256;
constexpr uint16_t TAG_FILE_IDENTIFIER = 257;
constexpr uint16_t TAG_FILE_ENTRY = 261;
constexpr uint16_t TAG_EXTENDED_ATTRIBUTES = 262;

constexpr uint32_t kMainSequence = 32;
constexpr uint32_t kReserveSequence = 48;
constexpr uint32_t kIntegritySequence = 64;
constexpr uint32_t kAnchor = 256;
constexpr uint32_t kSequenceBytes = 32768;
constexpr uint32_t kMaxExtent = 0x3FFFF800;
constexpr size_t kFileEntryFixed = 176;
constexpr size_t kExtendedAttributes = 132;
constexpr size_t kMaxIdentifierBytes = 255;

constexpr const char* EID_UDFCOMPLIANT = "*OSTA UDF Compliant";
constexpr const char* EID_LVINFO = "*UDF LV Info";
constexpr const char* EID_PARTITION_NSR = "+NSR02";
constexpr const char* EID_EA_FREESPACE = "*UDF FreeEASpace";
constexpr const char* EID_CGMS = "*UDF DVD CGMS Info";
constexpr const char* EID_DEVID = "*Pressdisc";

void Put16(uint8_t* out, uint16_t value) {
    out[0] = static_cast<uint8_t>(value);
    out[1] = static_cast<uint8_t>(value >> 8);
}

void Put32(uint8_t* out, uint32_t value) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}

void Put64(uint8_t* out, uint64_t value) {
    for (int i = 0; i < 8; ++i)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}

// The tag of a descriptor of `length` bytes at `location`: CRC over what follows the tag,
// then the checksum.
void FinishTag(uint8_t* d, uint16_t id, uint32_t location, size_t length) {
    Put16(d, id);
    Put16(d + 2, 2);
    Put16(d + 6, 1);
    const size_t crcLength = length - 16;
    Put16(d + 8, LUDFFileSystem::CalculateCRC(d + 16, crcLength));
    Put16(d + 10, static_cast<uint16_t>(crcLength));
    Put32(d + 12, location);
    uint8_t sum = 0;
    for (int i = 0; i < 16; ++i)
        if (i != 4) sum = static_cast<uint8_t>(sum + d[i]);
    d[4] = sum;
}

void Timestamp(uint8_t* out, std::time_t when) {
    std::tm utc {};
    gmtime_r(&when, &utc);
    Put16(out, 0x1801);
    Put16(out + 2, static_cast<uint16_t>(utc.tm_year + 1900));
    out[4] = static_cast<uint8_t>(utc.tm_mon + 1);
    out[5] = static_cast<uint8_t>(utc.tm_mday);
    out[6] = static_cast<uint8_t>(utc.tm_hour);
    out[7] = static_cast<uint8_t>(utc.tm_min);
    out[8] = static_cast<uint8_t>(utc.tm_sec);
}

void Charspec(uint8_t* out) {
    out[0] = 0;
    std::memcpy(out + 1, "OSTA Compressed Unicode", 23);
}

enum class EntityKind { Domain, Udf, Implementation, Plain };

void Entity(uint8_t* out, const char* identifier, EntityKind kind) {
    std::memcpy(out + 1, identifier, std::min<size_t>(std::strlen(identifier), 23));
    if (kind == EntityKind::Domain || kind == EntityKind::Udf) {
        out[24] = 0x02;
        out[25] = 0x01;
    }
    if (kind == EntityKind::Domain) out[26] = 3; // hard and soft write protected
}

// A d-string of `width` bytes: the compressed text, its used length in the last byte.
void Dstring(uint8_t* out, size_t width, const std::string& compressed) {
    if (compressed.size() <= 1) return;
    const size_t used = std::min(compressed.size(), width - 1);
    std::memcpy(out, compressed.data(), used);
    out[width - 1] = static_cast<uint8_t>(used);
}

void LongAd(uint8_t* out, uint32_t length, uint32_t location) {
    Put32(out, length);
    Put32(out + 4, location);
    Put16(out + 8, 0);
}

// An implementation use extended attribute with `useLength` bytes of its own, the first two
// of them the 16-bit checksum of its 48-byte header.
void ImplementationAttribute(uint8_t* out, const char* identifier, uint32_t useLength) {
    Put32(out, 2048);
    out[4] = 1;
    Put32(out + 8, 48 + useLength);
    Put32(out + 12, useLength);
    Entity(out + 16, identifier, EntityKind::Udf);
    uint16_t sum = 0;
    for (int i = 0; i < 48; ++i)
        sum = static_cast<uint16_t>(sum + out[i]);
    Put16(out + 48, sum);
}

uint16_t CrcTableEntry(int index) {
    uint16_t crc = static_cast<uint16_t>(index << 8);
    for (int bit = 0; bit < 8; ++bit)
        crc = static_cast<uint16_t>(crc & 0x8000 ? (crc << 1) ^ 0x1021 : crc << 1);
    return crc;
}

struct CrcTable {
    uint16_t values[256];
    CrcTable() {
        for (int i = 0; i < 256; ++i)
            values[i] = CrcTableEntry(i);
    }
};

// An anchor volume descriptor pointer to both descriptor sequences.
void Anchor(uint8_t* d, uint32_t location) {
    Put32(d + 16, kSequenceBytes);
    Put32(d + 20, kMainSequence);
    Put32(d + 24, kSequenceBytes);
    Put32(d + 28, kReserveSequence);
    FinishTag(d, TAG_ANCHOR, location, 512);
}

uint32_t Sectors(uint64_t bytes) {
    return static_cast<uint32_t>((bytes + kSectorSize - 1) / kSectorSize);
}

} // namespace

uint16_t LUDFFileSystem::CalculateCRC(const uint8_t* data, size_t size) {
    static const CrcTable table;
    uint16_t crc = 0;
    for (size_t i = 0; i < size; ++i)
        crc = static_cast<uint16_t>(table.values[((crc >> 8) ^ data[i]) & 0xFF] ^ (crc << 8));
    return crc;
}

LUDFFileSystem::LUDFFileSystem(bool unicode) : unicode_(unicode) {}

std::string LUDFFileSystem::Compressed(const std::string& utf8) const {
    const std::string units = LCopyToBigEndianUnicode(utf8);
    std::string out(1, static_cast<char>(unicode_ ? 16 : 8));
    for (size_t i = 0; i + 1 < units.size(); i += 2) {
        if (unicode_) {
            out += units[i];
            out += units[i + 1];
        } else {
            out += units[i + 1];
        }
    }
    // Never more than an identifier may hold, never half a character.
    size_t limit = kMaxIdentifierBytes;
    if (unicode_) limit -= (limit - 1) % 2;
    out.resize(std::min(out.size(), limit));
    return out;
}

void LUDFFileSystem::LoadFileSystem(const LAbstractFileSystem& compilation) {
    label_ = compilation.VolumeLabel();
    root_ = &compilation.Root();
}

size_t LUDFFileSystem::IdentifierLength(const std::string& identifier) {
    return (38 + identifier.size() + 3) / 4 * 4;
}

size_t LUDFFileSystem::CompressedSize(const std::string& utf8) const {
    return 1 + LCopyToBigEndianUnicode(utf8).size() / 2 * (unicode_ ? 2 : 1);
}

std::string LUDFFileSystem::Unclashed(const std::string& name,
                                      const std::unordered_set<std::string>& taken) const {
    std::string base;
    std::string extension;
    SplitFileName(name, base, extension);
    // An extension that leaves no room for a number is taken as part of the base.
    if (CompressedSize(extension) + 8 > kMaxIdentifierBytes) {
        base = name;
        extension.clear();
    }
    for (int number = 2;; ++number) {
        const std::string suffix = std::to_string(number);
        std::string cut = base;
        while (!cut.empty() && CompressedSize(cut + suffix + extension) > kMaxIdentifierBytes)
            cut = CutUTF8(cut, cut.size() - 1);
        std::string identifier = Compressed(cut + suffix + extension);
        if (!taken.count(identifier)) return identifier;
    }
}

void LUDFFileSystem::Collect(const LAbstractBurnFile& folder) {
    // Names are cut to what an identifier holds; a cut name that another item of the folder
    // has already gets a number, as the compilation renames clashes.
    std::unordered_set<std::string> taken;
    std::vector<std::string> identifiers;
    for (const auto& [name, child] : folder.children) {
        std::string identifier = Compressed(child->name);
        if (taken.count(identifier)) identifier = Unclashed(child->name, taken);
        taken.insert(identifier);
        identifiers.push_back(std::move(identifier));
    }
    auto identifier = identifiers.begin();
    for (const auto& [name, child] : folder.children) {
        index_[child.get()] = nodes_.size();
        nodes_.push_back({child.get(), std::move(*identifier++)});
        if (child->folder) Collect(*child);
    }
}

uint32_t LUDFFileSystem::GetFSSize() {
    nodes_.clear();
    index_.clear();
    index_[root_] = 0;
    nodes_.push_back({root_, {}});
    Collect(*root_);
    // The file set descriptor and its terminator, then each item's file entry, a folder's
    // identifier descriptors right after its entry.
    uint32_t next = 2;
    files_ = folders_ = 0;
    for (size_t i = 0; i < nodes_.size(); ++i) {
        Node& node = nodes_[i];
        node.uniqueId = i == 0 ? 0 : (i < 16 ? 16 : i);
        node.entry = next++;
        if (!node.item->folder) {
            ++files_;
            continue;
        }
        ++folders_;
        node.directoryBytes = static_cast<uint32_t>(IdentifierLength({}));
        for (const auto& [name, child] : node.item->children)
            node.directoryBytes +=
                static_cast<uint32_t>(IdentifierLength(NodeOf(child.get()).identifier));
        node.directory = next;
        next += Sectors(node.directoryBytes);
    }
    sectors_ = next;
    return sectors_;
}

const LUDFFileSystem::Node& LUDFFileSystem::NodeOf(const LAbstractBurnFile* item) const {
    return nodes_[index_.at(item)];
}

void LUDFFileSystem::WriteFileEntry(LBufferVector& area, size_t offset, const Node& node,
                                    uint32_t partitionStart, std::time_t now) const {
    const LAbstractBurnFile& item = *node.item;
    uint64_t length = item.folder ? node.directoryBytes : item.size;
    const uint32_t first = item.folder ? node.directory : item.sector - partitionStart;
    const uint32_t extents = std::max<uint32_t>(1, static_cast<uint32_t>((length + kMaxExtent - 1) / kMaxExtent));
    const size_t size = kFileEntryFixed + kExtendedAttributes + 8 * extents;
    std::vector<uint8_t> d(std::max<size_t>(size, kSectorSize), 0);
    // The ICB tag.
    Put16(&d[20], 4);
    Put16(&d[24], 1);
    d[27] = item.folder ? 4 : 5;
    Put16(&d[34], 0x0230);
    Put32(&d[36], 0xFFFFFFFF);
    Put32(&d[40], 0xFFFFFFFF);
    Put32(&d[44], 0x14A5);
    Put16(&d[48], 1);
    Put64(&d[56], length);
    Put64(&d[64], Sectors(length));
    const std::time_t date = node.item == root_ ? now : item.date;
    Timestamp(&d[72], date);
    Timestamp(&d[84], date);
    Timestamp(&d[96], date);
    Put32(&d[108], 1);
    Entity(&d[128], EID_DEVID, EntityKind::Implementation);
    Put64(&d[160], node.uniqueId);
    Put32(&d[168], kExtendedAttributes);
    Put32(&d[172], 8 * extents);

    uint8_t* ea = &d[kFileEntryFixed];
    Put32(ea + 16, 24);
    Put32(ea + 20, kExtendedAttributes);
    FinishTag(ea, TAG_EXTENDED_ATTRIBUTES, node.entry, 24);
    ImplementationAttribute(ea + 24, EID_EA_FREESPACE, 4);
    ImplementationAttribute(ea + 24 + 52, EID_CGMS, 8);

    uint8_t* ad = ea + kExtendedAttributes;
    for (uint32_t e = 0; e < extents; ++e) {
        const uint64_t done = static_cast<uint64_t>(e) * kMaxExtent;
        Put32(ad + 8 * e, static_cast<uint32_t>(std::min<uint64_t>(length - std::min(length, done), kMaxExtent)));
        Put32(ad + 8 * e + 4, first + static_cast<uint32_t>(done / kSectorSize));
    }
    FinishTag(d.data(), TAG_FILE_ENTRY, node.entry, size);
    area.WriteAt(offset, d.data(), size);
}

void LUDFFileSystem::WriteDirectory(LBufferVector& area, size_t offset, const Node& node) const {
    std::vector<uint8_t> stream(node.directoryBytes, 0);
    size_t at = 0;
    const auto add = [&](const LAbstractBurnFile* child, const Node& target,
                         uint8_t characteristics) {
        const std::string name = child ? NodeOf(child).identifier : std::string();
        uint8_t* d = &stream[at];
        Put16(d + 16, 1);
        d[18] = characteristics;
        d[19] = static_cast<uint8_t>(name.size());
        LongAd(d + 20, kSectorSize, target.entry);
        std::memcpy(d + 38, name.data(), name.size());
        // The CRC covers the padding as well.
        const size_t length = IdentifierLength(name);
        FinishTag(d, TAG_FILE_IDENTIFIER, node.directory + static_cast<uint32_t>(at / kSectorSize),
                  length);
        at += length;
    };
    const LAbstractBurnFile* parent = node.item->parent ? node.item->parent : node.item;
    add(nullptr, NodeOf(parent), 8);
    for (const auto& [name, child] : node.item->children)
        add(child.get(), NodeOf(child.get()), child->folder ? 2 : 0);
    area.WriteAt(offset, stream.data(), stream.size());
}

void LUDFFileSystem::BuildFileSystemArea(LBufferVector& area, uint32_t areaSector,
                                         uint32_t partitionStart, std::time_t now) const {
    const size_t base = static_cast<size_t>(partitionStart - areaSector) * kSectorSize;
    uint8_t d[kSectorSize] = {};
    Timestamp(d + 16, now);
    Put16(d + 28, 3);
    Put16(d + 30, 3);
    Put32(d + 32, 1);
    Put32(d + 36, 1);
    Charspec(d + 48);
    Dstring(d + 112, 128, Compressed(label_));
    Charspec(d + 240);
    Dstring(d + 304, 32, Compressed(label_));
    LongAd(d + 400, kSectorSize, NodeOf(root_).entry);
    Entity(d + 416, EID_UDFCOMPLIANT, EntityKind::Domain);
    FinishTag(d, TAG_FILE_SET, 0, 512);
    area.WriteAt(base, d, kSectorSize);
    uint8_t terminator[kSectorSize] = {};
    FinishTag(terminator, TAG_TERMINATING, 1, 512);
    area.WriteAt(base + kSectorSize, terminator, kSectorSize);
    for (const Node& node : nodes_) {
        WriteFileEntry(area, base + static_cast<size_t>(node.entry) * kSectorSize, node, partitionStart, now);
        if (node.item->folder)
            WriteDirectory(area, base + static_cast<size_t>(node.directory) * kSectorSize, node);
    }
    area.SetPosition(std::max(area.Position(), base + static_cast<size_t>(sectors_) * kSectorSize));
}

void LUDFFileSystem::WriteVolumeSequence(LBufferVector& system, uint32_t first,
                                         uint32_t partitionStart, uint32_t partitionLength,
                                         std::time_t now) const {
    const auto put = [&](uint32_t index, uint8_t* d, uint16_t tag, size_t length) {
        Put32(d + 16, index);
        FinishTag(d, tag, first + index, length);
        system.WriteAt(static_cast<size_t>(first + index) * kSectorSize, d, kSectorSize);
    };
    const std::string label = Compressed(label_);
    {
        uint8_t d[kSectorSize] = {};
        Dstring(d + 24, 32, label);
        Put16(d + 56, 1);
        Put16(d + 58, 1);
        Put16(d + 60, 2);
        Put16(d + 62, 2);
        Put32(d + 64, 1);
        Put32(d + 68, 1);
        char volumeSet[64];
        std::snprintf(volumeSet, sizeof volumeSet, "%08x %s", 1u, kProgramName);
        Dstring(d + 72, 128, Compressed(volumeSet));
        Charspec(d + 200);
        Charspec(d + 264);
        Timestamp(d + 376, now);
        Entity(d + 388, EID_DEVID, EntityKind::Implementation);
        put(0, d, TAG_PRIMARY, 512);
    }
    {
        uint8_t d[kSectorSize] = {};
        Entity(d + 20, EID_LVINFO, EntityKind::Udf);
        Charspec(d + 52);
        Dstring(d + 116, 128, label);
        Entity(d + 352, EID_DEVID, EntityKind::Implementation);
        put(1, d, TAG_IMPLEMENTATION_USE, 512);
    }
    {
        uint8_t d[kSectorSize] = {};
        Put16(d + 20, 1);
        Entity(d + 24, EID_PARTITION_NSR, EntityKind::Plain);
        Put32(d + 184, 1);
        Put32(d + 188, partitionStart);
        Put32(d + 192, partitionLength);
        Entity(d + 196, EID_DEVID, EntityKind::Implementation);
        put(2, d, TAG_PARTITION, 512);
    }
    {
        uint8_t d[kSectorSize] = {};
        Charspec(d + 20);
        Dstring(d + 84, 128, label);
        Put32(d + 212, kSectorSize);
        Entity(d + 216, EID_UDFCOMPLIANT, EntityKind::Domain);
        LongAd(d + 248, 2 * kSectorSize, 0);
        Put32(d + 264, 6);
        Put32(d + 268, 1);
        Entity(d + 272, EID_DEVID, EntityKind::Implementation);
        Put32(d + 432, 2 * kSectorSize);
        Put32(d + 436, kIntegritySequence);
        d[440] = 1;
        d[441] = 6;
        Put16(d + 442, 1);
        Put16(d + 444, 0);
        put(3, d, TAG_LOGICAL_VOLUME, 446);
    }
    {
        uint8_t d[kSectorSize] = {};
        put(4, d, TAG_UNALLOCATED, 24);
    }
    {
        uint8_t d[kSectorSize] = {};
        FinishTag(d, TAG_TERMINATING, first + 5, 512);
        system.WriteAt(static_cast<size_t>(first + 5) * kSectorSize, d, kSectorSize);
    }
}

void LUDFFileSystem::BuildSystemArea(LBufferVector& system, uint32_t recognitionSector,
                                     uint32_t partitionStart, uint32_t partitionLength,
                                     std::time_t now) const {
    for (const char* identifier : {"BEA01", "NSR02", "TEA01"}) {
        uint8_t d[kSectorSize] = {};
        std::memcpy(d + 1, identifier, 5);
        d[6] = 1;
        system.WriteAt(static_cast<size_t>(recognitionSector++) * kSectorSize, d, kSectorSize);
    }
    WriteVolumeSequence(system, kMainSequence, partitionStart, partitionLength, now);
    WriteVolumeSequence(system, kReserveSequence, partitionStart, partitionLength, now);

    uint8_t d[kSectorSize] = {};
    Timestamp(d + 16, now);
    Put32(d + 28, 1);
    Put64(d + 40, nodes_.size() + 16);
    Put32(d + 72, 1);
    Put32(d + 76, 48);
    Put32(d + 80, 0);
    Put32(d + 84, partitionLength);
    Entity(d + 88, EID_DEVID, EntityKind::Implementation);
    Put32(d + 120, files_);
    Put32(d + 124, folders_);
    Put16(d + 128, 0x0102);
    Put16(d + 130, 0x0102);
    Put16(d + 132, 0x0102);
    FinishTag(d, TAG_INTEGRITY, kIntegritySequence, 136);
    system.WriteAt(static_cast<size_t>(kIntegritySequence) * kSectorSize, d, kSectorSize);
    uint8_t terminator[kSectorSize] = {};
    FinishTag(terminator, TAG_TERMINATING, kIntegritySequence + 1, 512);
    system.WriteAt(static_cast<size_t>(kIntegritySequence + 1) * kSectorSize, terminator, kSectorSize);

    uint8_t anchor[kSectorSize] = {};
    Anchor(anchor, kAnchor);
    system.WriteAt(static_cast<size_t>(kAnchor) * kSectorSize, anchor, kSectorSize);
}

void LUDFFileSystem::BuildClosingArea(LBufferVector& closing, uint32_t lastSector) const {
    uint8_t anchor[kSectorSize] = {};
    Anchor(anchor, lastSector);
    closing.AddData(anchor, kSectorSize);
}
