#include "disc/ISOJolietFileSystem.h"

#include "disc/ISONames.h"
#include "disc/ImageClock.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr uint32_t kMaxFolders = 65535;
// Data lengths in directory records are 32-bit.
constexpr uint64_t kMaxFileSize = 0xFFFFFFFFull;

uint32_t RoundUp(uint32_t bytes) {
    return (bytes + kSectorSize - 1) / kSectorSize * kSectorSize;
}

size_t RecordLength(size_t identifierLength) {
    return 33 + identifierLength + (identifierLength % 2 == 0 ? 1 : 0);
}

// Where a record of `length` bytes starts when it may not cross a sector boundary.
size_t RecordStart(size_t offset, size_t length) {
    if (offset % kSectorSize + length > kSectorSize) return RoundUp(static_cast<uint32_t>(offset));
    return offset;
}

void Store32LE(uint8_t* out, uint32_t value) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}

void Store32BE(uint8_t* out, uint32_t value) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

void Store16(uint8_t* out, uint16_t value, bool bigEndian) {
    out[bigEndian ? 1 : 0] = static_cast<uint8_t>(value);
    out[bigEndian ? 0 : 1] = static_cast<uint8_t>(value >> 8);
}

// Fills a text field with spaces, in UCS-2 for Joliet (an odd width ends with a 0 byte).
void Spaces(uint8_t* out, size_t width, bool joliet) {
    for (size_t i = 0; i < width; ++i)
        out[i] = joliet ? (i % 2 ? 0x20 : 0x00) : 0x20;
    if (joliet && width % 2) out[width - 1] = 0;
}

void StoreRecordDate(uint8_t* out, std::time_t date) {
    std::tm utc {};
    gmtime_r(&date, &utc);
    out[0] = static_cast<uint8_t>(utc.tm_year);
    out[1] = static_cast<uint8_t>(utc.tm_mon + 1);
    out[2] = static_cast<uint8_t>(utc.tm_mday);
    out[3] = static_cast<uint8_t>(utc.tm_hour);
    out[4] = static_cast<uint8_t>(utc.tm_min);
    out[5] = static_cast<uint8_t>(utc.tm_sec);
    out[6] = 0;
}

// The folders of a tree, the top one included.
size_t CountFolders(const LAbstractBurnFile& folder) {
    size_t count = 1;
    for (const auto& [name, child] : folder.children)
        if (child->folder) count += CountFolders(*child);
    return count;
}

} // namespace

void LISOStoreLSBMSBValue32(uint8_t* out, uint32_t value) {
    Store32LE(out, value);
    Store32BE(out + 4, value);
}

void LISOStoreLSBMSBValue16(uint8_t* out, uint16_t value) {
    Store16(out, value, false);
    Store16(out + 2, value, true);
}

LISOJolietFileSystem::LISOJolietFileSystem(bool joliet) : joliet_(joliet) {}

bool LISOJolietFileSystem::LoadFileSystem(const LAbstractFileSystem& compilation, std::string& error) {
    // The path table numbers the folders with 16 bits.
    if (const size_t folders = CountFolders(compilation.Root()); folders > kMaxFolders) {
        error = "the disc would hold " + std::to_string(folders) +
                " folders, more than the 65535 that ISO 9660 can number";
        return false;
    }
    label_ = compilation.VolumeLabel();
    root_ = std::make_unique<LISOJolietDataFile>();
    root_->folder = true;
    root_->joliet = joliet_;
    root_->name = std::string(1, '\0');
    root_->source = &compilation.Root();
    root_->date = compilation.Root().date;
    return Copy(compilation.Root(), *root_, error);
}

bool LISOJolietFileSystem::Copy(const LAbstractBurnFile& from, LISOJolietDataFile& to,
                                std::string& error) {
    for (const auto& [name, child] : from.children) {
        if (!child->folder && child->size > kMaxFileSize && !joliet_) {
            error = "\"" + child->sourcePath + "\" is 4 GB or larger, too large for ISO 9660";
            return false;
        }
        auto item = std::make_unique<LISOJolietDataFile>();
        item->joliet = joliet_;
        item->folder = child->folder;
        item->name = joliet_ ? LJolietName(child->name) : LISOName(child->name, child->folder);
        item->size = child->size;
        item->allocatedSize = child->allocatedSize;
        item->date = child->date;
        item->sourcePath = child->sourcePath;
        item->source = child.get();
        LISOJolietDataFile* added = to.AddSubFile(std::move(item));
        if (!added) {
            error = "too many names in \"" + from.sourcePath + "\" are alike as " +
                    (joliet_ ? "Joliet" : "ISO 9660") + " names";
            return false;
        }
        if (child->folder && !Copy(*child, *added, error)) return false;
    }
    return true;
}

