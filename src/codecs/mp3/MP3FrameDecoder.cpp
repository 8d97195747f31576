#include "codecs/mp3/MP3FrameDecoder.h"

#include "codecs/mp3/MP3BandTables.h"
#include "codecs/mp3/MP3BitReader.h"
#include "codecs/mp3/MP3Header.h"
#include "codecs/mp3/MP3Huffman.h"
#include "codecs/mp3/MP3Hybrid.h"
#include "codecs/mp3/MP3Requantize.h"
#include "codecs/mp3/MP3Stereo.h"

#include <algorithm>
#include <cstring>

void MP3FrameDecoder::Reset() {
    mainData_.Clear();
    std::memset(overlap_, 0, sizeof overlap_);
    for (MP3PolyphaseSynth& synth : synth_)
        synth.Reset();
    factors_[0] = MP3ScaleFactors();
    factors_[1] = MP3ScaleFactors();
}

void MP3FrameDecoder::SkipFrame(const MP3Header& header, const std::uint8_t* body, int length) {
    const int sideLength = header.GetSideInfoLength();
    if (length <= sideLength) return;
    DecodeSideInformation(body, header, side_);
    mainData_.Load(side_.mainDataBegin, body + sideLength, length - sideLength);
}

bool MP3FrameDecoder::DecodeFrame(const MP3Header& header, const std::uint8_t* body, int length,
                                  int* out) {
    const int sideLength = header.GetSideInfoLength();
    const int channels = header.GetChannels();
    DecodeSideInformation(body, header, side_);
    const bool complete =
        length >= sideLength &&
        mainData_.Load(side_.mainDataBegin, body + sideLength, length - sideLength);
    const MP3BandTable& bands = GetMP3BandTable(header.version, header.sampleRateIndex);

    int bitPosition = 0;
    for (int gr = 0; gr < header.GetGranules(); ++gr) {
        int count[2] = {0, 0};
        for (int ch = 0; ch < channels; ++ch) {
            if (complete) {
                count[ch] = DecodeGranuleChannel(header, gr, ch, bitPosition);
            } else {
                std::fill(spectrum_[ch], spectrum_[ch] + 576, 0.0f);
            }
        }
        if (channels == 2 && complete)
            JointStereoProcessing(header, side_.granules[gr][1], factors_[1], bands, spectrum_[0],
                                  spectrum_[1], count);
        for (int ch = 0; ch < channels; ++ch)
            Synthesize(side_.granules[gr][ch], bands, ch, count[ch], channels,
                       out + gr * 576 * channels);
    }
    return complete;
}

int MP3FrameDecoder::DecodeGranuleChannel(const MP3Header& header, int gr, int ch,
                                          int& bitPosition) {
    MP3GranuleInfo& info = side_.granules[gr][ch];
    const MP3BandTable& bands = GetMP3BandTable(header.version, header.sampleRateIndex);
    const int dataBits = mainData_.GetFill() * 8;
    const int start = std::min(bitPosition, dataBits);
    const int end = std::min(start + info.part23Length, dataBits);
    bitPosition = start + info.part23Length;

    MP3BitReader bits(mainData_.Data(), start);
    DecodeScaleFactors(bits, header, side_, gr, ch, info, factors_[ch]);
    int count = bits.Position() <= end ? DecodeHuffmanData(bits, end, info, bands, values_) : -1;
    count = std::max(count, 0);
    RequantizeSpectrum(values_, count, info, factors_[ch], bands, spectrum_[ch]);
    return count;
}

void MP3FrameDecoder::Synthesize(const MP3GranuleInfo& info, const MP3BandTable& bands, int ch,
                                 int count, int channels, int* out) {
    float* x = spectrum_[ch];
    const int shortStart = GetShortBlockStart(info, bands);
    if (shortStart < 576) {
        ReorderShortBlocks(x, info, bands, reordered_);
        x = reordered_;
        // Reordering spreads a band's windows over the whole band.
        for (int sfb = 0; sfb < 13 && count > shortStart; ++sfb) {
            if (count <= bands.shortBands[sfb + 1] * 3) {
                count = bands.shortBands[sfb + 1] * 3;
                break;
            }
        }
    }
    const int mixedSubbands = GetMixedSubbands(info, bands.shortBands[3] * 3);
    int subbands = (count + 17) / 18;
    subbands = AliasReduction(x, info, mixedSubbands, subbands);
    IMDCTSynthesize(x, info, mixedSubbands, subbands, overlap_[ch], subbandSamples_);
    for (int ss = 0; ss < 18; ++ss)
        synth_[ch].Synthesize(subbandSamples_ + ss * 32, out + ss * 32 * channels + ch, channels);
}
