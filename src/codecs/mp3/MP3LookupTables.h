#pragma once

// Tables shared by every decoder, built once on first use and never freed.
struct MP3LookupTables {
    static constexpr int kPowCount = 8207; // Huffman values reach 15 + 2^13 - 1

    // cos((2k + 1) n pi / 64) for k, n = 0..31: the matrixing of the polyphase synthesis
    // reduced to its 32 distinct rows (the other 32 follow by symmetry).
    float synthesisMatrix[32][32];
    float globalGain[256];  // 2^((g - 210) / 4)
    float scaleFactor[65];  // 2^(-i / 2)
    float pow43[kPowCount]; // x^(4/3)

    static const MP3LookupTables& Get();

private:
    MP3LookupTables();
};
