#pragma once

#include <cstdint>
#include <cstring>

// Reads big-endian bit fields from a byte buffer. Every access loads eight bytes at the
// current byte, so the buffer must stay readable for eight bytes past the last bit used.
class MP3BitReader {
public:
    explicit MP3BitReader(const std::uint8_t* data, int bitPosition = 0)
        : data_(data), position_(bitPosition) {}

    // The next n bits (1 to 32) without moving on.
    std::uint32_t Peek(int n) const {
        std::uint64_t word;
        std::memcpy(&word, data_ + (position_ >> 3), sizeof word);
        word = __builtin_bswap64(word) << (position_ & 7);
        return static_cast<std::uint32_t>(word >> (64 - n));
    }

    void Skip(int n) { position_ += n; }

    // The next n bits (0 to 32).
    std::uint32_t Get(int n) {
        if (n == 0) return 0;
        const std::uint32_t value = Peek(n);
        position_ += n;
        return value;
    }

    int Position() const { return position_; }
    void SetPosition(int bitPosition) { position_ = bitPosition; }

private:
    const std::uint8_t* data_;
    int position_;
};
