#pragma once

#include "disc/BufferVector.h"
#include "disc/Compilation.h"

#include <ctime>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The UDF 1.02 structures of a data disc: the volume recognition sequence, the main and reserve
// volume descriptor sequences, the integrity sequence, the anchors, and a partition that starts
// with the file set and the file entries and directories of the whole tree, followed by the
// files' data as the image builder placed it.
class LUDFFileSystem {
public:
    // Names and labels as 8-bit (Latin-1) or 16-bit (UCS-2) compressed Unicode.
    explicit LUDFFileSystem(bool unicode);

    void LoadFileSystem(const LAbstractFileSystem& compilation);
    // Lays out the file-system area; returns its sectors.
    uint32_t GetFSSize();

    // The recognition sequence from `recognitionSector`, the descriptor sequences at 32 and 48,
    // the integrity sequence at 64 and the anchor at 256.
    void BuildSystemArea(LBufferVector& system, uint32_t recognitionSector, uint32_t partitionStart,
                         uint32_t partitionLength, std::time_t now) const;
    // The file-system area, written into `area` (which starts at sector `areaSector`) at the
    // partition's start. The files' sectors must be placed.
    void BuildFileSystemArea(LBufferVector& area, uint32_t areaSector, uint32_t partitionStart,
                             std::time_t now) const;
    // The closing anchor at the image's last sector, as one sector.
    void BuildClosingArea(LBufferVector& closing, uint32_t lastSector) const;

    uint32_t FileCount() const { return files_; }
    uint32_t FolderCount() const { return folders_; }

    // The descriptor CRC of ECMA-167 (CRC-16-CCITT, polynomial 0x1021, initial value 0).
    static uint16_t CalculateCRC(const uint8_t* data, size_t size);

private:
    struct Node {
        const LAbstractBurnFile* item;
        std::string identifier; // the name as stored in its folder's identifier descriptor
        uint32_t entry = 0;     // the file entry's partition sector
        uint32_t directory = 0; // a folder's identifier descriptors' first partition sector
        uint32_t directoryBytes = 0;
        uint64_t uniqueId = 0;
    };

    void Collect(const LAbstractBurnFile& folder);
    // The bytes of a file identifier descriptor holding `identifier`, padded to 4.
    static size_t IdentifierLength(const std::string& identifier);
    // A name compressed, cut to what an identifier holds.
    std::string Compressed(const std::string& utf8) const;
    // The size of the name compressed without a cut.
    size_t CompressedSize(const std::string& utf8) const;
    // The first identifier "base" + number + extension, from 2 on, that `taken` lacks.
    std::string Unclashed(const std::string& name,
                          const std::unordered_set<std::string>& taken) const;
    void WriteFileEntry(LBufferVector& area, size_t offset, const Node& node, uint32_t partitionStart,
                        std::time_t now) const;
    void WriteDirectory(LBufferVector& area, size_t offset, const Node& node) const;
    void WriteVolumeSequence(LBufferVector& system, uint32_t first, uint32_t partitionStart,
                             uint32_t partitionLength, std::time_t now) const;
    const Node& NodeOf(const LAbstractBurnFile* item) const;

    bool unicode_;
    std::string label_;
    const LAbstractBurnFile* root_ = nullptr;
    std::vector<Node> nodes_;
    std::unordered_map<const LAbstractBurnFile*, size_t> index_;
    uint32_t sectors_ = 0;
    uint32_t files_ = 0;
    uint32_t folders_ = 0;
};
