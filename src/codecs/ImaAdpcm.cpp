#include "codecs/ImaAdpcm.h"

#include <algorithm>

const int _LIMAStepTable[89] = {
    7,     8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,
    25,    28,    31,    34,    37,    41,    45,    50,    55,    60,    66,    73,    80,
    88,    97,    107,   118,   130,   143,   157,   173,   190,   209,   230,   253,   279,
    307,   337,   371,   408,   449,   494,   544,   598,   658,   724,   796,   876,   963,
    1060,  1166,  1282,  1411,  1552,  1707,  1878,  2066,  2272,  2499,  2749,  3024,  3327,
    3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845,  8630,  9493,  10442, 11487,
    12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767,
};

const int _LIMAIndexTab4[16] = {-1, -1, -1, -1, 2, 4, 6, 8, -1, -1, -1, -1, 2, 4, 6, 8};

void LIMAADPCM::Reset(int predictor, int stepIndex) {
    predictor_ = std::clamp(predictor, -32768, 32767);
    stepIndex_ = std::clamp(stepIndex, 0, 88);
}

int LIMAADPCM::DecodeSample(unsigned char code) {
    const int step = _LIMAStepTable[stepIndex_];
    int diff = step >> 3;
    if (code & 4) diff += step;
    if (code & 2) diff += step >> 1;
    if (code & 1) diff += step >> 2;
    if (code & 8) diff = -diff;
    predictor_ = std::clamp(predictor_ + diff, -32768, 32767);
    stepIndex_ = std::clamp(stepIndex_ + _LIMAIndexTab4[code & 15], 0, 88);
    return predictor_ * 16;
}
