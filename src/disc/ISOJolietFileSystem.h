#pragma once

#include "disc/BufferVector.h"
#include "disc/BurnFile.h"
#include "disc/Compilation.h"

#include <ctime>
#include <string>
#include <vector>

// One folder or file of an ISO 9660 or Joliet tree, made from a compilation item.
class LISOJolietDataFile : public LBurnFileBase<LISOJolietDataFile> {
public:
    LNameClashRule ClashRule() const { return {joliet ? 57u : 8u, 2000}; }

    bool joliet = false;
    // The compilation item; a file's sector is stored there.
    const LAbstractBurnFile* source = nullptr;
    // A folder's record bytes, rounded up to 2048.
    uint32_t directorySize = 0;
    // A folder's number in the path table (the root is 1).
    uint16_t directoryNumber = 0;
};

// The ISO 9660 tree (Joliet flag off: 8.3 names, interchange level 1) or the Joliet tree
// (Unicode names) of a data disc: its volume descriptor, path tables and directory records.
//
// The image builder calls, in order: LoadFileSystem; BuildSystemArea, which measures the
// directories and the path tables; BuildFileSystemArea, which gives the folders their sectors;
// and, once every file has its sector, BuildPostFilesArea, which writes the records, the path
// tables and the descriptor.
class LISOJolietFileSystem {
public:
    explicit LISOJolietFileSystem(bool joliet);

    void SetFSVolumeLabel(const std::string& label) { label_ = label; }
    // Copies the compilation's tree with this tree's names; false with `error` when the names of
    // one folder cannot all be told apart.
    bool LoadFileSystem(const LAbstractFileSystem& compilation, std::string& error);

    // Measures the tree; returns the sectors of the L and M path tables together.
    uint32_t BuildSystemArea();
    // Gives the folders their sectors from `first` on; returns the sector after the last.
    uint32_t BuildFileSystemArea(uint32_t first);
    // Writes the directory records into `area` (which starts at sector `areaSector`), the path
    // tables into `system` at `pathTableSector` and the volume descriptor at `descriptorSector`.
    void BuildPostFilesArea(LBufferVector& system, LBufferVector& area, uint32_t areaSector,
                            uint32_t descriptorSector, uint32_t pathTableSector,
                            uint32_t volumeSectors, std::time_t now);

    const LISOJolietDataFile& Root() const { return *root_; }
    uint32_t DirectorySectors() const { return directorySectors_; }
    uint32_t PathTableSize() const { return pathTableSize_; }
    bool IsJoliet() const { return joliet_; }

    // The identifier of an item in this tree's records: the name, ";1" after a file's, in
    // UCS-2 for Joliet; 0x00 and 0x01 for the current and parent records.
    std::string Identifier(const LISOJolietDataFile& item) const;

private:
    bool Copy(const LAbstractBurnFile& from, LISOJolietDataFile& to, std::string& error);
    uint32_t MeasureFolder(const LISOJolietDataFile& folder) const;
    void MeasureAll(LISOJolietDataFile& folder);
    uint32_t PlaceFolder(LISOJolietDataFile& folder, uint32_t next);
    void WriteFolder(const LISOJolietDataFile& folder, LBufferVector& area, uint32_t areaSector,
                     std::time_t now) const;
    void WriteRecord(LBufferVector& area, const LISOJolietDataFile& item, const std::string& identifier,
                     std::time_t date) const;
    void WritePathTable(LBufferVector& system, size_t offset, bool bigEndian) const;
    void WriteDescriptor(LBufferVector& system, uint32_t descriptorSector, uint32_t pathTableSector,
                         uint32_t volumeSectors, std::time_t now) const;

    bool joliet_;
    std::string label_;
    std::unique_ptr<LISOJolietDataFile> root_;
    // Folders in path table order.
    std::vector<LISOJolietDataFile*> pathOrder_;
    uint32_t directorySectors_ = 0;
    uint32_t pathTableSize_ = 0;
};

// Both-endian and single-endian numbers as ISO 9660 stores them.
void LISOStoreLSBMSBValue32(uint8_t* out, uint32_t value);
void LISOStoreLSBMSBValue16(uint8_t* out, uint16_t value);
