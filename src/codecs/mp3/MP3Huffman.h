#pragma once

struct MP3BandTable;
struct MP3GranuleInfo;
class MP3BitReader;

// Decodes the Huffman-coded spectrum of one granule and channel (big values, then count1
// quadruples until endBit) into 576 signed integers. Returns the number of lines up to the
// last nonzero one, or -1 when the data is damaged (the values are then all zero).
int DecodeHuffmanData(MP3BitReader& bits, int endBit, const MP3GranuleInfo& info,
                      const MP3BandTable& bands, int* values);
