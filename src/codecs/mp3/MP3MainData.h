#pragma once

#include <cstdint>

// The bit reservoir: the main data of the last frames, from which a frame's main data begins
// main_data_begin bytes before its own.
class MP3MainData {
public:
    static constexpr int kCapacity = 4608;

    void Clear() { fill_ = 0; }
    // Keeps the last mainDataBegin bytes, appends a frame's main data and returns true, so
    // that the frame's main data starts at Data(). When fewer bytes are kept than the frame
    // needs, the data is still appended (for the frames that follow) and the result is false.
    bool Load(int mainDataBegin, const std::uint8_t* frameData, int length);

    const std::uint8_t* Data() const { return data_; }
    int GetFill() const { return fill_; }

private:
    int fill_ = 0;
    // Room past the data for the bit reader's look-ahead and for damaged granules that run on.
    std::uint8_t data_[kCapacity + 64] = {};
};
