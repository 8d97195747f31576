// The decoding stages on their own: headers that are refused, every Huffman code of every
// table, and the output scale.
#include "Mp3TestUtil.h"

#include "codecs/MP3File.h"
#include "codecs/mp3/MP3BandTables.h"
#include "codecs/mp3/MP3BitReader.h"
#include "codecs/mp3/MP3Header.h"
#include "codecs/mp3/MP3Huffman.h"
#include "codecs/mp3/MP3HuffmanTables.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <gtest/gtest.h>

namespace {

// Frame sizes of every version are covered by decoding the conformance bitstreams and LAME's
// files at the lower rates; what must never be taken for a frame is checked here.
TEST(Mp3Header, RefusesWhatIsNotLayerThree) {
    const uint8_t refused[][4] = {
        {0xFF, 0xFB, 0x00, 0x44}, // free format
        {0xFF, 0xFB, 0xF0, 0x44}, // bit-rate index 15
        {0xFF, 0xFB, 0x9C, 0x44}, // sample-rate index 3
        {0xFF, 0xFD, 0x90, 0x44}, // Layer II
        {0xFF, 0xEB, 0x90, 0x44}, // reserved version
        {0xFE, 0xFB, 0x90, 0x44}, // no sync
    };
    for (const auto& bytes : refused) {
        MP3Header header;
        EXPECT_FALSE(header.Parse(bytes)) << std::hex << int(bytes[1]) << " " << int(bytes[2]);
    }
}

// Writes bits first to last, as the stream holds them.
class BitWriter {
public:
    void Put(uint32_t value, int bits) {
        for (int i = bits - 1; i >= 0; --i) {
            if (count_ % 8 == 0) bytes_.push_back(0);
            bytes_.back() |= uint8_t(((value >> i) & 1) << (7 - count_ % 8));
            ++count_;
        }
    }
    int Count() const { return count_; }
    // The bytes, with room for the reader's look-ahead.
    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = bytes_;
        out.resize(out.size() + 8, 0);
        return out;
    }

private:
    std::vector<uint8_t> bytes_;
    int count_ = 0;
};

// Codes one value's linbits and sign as a pair table does.
void PutValue(BitWriter& writer, int value, int linbits) {
    const int magnitude = std::abs(value);
    if (linbits != 0 && magnitude >= 15) writer.Put(uint32_t(magnitude - 15), linbits);
    if (magnitude != 0) writer.Put(value < 0, 1);
}

// Every code word of every pair table, with signs and (where the table has them) linbits,
// decodes to its pair.
TEST(Mp3Huffman, EveryPairTableDecodesEveryCode) {
    const MP3BandTable& bands = GetMP3BandTable(0, 0);
    for (int t = 1; t < 32; ++t) {
        const MP3HuffmanCodeTable& table = kMP3PairTables[t];
        if (table.wrap == 0) continue;
        BitWriter writer;
        std::vector<int> expected;
        for (int i = 0; i < table.count; ++i) {
            int x = i / table.wrap, y = i % table.wrap;
            if (table.linbits != 0 && x == 15) x += (i * 37) % (1 << table.linbits);
            if (table.linbits != 0 && y == 15) y += (1 << table.linbits) - 1;
            if (i % 3 == 1) x = -x;
            if (i % 4 == 2) y = -y;
            writer.Put(table.codes[i], table.lengths[i]);
            PutValue(writer, x, table.linbits);
            PutValue(writer, y, table.linbits);
            expected.push_back(x);
            expected.push_back(y);
        }
        MP3GranuleInfo info;
        info.bigValues = table.count;
        info.tableSelect[0] = info.tableSelect[1] = info.tableSelect[2] = t;
        info.region0Count = 15;
        info.region1Count = 7;
        const std::vector<uint8_t> bytes = writer.Bytes();
        MP3BitReader bits(bytes.data());
        std::vector<int> values(576, 99);
        DecodeHuffmanData(bits, writer.Count(), info, bands, values.data());
        EXPECT_EQ(bits.Position(), writer.Count()) << "table " << t;
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), values.begin())) << "table " << t;
        EXPECT_TRUE(std::all_of(values.begin() + long(expected.size()), values.end(),
                                [](int v) { return v == 0; }));
    }
}

// The count1 quadruples of both tables, up to the end of the granule's data.
TEST(Mp3Huffman, QuadrupleTablesDecodeUpToTheEndOfTheData) {
    const MP3BandTable& bands = GetMP3BandTable(0, 0);
    for (int select = 0; select < 2; ++select) {
        BitWriter writer;
        std::vector<int> expected;
        for (int quad = 0; quad < 16; ++quad) {
            if (select == 0)
                writer.Put(kMP3QuadTableA.codes[quad], kMP3QuadTableA.lengths[quad]);
            else
                writer.Put(uint32_t(15 - quad), 4);
            for (int bit = 3; bit >= 0; --bit) {
                const int v = (quad >> bit) & 1;
                if (v != 0) writer.Put(quad % 2, 1);
                expected.push_back(v != 0 && quad % 2 ? -1 : v);
            }
        }
        MP3GranuleInfo info;
        info.count1TableSelect = select;
        const std::vector<uint8_t> bytes = writer.Bytes();
        MP3BitReader bits(bytes.data());
        std::vector<int> values(576, 99);
        const int count = DecodeHuffmanData(bits, writer.Count(), info, bands, values.data());
        EXPECT_EQ(count, 64) << select;
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), values.begin())) << select;
        EXPECT_TRUE(std::all_of(values.begin() + 64, values.end(), [](int v) { return v == 0; }));
    }
}

// A full-scale sine plays at the internal full scale of +-524,288, and the coding's overshoot
// past it is kept, not clipped to the largest 16-bit value.
TEST(Mp3Output, FullScaleSineReachesInternalFullScaleUnclipped) {
    const LSoundSource source = LMP3File::OpenSource(Mp3ConformancePath("l3-sin1k0db.bit").c_str());
    EXPECT_EQ(source->GetMaxAmplitude(), 2097152);
    const std::vector<int> samples = ReadToEnd(source);
    const auto [low, high] = std::minmax_element(samples.begin(), samples.end());
    EXPECT_GT(*high, 524272);
    EXPECT_LT(*high, 524288 * 21 / 20);
    EXPECT_LT(*low, -524288);
    EXPECT_GT(*low, -524288 * 21 / 20);
}

} // namespace
