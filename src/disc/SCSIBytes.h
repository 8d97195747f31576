#pragma once

#include <cstdint>

// Big-endian fields of MMC command blocks, replies and parameter lists.

inline uint16_t MMCGet16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

inline uint32_t MMCGet24(const uint8_t* p) {
    return uint32_t{p[0]} << 16 | p[1] << 8 | p[2];
}

inline uint32_t MMCGet32(const uint8_t* p) {
    return uint32_t{p[0]} << 24 | p[1] << 16 | p[2] << 8 | p[3];
}

inline void MMCPut16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v >> 8);
    p[1] = static_cast<uint8_t>(v);
}

inline void MMCPut24(uint8_t* p, uint32_t v) {
    p[0] = static_cast<uint8_t>(v >> 16);
    p[1] = static_cast<uint8_t>(v >> 8);
    p[2] = static_cast<uint8_t>(v);
}

inline void MMCPut32(uint8_t* p, uint32_t v) {
    MMCPut16(p, static_cast<uint16_t>(v >> 16));
    MMCPut16(p + 2, static_cast<uint16_t>(v));
}
