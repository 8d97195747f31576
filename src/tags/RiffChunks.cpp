#include "tags/RiffChunks.h"

#include "codecs/WaveBytes.h"
#include "tags/TagFile.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kChunkHeaderSize = 8;

} // namespace

bool LRiffChunk::Is(const char* chunkId) const {
    return std::memcmp(id, chunkId, 4) == 0;
}

bool LWaveChunks::Read(LFile& file) {
    chunks_.clear();
    fileSize_ = file.GetSize();
    if (fileSize_ < 0) return false;

    // Top-level chunks: {id, size, form}.
    int64_t offset = 0;
    uint8_t header[12];
    for (;;) {
        if (!ReadAt(file, offset, header, sizeof(header))) return false;
        const uint32_t size = GetLE32(header + 4);
        if (IsChunkId(header, "RIFF") && IsChunkId(header + 8, "WAVE")) {
            formOffset_ = offset;
            break;
        }
        const int64_t rounded = (int64_t{size} + 1) & ~int64_t{1};
        if (rounded < 5) return false;
        offset += kChunkHeaderSize + rounded;
    }

    // The form ends where its RIFF size says, or at the end of the file when that is sooner
    // (a file still being recorded has an unknown RIFF size).
    const int64_t formEnd = std::min(formOffset_ + 8 + int64_t{GetLE32(header + 4)}, fileSize_);
    for (offset = formOffset_ + 12; offset + 8 <= formEnd;) {
        uint8_t chunkHeader[kChunkHeaderSize];
        if (!ReadAt(file, offset, chunkHeader, sizeof(chunkHeader))) break;
        LRiffChunk chunk;
        std::memcpy(chunk.id, chunkHeader, 4);
        chunk.size = GetLE32(chunkHeader + 4);
        chunk.offset = offset;
        chunks_.push_back(chunk);
        offset = chunk.End();
    }
    return true;
}

const LRiffChunk* LWaveChunks::Find(const char* id) const {
    for (const LRiffChunk& chunk : chunks_)
        if (chunk.Is(id)) return &chunk;
    return nullptr;
}

bool LWaveChunks::MakeFiller(LFile& file, std::size_t index) {
    LRiffChunk& chunk = chunks_[index];
    if (!WriteAt(file, chunk.offset, kFillerChunkId, 4)) return false;
    std::memcpy(chunk.id, kFillerChunkId, 4);
    return true;
}

int64_t LWaveChunks::FindPlace(const std::vector<uint32_t>& sizes) const {
    for (std::size_t first = 0; first + sizes.size() <= chunks_.size(); ++first) {
        bool fits = true;
        for (std::size_t k = 0; k < sizes.size() && fits; ++k) {
            const LRiffChunk& chunk = chunks_[first + k];
            fits = chunk.Is(kFillerChunkId) && chunk.size == sizes[k] &&
                   chunk.End() <= fileSize_ + static_cast<int64_t>(chunk.size & 1);
        }
        if (fits) return chunks_[first].offset;
    }
    return (fileSize_ + 1) & ~int64_t{1};
}

bool LWaveChunks::WriteChunks(LFile& file, int64_t offset, const std::vector<uint8_t>& bytes) {
    // A file that ends on an odd byte gets the pad byte its last chunk is owed.
    if (offset > fileSize_ && !WriteAt(file, fileSize_, "", 1)) return false;
    if (!WriteAt(file, offset, bytes.data(), bytes.size())) return false;
    fileSize_ = std::max(fileSize_, offset + static_cast<int64_t>(bytes.size()));

    const int64_t riffSize = fileSize_ - formOffset_ - 8;
    if (riffSize > int64_t{0xFFFFFFFF}) return false;
    uint8_t size[4];
    PutLE32(size, static_cast<uint32_t>(riffSize));
    return WriteAt(file, formOffset_ + 4, size, sizeof(size));
}

bool LWaveChunks::ReplaceChunks(LFile& file, const std::vector<std::size_t>& old,
                                const std::vector<uint32_t>& sizes,
                                const std::vector<uint8_t>& bytes) {
    const int64_t oldSize = fileSize_;
    uint8_t riffSize[4];
    if (!ReadAt(file, formOffset_ + 4, riffSize, sizeof riffSize)) return false;
    if (!WriteChunks(file, FindPlace(sizes), bytes)) {
        // What was added goes again; the RIFF size is only changed after a complete write.
        [[maybe_unused]] const bool cut = Truncate(file, oldSize);
        fileSize_ = oldSize;
        return false;
    }
    for (std::size_t index : old)
        if (!MakeFiller(file, index)) return false;
    return true;
}
