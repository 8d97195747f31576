#include "codecs/mp3/MP3ScaleFactors.h"

#include "codecs/mp3/MP3BitReader.h"
#include "codecs/mp3/MP3Header.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <algorithm>

namespace {

// MPEG-1: bits of the scale factors of bands 0-10 and 11-20 by scalefac_compress.
const int kSlen[2][16] = {
    {0, 0, 0, 0, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4},
    {0, 1, 2, 3, 0, 1, 2, 3, 1, 2, 3, 1, 2, 3, 2, 3},
};

// MPEG-2: number of scale factors in each of the four groups, by the partition chosen from
// scalefac_compress and the block type (long, short, mixed). Short blocks count one per
// band and window.
const int kPartitions[6][3][4] = {
    {{6, 5, 5, 5}, {9, 9, 9, 9}, {6, 9, 9, 9}},
    {{6, 5, 7, 3}, {9, 9, 12, 6}, {6, 9, 12, 6}},
    {{11, 10, 0, 0}, {18, 18, 0, 0}, {15, 18, 0, 0}},
    {{7, 7, 7, 0}, {12, 12, 12, 0}, {6, 15, 12, 0}},
    {{6, 6, 6, 3}, {12, 9, 9, 6}, {6, 12, 9, 6}},
    {{8, 8, 5, 0}, {15, 12, 9, 0}, {6, 18, 9, 0}},
};

void DecodeMpeg1(MP3BitReader& bits, const MP3SideInfo& side, int gr, int ch,
                 const MP3GranuleInfo& info, MP3ScaleFactors& factors) {
    const int slen1 = kSlen[0][info.scalefacCompress];
    const int slen2 = kSlen[1][info.scalefacCompress];
    if (info.windowSwitching && info.blockType == 2) {
        int firstShort = 0;
        if (info.mixedBlock) {
            for (int sfb = 0; sfb < 8; ++sfb)
                factors.longBands[sfb] = static_cast<std::uint8_t>(bits.Get(slen1));
            firstShort = 3;
        }
        for (int sfb = firstShort; sfb < 12; ++sfb)
            for (int w = 0; w < 3; ++w)
                factors.shortBands[sfb][w] =
                    static_cast<std::uint8_t>(bits.Get(sfb < 6 ? slen1 : slen2));
        for (int w = 0; w < 3; ++w)
            factors.shortBands[12][w] = 0;
        return;
    }
    static const int kGroupStart[5] = {0, 6, 11, 16, 21};
    for (int group = 0; group < 4; ++group) {
        if (gr == 1 && side.scfsi[ch][group]) continue;
        for (int sfb = kGroupStart[group]; sfb < kGroupStart[group + 1]; ++sfb)
            factors.longBands[sfb] = static_cast<std::uint8_t>(bits.Get(sfb < 11 ? slen1 : slen2));
    }
    factors.longBands[21] = 0;
}

void DecodeMpeg2(MP3BitReader& bits, const MP3Header& header, int ch, MP3GranuleInfo& info,
                 MP3ScaleFactors& factors) {
    int slen[4] = {};
    int partition;
    const int compress = info.scalefacCompress;
    info.preflag = 0;
    factors.intensityScale = 0;
    if (header.mode == 1 && (header.modeExtension & 1) && ch == 1) {
        factors.intensityScale = compress & 1;
        const int c = compress >> 1;
        if (c < 180) {
            slen[0] = c / 36;
            slen[1] = c % 36 / 6;
            slen[2] = c % 36 % 6;
            partition = 3;
        } else if (c < 244) {
            slen[0] = (c - 180) % 64 >> 4;
            slen[1] = (c - 180) % 16 >> 2;
            slen[2] = (c - 180) % 4;
            partition = 4;
        } else {
            slen[0] = (c - 244) / 3;
            slen[1] = (c - 244) % 3;
            partition = 5;
        }
    } else if (compress < 400) {
        slen[0] = (compress >> 4) / 5;
        slen[1] = (compress >> 4) % 5;
        slen[2] = (compress % 16) >> 2;
        slen[3] = compress % 4;
        partition = 0;
    } else if (compress < 500) {
        slen[0] = ((compress - 400) >> 2) / 5;
        slen[1] = ((compress - 400) >> 2) % 5;
        slen[2] = (compress - 400) % 4;
        partition = 1;
    } else {
        slen[0] = (compress - 500) / 3;
        slen[1] = (compress - 500) % 3;
        info.preflag = 1;
        partition = 2;
    }

    const bool shortBlocks = info.windowSwitching && info.blockType == 2;
    const int blockIndex = shortBlocks ? (info.mixedBlock ? 2 : 1) : 0;
    const int* counts = kPartitions[partition][blockIndex];
    // Scale factors in order: the long bands first (all of them, or those of the long part of
    // a mixed block), then the short bands window by window.
    const int longCount = blockIndex == 0 ? 21 : (blockIndex == 2 ? 6 : 0);
    const int firstShort = blockIndex == 2 ? 3 : 0;
    int index = 0;
    for (int group = 0; group < 4; ++group) {
        const std::uint8_t limit = static_cast<std::uint8_t>((1 << slen[group]) - 1);
        for (int n = 0; n < counts[group]; ++n, ++index) {
            const auto value = static_cast<std::uint8_t>(bits.Get(slen[group]));
            if (index < longCount) {
                factors.longBands[index] = value;
                factors.longLimit[index] = limit;
            } else {
                const int sfb = firstShort + (index - longCount) / 3;
                factors.shortBands[sfb][(index - longCount) % 3] = value;
                factors.shortLimit[sfb] = limit;
            }
        }
    }
    for (int sfb = index; sfb < 22 && blockIndex == 0; ++sfb) {
        factors.longBands[sfb] = 0;
        factors.longLimit[sfb] = 0;
    }
    if (blockIndex != 0) {
        for (int sfb = firstShort + (index - longCount) / 3; sfb < 13; ++sfb) {
            factors.shortBands[sfb][0] = factors.shortBands[sfb][1] = factors.shortBands[sfb][2] =
                0;
            factors.shortLimit[sfb] = 0;
        }
    }
}

} // namespace

void DecodeScaleFactors(MP3BitReader& bits, const MP3Header& header, const MP3SideInfo& side,
                        int gr, int ch, MP3GranuleInfo& info, MP3ScaleFactors& factors) {
    if (header.version == 0)
        DecodeMpeg1(bits, side, gr, ch, info, factors);
    else
        DecodeMpeg2(bits, header, ch, info, factors);
}
