#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

inline constexpr size_t kSectorSize = 2048;

// A growable byte buffer with a write position; areas of a disc image are built in it sector by
// sector. Writing past the end grows it with zeros.
class LBufferVector {
public:
    explicit LBufferVector(size_t capacity = 0) { data_.reserve(capacity); }

    // Pads with zeros to the next multiple of 2048 bytes.
    void NewLogicalSector();
    void AddData(const void* data, size_t size);
    void AddZeros(size_t size);
    // Writes at an offset without moving the position.
    void WriteAt(size_t offset, const void* data, size_t size);

    size_t Position() const { return position_; }
    void SetPosition(size_t position);
    size_t Size() const { return data_.size(); }
    size_t Sectors() const { return (data_.size() + kSectorSize - 1) / kSectorSize; }
    const uint8_t* Data() const { return data_.data(); }
    uint8_t* At(size_t offset);
    void Clear();

private:
    std::vector<uint8_t> data_;
    size_t position_ = 0;
};
