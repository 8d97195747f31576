#pragma once

#include "platform/File.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class LAudioTagData;

// The body of a wave tag chunk ("bext", "cart"): a fixed part of little-endian fields and
// fixed-width texts, then a free text that ends with a zero byte.
class LWaveTagRecord {
public:
    virtual ~LWaveTagRecord() = default;

    void Clear();
    // Reads a chunk body of `size` bytes at the file offset: the fixed part (zeros past a
    // short body) and the text after it.
    bool Read(LFile& file, int64_t offset, uint32_t size);
    // The size field of the chunk: the fixed part and the text with its zero.
    uint32_t ChunkSize() const;
    // Chunk ID, size and body, padded to even.
    std::vector<uint8_t> ChunkBytes() const;
    const char* GetChunkId() const { return id_; }

    // A fixed-width text of the fixed part and its tag.
    struct TextField {
        std::size_t offset;
        std::size_t size;
        const char* tag;
    };

    // Copies the record into the store, overwriting; and fills it from the store.
    virtual void ToHashTable(LAudioTagData& tags) const = 0;
    virtual void FromHashTable(const LAudioTagData& tags) = 0;

protected:
    LWaveTagRecord(const char* id, std::size_t fixedSize) : id_(id), fixed_(fixedSize) {}

    // Forces the zeros that end the record's fixed-width texts.
    virtual void TerminateFields() = 0;

    void TextToHashTable(LAudioTagData& tags, const TextField& field) const;
    void TextFromHashTable(const LAudioTagData& tags, const TextField& field);
    uint32_t GetField32(std::size_t offset) const;
    void SetField32(std::size_t offset, uint32_t value);

    const char* id_;
    std::vector<uint8_t> fixed_;
    std::string text_;
};

// Reads the first chunk of the record's kind in the wave file into the record. False when the
// file cannot be read, has no RIFF WAVE form or no such chunk, or the chunk is larger than
// the file.
bool ReadWaveTagRecord(const char* path, LWaveTagRecord& record);
// Turns every chunk of the record's kind into a filler chunk and writes the record into the
// first filler chunk of exactly its size, or at the end of the file.
bool WriteWaveTagRecord(const char* path, const LWaveTagRecord& record);
