#pragma once

#include <cstdint>
#include <cstring>

// Little- and big-endian fields of RIFF and AIFF headers, independent of the host's order.

inline uint16_t GetLE16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

inline uint32_t GetLE32(const uint8_t* p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

inline void PutLE16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}

inline void PutLE32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(v >> (8 * i));
}

inline void PutBE16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v >> 8);
    p[1] = static_cast<uint8_t>(v);
}

inline void PutBE32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(v >> (24 - 8 * i));
}

// Chunk identifiers are four characters.
inline bool IsChunkId(const uint8_t* p, const char* id) {
    return std::memcmp(p, id, 4) == 0;
}

inline void PutChunkId(uint8_t* p, const char* id) {
    std::memcpy(p, id, 4);
}
