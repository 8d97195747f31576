#include "codecs/mp3/MP3Huffman.h"

#include "codecs/mp3/MP3BandTables.h"
#include "codecs/mp3/MP3BitReader.h"
#include "codecs/mp3/MP3HuffmanTables.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

namespace {

// A code table turned into lookup tables: each level is indexed by the next few bits of the
// stream. An entry is either a value (bits 0-7) with the number of bits it uses in this
// level (bits 8-15), or a link (bit 31) to the next level at an offset (bits 8-30) indexed by
// a number of bits (bits 0-7).
class HuffmanDecoder {
public:
    HuffmanDecoder() = default;

    explicit HuffmanDecoder(const MP3HuffmanCodeTable& table) {
        std::vector<Code> codes;
        for (int i = 0; i < table.count; ++i) {
            const int value = ((i / table.wrap) << 4) | (i % table.wrap);
            codes.push_back({table.codes[i], table.lengths[i], value});
        }
        rootBits_ = BuildLevel(codes, 0).second;
    }

    int Decode(MP3BitReader& bits) const {
        int levelBits = rootBits_;
        std::uint32_t entry = entries_[bits.Peek(levelBits)];
        while (entry & kLink) {
            bits.Skip(levelBits);
            levelBits = static_cast<int>(entry & 0xFF);
            entry = entries_[((entry >> 8) & 0x7FFFFF) + bits.Peek(levelBits)];
        }
        bits.Skip(static_cast<int>((entry >> 8) & 0xFF));
        return static_cast<int>(entry & 0xFF);
    }

private:
    struct Code {
        std::uint32_t code;
        int length;
        int value;
    };
    static constexpr std::uint32_t kLink = 0x80000000u;
    static constexpr int kMaxLevelBits = 9;

    // Builds the level for codes that share their first `consumed` bits; returns its offset
    // and index width.
    std::pair<int, int> BuildLevel(const std::vector<Code>& codes, int consumed) {
        int longest = 0;
        for (const Code& c : codes)
            longest = std::max(longest, c.length - consumed);
        const int levelBits = std::min(longest, kMaxLevelBits);
        const int base = static_cast<int>(entries_.size());
        entries_.resize(base + (std::size_t{1} << levelBits), 0);
        std::map<std::uint32_t, std::vector<Code>> longer;
        for (const Code& c : codes) {
            const int rest = c.length - consumed;
            const std::uint32_t tail = c.code & ((1u << rest) - 1);
            if (rest <= levelBits) {
                const std::uint32_t first = tail << (levelBits - rest);
                for (std::uint32_t j = 0; j < (1u << (levelBits - rest)); ++j)
                    entries_[base + first + j] = static_cast<std::uint32_t>(c.value | rest << 8);
            } else {
                longer[tail >> (rest - levelBits)].push_back(c);
            }
        }
        for (const auto& [prefix, group] : longer) {
            const auto [offset, bits] = BuildLevel(group, consumed + levelBits);
            entries_[base + prefix] =
                kLink | static_cast<std::uint32_t>(offset) << 8 | static_cast<std::uint32_t>(bits);
        }
        return {base, levelBits};
    }

    std::vector<std::uint32_t> entries_;
    int rootBits_ = 0;
};

struct HuffmanDecoders {
    HuffmanDecoder pairs[32];
    HuffmanDecoder quadA;

    HuffmanDecoders() : quadA(kMP3QuadTableA) {
        for (int t = 0; t < 32; ++t)
            if (kMP3PairTables[t].wrap != 0) pairs[t] = HuffmanDecoder(kMP3PairTables[t]);
    }

    static const HuffmanDecoders& Get() {
        static const HuffmanDecoders decoders;
        return decoders;
    }
};

// Takes one value of a pair from the front of `word` (the bits after the code word):
// linbits extend a 15, a sign bit follows every nonzero value. Counts the bits used.
inline int TakeValue(std::uint32_t& word, int& used, int value, int linbits) {
    if (value == 15 && linbits != 0) {
        value += static_cast<int>(word >> (32 - linbits));
        word <<= linbits;
        used += linbits;
    }
    // Without branches: the sign bit is there only for a nonzero value.
    const int present = value != 0;
    const int negative = static_cast<int>(word >> 31) & present;
    value = (value ^ -negative) + negative;
    word <<= present;
    used += present;
    return value;
}

} // namespace

int DecodeHuffmanData(MP3BitReader& bits, int endBit, const MP3GranuleInfo& info,
                      const MP3BandTable& bands, int* values) {
    const HuffmanDecoders& decoders = HuffmanDecoders::Get();
    const int bigEnd = info.bigValues * 2;
    int regionEnd[3];
    if (info.windowSwitching) {
        regionEnd[0] = info.blockType == 2 ? bands.shortBands[3] * 3 : bands.longBands[8];
        regionEnd[1] = 576;
    } else {
        regionEnd[0] = bands.longBands[std::min(info.region0Count + 1, 22)];
        regionEnd[1] = bands.longBands[std::min(info.region0Count + info.region1Count + 2, 22)];
    }
    regionEnd[2] = 576;

    int i = 0;
    for (int region = 0; region < 3; ++region) {
        const int end = std::min(std::max(regionEnd[region], i), bigEnd);
        const int table = info.tableSelect[region];
        if (table == 0) {
            std::fill(values + i, values + end, 0);
            i = end;
            continue;
        }
        const MP3HuffmanCodeTable& codes = kMP3PairTables[table];
        if (codes.wrap == 0) break;
        const HuffmanDecoder& decoder = decoders.pairs[table];
        const int linbits = codes.linbits;
        for (; i < end; i += 2) {
            if (bits.Position() > endBit) break;
            const int pair = decoder.Decode(bits);
            // At most 2 x (13 linbits + 1 sign bit) follow the code word.
            std::uint32_t word = bits.Peek(32);
            int used = 0;
            values[i] = TakeValue(word, used, pair >> 4, linbits);
            values[i + 1] = TakeValue(word, used, pair & 15, linbits);
            bits.Skip(used);
        }
    }
    if (i < bigEnd || bits.Position() > endBit) {
        std::memset(values, 0, 576 * sizeof *values);
        return -1;
    }

    const bool tableB = info.count1TableSelect != 0;
    while (i <= 572 && bits.Position() < endBit) {
        const int quad = tableB ? static_cast<int>(15 - bits.Get(4)) : decoders.quadA.Decode(bits);
        std::uint32_t word = bits.Peek(32);
        int used = 0;
        const int v = TakeValue(word, used, (quad >> 3) & 1, 0);
        const int w = TakeValue(word, used, (quad >> 2) & 1, 0);
        const int x = TakeValue(word, used, (quad >> 1) & 1, 0);
        const int y = TakeValue(word, used, quad & 1, 0);
        bits.Skip(used);
        // A quadruple that runs past the end of the granule's data is not part of it.
        if (bits.Position() > endBit) break;
        values[i] = v;
        values[i + 1] = w;
        values[i + 2] = x;
        values[i + 3] = y;
        i += 4;
    }
    std::fill(values + i, values + 576, 0);
    while (i > 0 && values[i - 1] == 0)
        --i;
    return i;
}
