#pragma once

#include <cstdint>

struct MP3Header;
struct MP3GranuleInfo;
struct MP3SideInfo;
class MP3BitReader;

// The scale factors of one granule and channel. Long band 21 and short band 12 carry none.
// In the right channel of MPEG-2 intensity stereo they are intensity positions, and
// positionLimit holds each band's largest value, which marks a band as not intensity coded.
struct MP3ScaleFactors {
    std::uint8_t longBands[22] = {};
    std::uint8_t shortBands[13][3] = {}; // [band][window]
    std::uint8_t longLimit[22] = {};
    std::uint8_t shortLimit[13] = {};
    int intensityScale = 0; // MPEG-2 intensity stereo: 0 steps of 2^-1/4, 1 steps of 2^-1/2
};

// Reads the scale factors of granule gr, channel ch. For MPEG-1 the bands that the scale-factor
// selection shares are left as granule 0 set them; for MPEG-2 the preflag of info is set here.
void DecodeScaleFactors(MP3BitReader& bits, const MP3Header& header, const MP3SideInfo& side,
                        int gr, int ch, MP3GranuleInfo& info, MP3ScaleFactors& factors);