std::string LISOJolietFileSystem::Identifier(const LISOJolietDataFile& item) const {
    const std::string text = item.folder ? item.name : item.name + ";1";
    return joliet_ ? LCopyToBigEndianUnicode(text) : text;
}

uint32_t LISOJolietFileSystem::MeasureFolder(const LISOJolietDataFile& folder) const {
    size_t offset = 2 * RecordLength(1);
    for (const auto& [name, child] : folder.children) {
        const size_t length = RecordLength(Identifier(*child).size());
        offset = RecordStart(offset, length) + length;
    }
    return RoundUp(static_cast<uint32_t>(offset));
}

void LISOJolietFileSystem::MeasureAll(LISOJolietDataFile& folder) {
    folder.directorySize = MeasureFolder(folder);
    directorySectors_ += folder.directorySize / kSectorSize;
    for (auto& [name, child] : folder.children)
        if (child->folder) MeasureAll(*child);
}

uint32_t LISOJolietFileSystem::BuildSystemArea() {
    directorySectors_ = 0;
    MeasureAll(*root_);
    // Path table order: the root, then each depth's folders by their parents' order.
    pathOrder_ = {root_.get()};
    for (size_t at = 0; at < pathOrder_.size(); ++at)
        for (auto& [name, child] : pathOrder_[at]->children)
            if (child->folder) pathOrder_.push_back(child.get());
    pathTableSize_ = 0;
    for (size_t i = 0; i < pathOrder_.size(); ++i) {
        pathOrder_[i]->directoryNumber = static_cast<uint16_t>(i + 1);
        const size_t length = i == 0 ? 1 : Identifier(*pathOrder_[i]).size();
        pathTableSize_ += static_cast<uint32_t>(8 + length + length % 2);
    }
    return 2 * (RoundUp(pathTableSize_) / kSectorSize);
}

uint32_t LISOJolietFileSystem::PlaceFolder(LISOJolietDataFile& folder, uint32_t next) {
    folder.sector = next;
    next += folder.directorySize / kSectorSize;
    for (auto& [name, child] : folder.children)
        if (child->folder) next = PlaceFolder(*child, next);
    return next;
}

uint32_t LISOJolietFileSystem::BuildFileSystemArea(uint32_t first) {
    return PlaceFolder(*root_, first);
}

void LISOJolietFileSystem::WriteRecord(LBufferVector& area, const LISOJolietDataFile& item,
                                       const std::string& identifier, std::time_t date) const {
    uint8_t record[256] = {};
    const size_t length = RecordLength(identifier.size());
    record[0] = static_cast<uint8_t>(length);
    const uint32_t sector = item.folder ? item.sector : item.source->sector;
    const uint32_t dataLength = item.folder ? item.directorySize : static_cast<uint32_t>(item.size);
    LISOStoreLSBMSBValue32(record + 2, sector);
    LISOStoreLSBMSBValue32(record + 10, dataLength);
    StoreRecordDate(record + 18, date);
    record[25] = item.folder ? 2 : 0;
    LISOStoreLSBMSBValue16(record + 28, 1);
    record[32] = static_cast<uint8_t>(identifier.size());
    std::memcpy(record + 33, identifier.data(), identifier.size());
    area.SetPosition(RecordStart(area.Position(), length));
    area.AddData(record, length);
}

void LISOJolietFileSystem::WriteFolder(const LISOJolietDataFile& folder, LBufferVector& area,
                                       uint32_t areaSector, std::time_t now) const {
    area.SetPosition(static_cast<size_t>(folder.sector - areaSector) * kSectorSize);
    WriteRecord(area, folder, std::string(1, '\0'), now);
    WriteRecord(area, folder.parent ? *folder.parent : folder, std::string(1, '\1'), now);
    for (const auto& [name, child] : folder.children)
        WriteRecord(area, *child, Identifier(*child), child->date);
    area.SetPosition(static_cast<size_t>(folder.sector - areaSector) * kSectorSize + folder.directorySize);
    for (const auto& [name, child] : folder.children)
        if (child->folder) WriteFolder(*child, area, areaSector, now);
}

