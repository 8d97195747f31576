#include "codecs/mp3/MP3LookupTables.h"

#include <cmath>
#include <numbers>

MP3LookupTables::MP3LookupTables() {
    for (int k = 0; k < 32; ++k)
        for (int n = 0; n < 32; ++n)
            synthesisMatrix[k][n] =
                static_cast<float>(std::cos((2 * k + 1) * n * std::numbers::pi / 64));
    for (int g = 0; g < 256; ++g)
        globalGain[g] = static_cast<float>(std::pow(2.0, (g - 210) / 4.0));
    for (int i = 0; i < 65; ++i)
        scaleFactor[i] = static_cast<float>(std::pow(2.0, -i / 2.0));
    for (int x = 0; x < kPowCount; ++x)
        pow43[x] = static_cast<float>(std::pow(x, 4.0 / 3.0));
}

const MP3LookupTables& MP3LookupTables::Get() {
    static const MP3LookupTables tables;
    return tables;
}
