#pragma once

#include <cstdint>

// One row of the table of registered wave format tags.
struct LWaveCodec {
    uint16_t formatTag;
    const char* name;
};

// All 248 rows, in ascending tag order; row 0 is "Microsoft Unknown Wave Format".
extern const LWaveCodec _WaveCodecs[];
extern const unsigned _uNumWaveCodecs;

// The table's name for a tag, or the name of row 0 when the tag is not registered.
const char* LGetWaveCodecName(uint16_t formatTag);
