#include "tags/WaveTagRecord.h"

#include "codecs/WaveBytes.h"
#include "tags/AudioTagData.h"
#include "tags/HashTableFields.h"
#include "tags/RiffChunks.h"
#include "tags/TagFile.h"

#include <algorithm>
#include <cstring>

void LWaveTagRecord::Clear() {
    std::fill(fixed_.begin(), fixed_.end(), 0);
    text_.clear();
}

bool LWaveTagRecord::Read(LFile& file, int64_t offset, uint32_t size) {
    Clear();
    const std::size_t fixedBytes = std::min<std::size_t>(size, fixed_.size());
    if (!ReadAt(file, offset, fixed_.data(), fixedBytes)) return false;
    if (size > fixed_.size()) {
        std::vector<char> text(size - fixed_.size());
        if (!ReadAt(file, offset + static_cast<int64_t>(fixedBytes), text.data(), text.size()))
            return false;
        text_.assign(text.data(), strnlen(text.data(), text.size()));
    }
    TerminateFields();
    return true;
}

uint32_t LWaveTagRecord::ChunkSize() const {
    return static_cast<uint32_t>(fixed_.size() + text_.size() + 1);
}

std::vector<uint8_t> LWaveTagRecord::ChunkBytes() const {
    std::vector<uint8_t> bytes(8);
    PutChunkId(bytes.data(), id_);
    PutLE32(bytes.data() + 4, ChunkSize());
    bytes.insert(bytes.end(), fixed_.begin(), fixed_.end());
    bytes.insert(bytes.end(), text_.begin(), text_.end());
    bytes.resize((bytes.size() + 2) & ~std::size_t{1});
    return bytes;
}

void LWaveTagRecord::TextToHashTable(LAudioTagData& tags, const TextField& field) const {
    SetHashTableString(tags, field.tag, reinterpret_cast<const char*>(&fixed_[field.offset]),
                       field.size);
}

void LWaveTagRecord::TextFromHashTable(const LAudioTagData& tags, const TextField& field) {
    GetHashTableString(tags, field.tag, reinterpret_cast<char*>(&fixed_[field.offset]), field.size);
}

uint32_t LWaveTagRecord::GetField32(std::size_t offset) const {
    return GetLE32(&fixed_[offset]);
}

void LWaveTagRecord::SetField32(std::size_t offset, uint32_t value) {
    PutLE32(&fixed_[offset], value);
}

bool ReadWaveTagRecord(const char* path, LWaveTagRecord& record) {
    LFile file = OpenTagFileRead(path);
    LWaveChunks chunks;
    if (!file.IsOpen() || !chunks.Read(file)) return false;
    const LRiffChunk* chunk = chunks.Find(record.GetChunkId());
    if (!chunk || chunk->size > chunks.GetFileSize()) return false;
    return record.Read(file, chunk->DataOffset(), chunk->size);
}

bool WriteWaveTagRecord(const char* path, const LWaveTagRecord& record) {
    LFile file = OpenTagFileReadWrite(path);
    LWaveChunks chunks;
    if (!file.IsOpen() || !chunks.Read(file)) return false;
    std::vector<std::size_t> old;
    for (std::size_t i = 0; i < chunks.GetChunks().size(); ++i)
        if (chunks.GetChunks()[i].Is(record.GetChunkId())) old.push_back(i);
    return chunks.ReplaceChunks(file, old, {record.ChunkSize()}, record.ChunkBytes());
}
