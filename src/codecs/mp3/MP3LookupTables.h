#pragma once

// Tables shared by every decoder, built once on first use and never freed.
struct MP3LookupTables {
    static constexpr int kPowCount = 8207; // Huffman values reach 15 + 2^13 - 1

    // The matrixing of the polyphase synthesis reduces to a 32-point DCT-II, computed by
    // halving: a DCT of size N takes 1 / (2 cos((2n + 1) pi / 2N)) for n < N / 2, stored from
    // index N / 2 on (N = 32, 16, 8, 4, 2).
    float dctFactors[32];
    float globalGain[256]; // 2^((g - 210) / 4)
    // 2^(-i / 2), up to the largest short-block exponent: a five-bit scale factor (MPEG-2
    // intensity stereo) shifted by scalefac_scale, plus four times the largest subblock gain.
    float scaleFactor[(31 << 1) + 4 * 7 + 1];
    // sign(x) |x|^(4/3) for x = -8206..8206, reached through pow43 (which points at x = 0).
    float signedPow43[2 * kPowCount - 1];
    const float* pow43;

    static const MP3LookupTables& Get();

private:
    MP3LookupTables();
};
