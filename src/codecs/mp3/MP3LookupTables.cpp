#include "codecs/mp3/MP3LookupTables.h"

#include <cmath>
#include <iterator>
#include <numbers>

MP3LookupTables::MP3LookupTables() : pow43(signedPow43 + kPowCount - 1) {
    for (int size = 2; size <= 32; size *= 2)
        for (int n = 0; n < size / 2; ++n)
            dctFactors[size / 2 + n] =
                static_cast<float>(0.5 / std::cos((2 * n + 1) * std::numbers::pi / (2 * size)));
    for (int g = 0; g < 256; ++g)
        globalGain[g] = static_cast<float>(std::pow(2.0, (g - 210) / 4.0));
    for (int i = 0; i < static_cast<int>(std::size(scaleFactor)); ++i)
        scaleFactor[i] = static_cast<float>(std::pow(2.0, -i / 2.0));
    for (int x = 0; x < kPowCount; ++x) {
        const float value = static_cast<float>(std::pow(x, 4.0 / 3.0));
        signedPow43[kPowCount - 1 + x] = value;
        signedPow43[kPowCount - 1 - x] = -value;
    }
}

const MP3LookupTables& MP3LookupTables::Get() {
    static const MP3LookupTables tables;
    return tables;
}
