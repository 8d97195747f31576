#pragma once

struct MP3BandTable;
struct MP3GranuleInfo;
struct MP3ScaleFactors;

// Turns the Huffman values of one granule and channel into spectral values, band by band with
// the global gain, subblock gains and scale factors; lines from `count` on are zero. The
// result stays in the order of the bitstream.
void RequantizeSpectrum(const int* values, int count, const MP3GranuleInfo& info,
                        const MP3ScaleFactors& factors, const MP3BandTable& bands, float* xr);

// The first spectral line coded in short windows (0 for pure short blocks, 576 for long).
int GetShortBlockStart(const MP3GranuleInfo& info, const MP3BandTable& bands);

// Interleaves the short-window part of a granule (band by band, window by window) into the
// order the IMDCT takes (line by line, the three windows side by side).
void ReorderShortBlocks(const float* xr, const MP3GranuleInfo& info, const MP3BandTable& bands,
                        float* reordered);
