#include "disc/BufferVector.h"

#include <cstring>

void LBufferVector::NewLogicalSector() {
    const size_t rest = position_ % kSectorSize;
    if (rest) AddZeros(kSectorSize - rest);
    else if (data_.size() < position_) data_.resize(position_, 0);
}

void LBufferVector::AddData(const void* data, size_t size) {
    WriteAt(position_, data, size);
    position_ += size;
}

void LBufferVector::AddZeros(size_t size) {
    if (data_.size() < position_ + size) data_.resize(position_ + size, 0);
    position_ += size;
}

void LBufferVector::WriteAt(size_t offset, const void* data, size_t size) {
    if (data_.size() < offset + size) data_.resize(offset + size, 0);
    if (size) std::memcpy(data_.data() + offset, data, size);
}

void LBufferVector::SetPosition(size_t position) {
    if (data_.size() < position) data_.resize(position, 0);
    position_ = position;
}

uint8_t* LBufferVector::At(size_t offset) {
    if (data_.size() < offset + 1) data_.resize(offset + 1, 0);
    return data_.data() + offset;
}

void LBufferVector::Clear() {
    data_.clear();
    position_ = 0;
}
