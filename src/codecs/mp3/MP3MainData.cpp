#include "codecs/mp3/MP3MainData.h"

#include <algorithm>
#include <cstring>

bool MP3MainData::Load(int mainDataBegin, const std::uint8_t* frameData, int length) {
    const bool complete = fill_ >= mainDataBegin;
    if (complete) {
        std::memmove(data_, data_ + fill_ - mainDataBegin, mainDataBegin);
        fill_ = mainDataBegin;
    }
    length = std::clamp(length, 0, kCapacity);
    if (fill_ + length > kCapacity) {
        const int drop = fill_ + length - kCapacity;
        std::memmove(data_, data_ + drop, fill_ - drop);
        fill_ -= drop;
    }
    std::memcpy(data_ + fill_, frameData, length);
    fill_ += length;
    return complete;
}
