#pragma once

#include <cstdint>

// One Huffman code table of Layer III as the standard lists it: entry i codes the pair
// x = i / wrap, y = i % wrap (or, for a count1 table, the quadruple in the bits of i).
struct MP3HuffmanCodeTable {
    int wrap;    // values per row; 0 for the unused tables
    int count;   // number of code words
    int linbits; // extra bits that extend a value of 15
    const std::uint16_t* codes;
    const std::uint8_t* lengths;
};

extern const MP3HuffmanCodeTable kMP3PairTables[32];
extern const MP3HuffmanCodeTable kMP3QuadTableA;
