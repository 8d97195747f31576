#pragma once

#include "platform/File.h"

#include <cstdint>
#include <string>
#include <vector>

// The chunks of the RIFF WAVE form of a wave file, as the tag readers and writers see them.

// One sub-chunk: its 4-character ID, its size field and the file offset of its header.
struct LRiffChunk {
    char id[4];
    uint32_t size;
    int64_t offset;

    bool Is(const char* chunkId) const;
    int64_t DataOffset() const { return offset + 8; }
    // Where the next chunk starts: sizes are rounded up to even.
    int64_t End() const { return offset + 8 + ((int64_t{size} + 1) & ~int64_t{1}); }
};

// A chunk ID of four spaces marks a filler chunk: an old tag chunk left in place for reuse.
inline constexpr const char* kFillerChunkId = "    ";

class LWaveChunks {
public:
    // Finds the first RIFF WAVE form (other top-level chunks before it are passed over) and
    // reads the headers of its sub-chunks, up to the end of the form or of the file. False
    // when the file has no such form.
    bool Read(LFile& file);

    const std::vector<LRiffChunk>& GetChunks() const { return chunks_; }
    int64_t GetFileSize() const { return fileSize_; }

    // The first chunk with the ID, or nullptr.
    const LRiffChunk* Find(const char* id) const;
    // Turns the chunk into a filler chunk; its size and contents stay.
    bool MakeFiller(LFile& file, std::size_t index);
    // The offset at which `bytes` new chunk bytes go: the first filler chunk (or run of
    // filler chunks, when `sizes` names several) of exactly those sizes, else the end of the
    // file (rounded up to even).
    int64_t FindPlace(const std::vector<uint32_t>& sizes) const;
    // Writes the chunk bytes at the offset; the form's RIFF size then covers the whole file.
    bool WriteChunks(LFile& file, int64_t offset, const std::vector<uint8_t>& bytes);
    // Puts new chunks (`bytes`, of chunks of `sizes`) in the place FindPlace gives and only then
    // turns the old chunks (`old`, indexes) into fillers. When the new chunks cannot be written
    // (a full disk) the file is cut back to its old length: the old chunks stay as they were.
    bool ReplaceChunks(LFile& file, const std::vector<std::size_t>& old,
                       const std::vector<uint32_t>& sizes, const std::vector<uint8_t>& bytes);

private:
    int64_t formOffset_ = 0;
    int64_t fileSize_ = 0;
    std::vector<LRiffChunk> chunks_;
};