void LISOJolietFileSystem::WritePathTable(LBufferVector& system, size_t offset, bool bigEndian) const {
    system.SetPosition(offset);
    for (size_t i = 0; i < pathOrder_.size(); ++i) {
        const LISOJolietDataFile& folder = *pathOrder_[i];
        const std::string identifier = i == 0 ? std::string(1, '\0') : Identifier(folder);
        uint8_t record[264] = {};
        record[0] = static_cast<uint8_t>(identifier.size());
        if (bigEndian)
            Store32BE(record + 2, folder.sector);
        else
            Store32LE(record + 2, folder.sector);
        Store16(record + 6, folder.parent ? folder.parent->directoryNumber : 1, bigEndian);
        std::memcpy(record + 8, identifier.data(), identifier.size());
        system.AddData(record, 8 + identifier.size() + identifier.size() % 2);
    }
}

void LISOJolietFileSystem::WriteDescriptor(LBufferVector& system, uint32_t descriptorSector,
                                           uint32_t pathTableSector, uint32_t volumeSectors,
                                           std::time_t now) const {
    uint8_t d[kSectorSize] = {};
    d[0] = joliet_ ? 2 : 1;
    std::memcpy(d + 1, "CD001", 5);
    d[6] = 1;
    Spaces(d + 8, 32, joliet_);
    Spaces(d + 40, 32, joliet_);
    const std::string label = joliet_ ? LCopyToBigEndianUnicode(CutUTF8(label_, 64))
                                       : LCopyToISO9660(label_, 32, false);
    std::memcpy(d + 40, label.data(), std::min<size_t>(label.size(), 32));
    LISOStoreLSBMSBValue32(d + 80, volumeSectors);
    if (joliet_) {
        d[88] = 0x25;
        d[89] = 0x2F;
        d[90] = 0x45;
    }
    LISOStoreLSBMSBValue16(d + 120, 1);
    LISOStoreLSBMSBValue16(d + 124, 1);
    LISOStoreLSBMSBValue16(d + 128, kSectorSize);
    LISOStoreLSBMSBValue32(d + 132, pathTableSize_);
    const uint32_t tableSectors = RoundUp(pathTableSize_) / kSectorSize;
    Store32LE(d + 140, pathTableSector);
    Store32BE(d + 148, pathTableSector + tableSectors);
    // The root's record.
    d[156] = 34;
    LISOStoreLSBMSBValue32(d + 158, root_->sector);
    LISOStoreLSBMSBValue32(d + 166, root_->directorySize);
    StoreRecordDate(d + 174, now);
    d[181] = 2;
    LISOStoreLSBMSBValue16(d + 184, 1);
    d[188] = 1;
    for (const size_t field : {190u, 318u, 446u, 574u})
        Spaces(d + field, 128, joliet_);
    for (const size_t field : {702u, 739u, 776u})
        Spaces(d + field, 37, joliet_);
    const std::tm local = LImageClockTime(now);
    char date[64];
    std::snprintf(date, sizeof date, "%.4d%.2d%.2d%.2d%.2d%.2d00", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    std::memcpy(d + 813, date, 16);
    std::memcpy(d + 830, date, 16);
    if (!joliet_) {
        std::memset(d + 847, '0', 17);
        std::memset(d + 864, '0', 17);
    }
    d[881] = 1;
    system.WriteAt(static_cast<size_t>(descriptorSector) * kSectorSize, d, kSectorSize);
}

void LISOJolietFileSystem::BuildPostFilesArea(LBufferVector& system, LBufferVector& area,
                                              uint32_t areaSector, uint32_t descriptorSector,
                                              uint32_t pathTableSector, uint32_t volumeSectors,
                                              std::time_t now) {
    WriteFolder(*root_, area, areaSector, now);
    const size_t tableBytes = RoundUp(pathTableSize_);
    WritePathTable(system, static_cast<size_t>(pathTableSector) * kSectorSize, false);
    WritePathTable(system, static_cast<size_t>(pathTableSector) * kSectorSize + tableBytes, true);
    WriteDescriptor(system, descriptorSector, pathTableSector, volumeSectors, now);
}
