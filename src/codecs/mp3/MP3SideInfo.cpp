#include "codecs/mp3/MP3SideInfo.h"

#include "codecs/mp3/MP3BitReader.h"
#include "codecs/mp3/MP3Header.h"

#include <algorithm>

namespace {

void DecodeGranuleInfo(MP3BitReader& bits, bool mpeg1, MP3GranuleInfo& g) {
    g.part23Length = static_cast<int>(bits.Get(12));
    // More than 288 pairs cannot fit in a granule; such data is damaged.
    g.bigValues = std::min(static_cast<int>(bits.Get(9)), 288);
    g.globalGain = static_cast<int>(bits.Get(8));
    g.scalefacCompress = static_cast<int>(bits.Get(mpeg1 ? 4 : 9));
    g.windowSwitching = static_cast<int>(bits.Get(1));
    if (g.windowSwitching) {
        g.blockType = static_cast<int>(bits.Get(2));
        g.mixedBlock = static_cast<int>(bits.Get(1));
        g.tableSelect[0] = static_cast<int>(bits.Get(5));
        g.tableSelect[1] = static_cast<int>(bits.Get(5));
        g.tableSelect[2] = 0;
        for (int& gain : g.subblockGain)
            gain = static_cast<int>(bits.Get(3));
        // The region boundaries are implicit: region 1 reaches the end of the big values.
        g.region0Count = g.blockType == 2 && !g.mixedBlock ? 8 : 7;
        g.region1Count = 20 - g.region0Count;
    } else {
        g.blockType = 0;
        g.mixedBlock = 0;
        for (int& table : g.tableSelect)
            table = static_cast<int>(bits.Get(5));
        g.subblockGain[0] = g.subblockGain[1] = g.subblockGain[2] = 0;
        g.region0Count = static_cast<int>(bits.Get(4));
        g.region1Count = static_cast<int>(bits.Get(3));
    }
    g.preflag = mpeg1 ? static_cast<int>(bits.Get(1)) : 0;
    g.scalefacScale = static_cast<int>(bits.Get(1));
    g.count1TableSelect = static_cast<int>(bits.Get(1));
}

} // namespace

void DecodeSideInformation(const std::uint8_t* data, const MP3Header& header, MP3SideInfo& info) {
    MP3BitReader bits(data);
    const bool mpeg1 = header.version == 0;
    const int channels = header.GetChannels();
    if (mpeg1) {
        info.mainDataBegin = static_cast<int>(bits.Get(9));
        info.privateBits = static_cast<int>(bits.Get(channels == 1 ? 5 : 3));
        for (int ch = 0; ch < channels; ++ch)
            for (int& band : info.scfsi[ch])
                band = static_cast<int>(bits.Get(1));
    } else {
        info.mainDataBegin = static_cast<int>(bits.Get(8));
        info.privateBits = static_cast<int>(bits.Get(channels == 1 ? 1 : 2));
    }
    for (int gr = 0; gr < header.GetGranules(); ++gr)
        for (int ch = 0; ch < channels; ++ch)
            DecodeGranuleInfo(bits, mpeg1, info.granules[gr][ch]);
}
