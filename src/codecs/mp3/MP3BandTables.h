#pragma once

#include <cstdint>

// Scale-factor band boundaries of one sampling frequency, in spectral lines: long bands
// 0-21 over 576 lines, short bands 0-12 over the 192 lines of one window.
struct MP3BandTable {
    std::int16_t longBands[23];
    std::int16_t shortBands[14];
};

// The table of a version (0 MPEG-1, 1 MPEG-2, 2 MPEG-2.5) and sample-rate index.
const MP3BandTable& GetMP3BandTable(int version, int sampleRateIndex);

// Added to the long-block scale factors when the preflag is set.
extern const std::uint8_t kMP3Pretab[22];
