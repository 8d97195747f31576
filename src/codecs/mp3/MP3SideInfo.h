#pragma once

#include <cstdint>

struct MP3Header;

// The side information of one granule of one channel.
struct MP3GranuleInfo {
    int part23Length = 0; // bits of scale factors and Huffman data
    int bigValues = 0;    // pairs in the big-value regions
    int globalGain = 0;
    int scalefacCompress = 0;
    int windowSwitching = 0;
    int blockType = 0; // 0 normal, 1 start, 2 short, 3 stop
    int mixedBlock = 0;
    int tableSelect[3] = {};
    int subblockGain[3] = {};
    int region0Count = 0;
    int region1Count = 0;
    int preflag = 0;
    int scalefacScale = 0;
    int count1TableSelect = 0;
};

// The side information of a frame.
struct MP3SideInfo {
    int mainDataBegin = 0; // bytes of main data taken from earlier frames
    int privateBits = 0;
    int scfsi[2][4] = {};          // scale factors shared with granule 0 (MPEG-1 only)
    MP3GranuleInfo granules[2][2]; // [granule][channel]
};

// Parses the side information that follows the header (and CRC) of a frame.
void DecodeSideInformation(const std::uint8_t* data, const MP3Header& header, MP3SideInfo& info);
