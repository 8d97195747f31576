#include "codecs/mp3/MP3Requantize.h"

#include "codecs/mp3/MP3BandTables.h"
#include "codecs/mp3/MP3LookupTables.h"
#include "codecs/mp3/MP3ScaleFactors.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <algorithm>
#include <cstring>

namespace {

inline void ScaleLines(const int* values, int from, int to, float factor, const float* pow43,
                       float* xr) {
    // Huffman values stay within +-8206 (15 plus 13 linbits), the range of the table.
    for (int i = from; i < to; ++i)
        xr[i] = pow43[values[i]] * factor;
}

} // namespace

int GetShortBlockStart(const MP3GranuleInfo& info, const MP3BandTable& bands) {
    if (!info.windowSwitching || info.blockType != 2) return 576;
    return info.mixedBlock ? bands.shortBands[3] * 3 : 0;
}

void RequantizeSpectrum(const int* values, int count, const MP3GranuleInfo& info,
                        const MP3ScaleFactors& factors, const MP3BandTable& bands, float* xr) {
    const MP3LookupTables& tables = MP3LookupTables::Get();
    const float gain = tables.globalGain[info.globalGain];
    const int shift = info.scalefacScale;
    const int shortStart = GetShortBlockStart(info, bands);

    for (int sfb = 0; sfb < 22 && bands.longBands[sfb] < std::min(count, shortStart); ++sfb) {
        const int pre = info.preflag ? kMP3Pretab[sfb] : 0;
        const float factor = gain * tables.scaleFactor[(factors.longBands[sfb] + pre) << shift];
        const int to = std::min({static_cast<int>(bands.longBands[sfb + 1]), count, shortStart});
        ScaleLines(values, bands.longBands[sfb], to, factor, tables.pow43, xr);
    }
    if (shortStart < count) {
        for (int sfb = shortStart == 0 ? 0 : 3; sfb < 13; ++sfb) {
            const int width = bands.shortBands[sfb + 1] - bands.shortBands[sfb];
            for (int w = 0; w < 3; ++w) {
                const int from = bands.shortBands[sfb] * 3 + w * width;
                if (from >= count) break;
                const int index = (factors.shortBands[sfb][w] << shift) + 4 * info.subblockGain[w];
                const float factor = gain * tables.scaleFactor[index];
                ScaleLines(values, from, std::min(from + width, count), factor, tables.pow43, xr);
            }
        }
    }
    std::fill(xr + std::max(count, 0), xr + 576, 0.0f);
}

void ReorderShortBlocks(const float* xr, const MP3GranuleInfo& info, const MP3BandTable& bands,
                        float* reordered) {
    const int shortStart = GetShortBlockStart(info, bands);
    std::memcpy(reordered, xr, shortStart * sizeof *xr);
    for (int sfb = shortStart == 0 ? 0 : 3; sfb < 13; ++sfb) {
        const int start = bands.shortBands[sfb] * 3;
        const int width = bands.shortBands[sfb + 1] - bands.shortBands[sfb];
        for (int w = 0; w < 3; ++w)
            for (int j = 0; j < width; ++j)
                reordered[start + 3 * j + w] = xr[start + w * width + j];
    }
}
