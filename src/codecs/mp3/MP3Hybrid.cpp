#include "codecs/mp3/MP3Hybrid.h"

#include "codecs/mp3/MP3CpuDispatch.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

struct HybridTables {
    float aliasCs[8];
    float aliasCa[8];
    float dct18[18][18];     // cos(pi / 72 (2m + 1)(2k + 1)): the 36-point IMDCT's core
    float dct6[6][6];        // cos(pi / 24 (2m + 1)(2k + 1)): the 12-point IMDCT's core
    float longWindow[4][36]; // by block type (2 unused)
    float shortWindow[12];

    HybridTables() {
        const double pi = std::numbers::pi;
        static const double kAlias[8] = {-0.6,   -0.535, -0.33,   -0.185,
                                         -0.095, -0.041, -0.0142, -0.0037};
        for (int i = 0; i < 8; ++i) {
            const double root = std::sqrt(1 + kAlias[i] * kAlias[i]);
            aliasCs[i] = static_cast<float>(1 / root);
            aliasCa[i] = static_cast<float>(kAlias[i] / root);
        }
        for (int m = 0; m < 18; ++m)
            for (int k = 0; k < 18; ++k)
                dct18[m][k] = static_cast<float>(std::cos(pi / 72 * (2 * m + 1) * (2 * k + 1)));
        for (int m = 0; m < 6; ++m)
            for (int k = 0; k < 6; ++k)
                dct6[m][k] = static_cast<float>(std::cos(pi / 24 * (2 * m + 1) * (2 * k + 1)));
        for (int i = 0; i < 36; ++i) {
            const double normal = std::sin(pi / 36 * (i + 0.5));
            longWindow[0][i] = static_cast<float>(normal);
            // Start block: normal rising half, flat, then the falling half of a short window.
            double start = 0;
            if (i < 18)
                start = normal;
            else if (i < 24)
                start = 1;
            else if (i < 30)
                start = std::sin(pi / 12 * (i - 18 + 0.5));
            longWindow[1][i] = static_cast<float>(start);
            // Stop block: the mirror image.
            double stop = normal;
            if (i < 6)
                stop = 0;
            else if (i < 12)
                stop = std::sin(pi / 12 * (i - 6 + 0.5));
            else if (i < 18)
                stop = 1;
            longWindow[3][i] = static_cast<float>(stop);
            longWindow[2][i] = 0;
        }
        for (int i = 0; i < 12; ++i)
            shortWindow[i] = static_cast<float>(std::sin(pi / 12 * (i + 0.5)));
    }

    static const HybridTables& Get() {
        static const HybridTables tables;
        return tables;
    }
};

// 36-point IMDCT of 18 lines, windowed: x[i] for i = 0..35 from the DCT-IV y of the lines,
// x[i] = y[i + 9] (i < 9), -y[26 - i] (i < 27), -y[i - 27] (else).
[[gnu::always_inline]] inline void LongBlock(const HybridTables& t, const float* in,
                                             const float* window, float* z) {
    float y[18] = {};
    for (int k = 0; k < 18; ++k) {
        const float v = in[k];
        if (v == 0.0f) continue;
        // The matrix is symmetric: row k runs over m.
        const float* row = t.dct18[k];
        for (int m = 0; m < 18; ++m)
            y[m] += v * row[m];
    }
    for (int i = 0; i < 9; ++i)
        z[i] = y[i + 9] * window[i];
    for (int i = 9; i < 27; ++i)
        z[i] = -y[26 - i] * window[i];
    for (int i = 27; i < 36; ++i)
        z[i] = -y[i - 27] * window[i];
}

// Three 12-point IMDCTs of the interleaved windows, overlapped at 6, 12 and 18.
[[gnu::always_inline]] inline void ShortBlock(const HybridTables& t, const float* in, float* z) {
    std::fill(z, z + 36, 0.0f);
    for (int w = 0; w < 3; ++w) {
        float y[6] = {};
        for (int k = 0; k < 6; ++k) {
            const float v = in[3 * k + w];
            for (int m = 0; m < 6; ++m)
                y[m] += v * t.dct6[m][k];
        }
        float x[12];
        for (int i = 0; i < 3; ++i)
            x[i] = y[i + 3];
        for (int i = 3; i < 9; ++i)
            x[i] = -y[8 - i];
        for (int i = 9; i < 12; ++i)
            x[i] = -y[i - 9];
        for (int i = 0; i < 12; ++i)
            z[6 + 6 * w + i] += x[i] * t.shortWindow[i];
    }
}

[[gnu::always_inline]] inline void Hybrid(const float* xr, const MP3GranuleInfo& info,
                                          int mixedSubbands, int subbands, float* overlap,
                                          float* out) {
    const HybridTables& t = HybridTables::Get();
    const bool shortBlocks = info.windowSwitching && info.blockType == 2;
    for (int sb = 0; sb < 32; ++sb) {
        float* previous = overlap + 18 * sb;
        const float sign = sb & 1 ? -1.0f : 1.0f;
        if (sb >= subbands) {
            for (int ss = 0; ss < 18; ++ss) {
                out[ss * 32 + sb] = ss & 1 ? previous[ss] * sign : previous[ss];
                previous[ss] = 0.0f;
            }
            continue;
        }
        float z[36];
        if (sb < mixedSubbands)
            LongBlock(t, xr + 18 * sb, t.longWindow[0], z);
        else if (shortBlocks)
            ShortBlock(t, xr + 18 * sb, z);
        else
            LongBlock(t, xr + 18 * sb, t.longWindow[info.blockType], z);
        for (int ss = 0; ss < 18; ++ss) {
            const float v = z[ss] + previous[ss];
            out[ss * 32 + sb] = ss & 1 ? v * sign : v;
            previous[ss] = z[ss + 18];
        }
    }
}

__attribute__((target("avx2"))) void HybridAvx2(const float* xr, const MP3GranuleInfo& info,
                                                int mixedSubbands, int subbands, float* overlap,
                                                float* out) {
    Hybrid(xr, info, mixedSubbands, subbands, overlap, out);
}

void HybridBaseline(const float* xr, const MP3GranuleInfo& info, int mixedSubbands, int subbands,
                    float* overlap, float* out) {
    Hybrid(xr, info, mixedSubbands, subbands, overlap, out);
}

} // namespace

int GetMixedSubbands(const MP3GranuleInfo& info, int shortBlockStart) {
    return info.windowSwitching && info.mixedBlock ? shortBlockStart / 18 : 0;
}

int AliasReduction(float* xr, const MP3GranuleInfo& info, int mixedSubbands, int subbands) {
    const HybridTables& t = HybridTables::Get();
    const bool shortBlocks = info.windowSwitching && info.blockType == 2;
    const int limit = std::min(shortBlocks ? mixedSubbands : 32, subbands + 1);
    for (int sb = 1; sb < limit; ++sb) {
        float* upper = xr + 18 * sb;
        for (int i = 0; i < 8; ++i) {
            const float below = upper[-1 - i];
            const float above = upper[i];
            upper[-1 - i] = below * t.aliasCs[i] - above * t.aliasCa[i];
            upper[i] = above * t.aliasCs[i] + below * t.aliasCa[i];
        }
    }
    return std::max(subbands, std::min(limit, 32));
}

void IMDCTSynthesize(const float* xr, const MP3GranuleInfo& info, int mixedSubbands, int subbands,
                     float* overlap, float* out) {
    static const auto hybrid = ChooseForProcessor(&HybridAvx2, &HybridBaseline);
    hybrid(xr, info, mixedSubbands, subbands, overlap, out);
}
