#pragma once

#include "codecs/mp3/MP3MainData.h"
#include "codecs/mp3/MP3PolyphaseSynth.h"
#include "codecs/mp3/MP3ScaleFactors.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <cstdint>

struct MP3BandTable;
struct MP3Header;

// Decodes Layer III frames into interleaved integer samples, keeping the state that runs from
// frame to frame: the bit reservoir, the IMDCT overlap and the synthesis filter history.
class MP3FrameDecoder {
public:
    // Longest frame body (side information and main data): 320 kbit/s at 32 kHz, padded.
    static constexpr int kMaxFrameBody = 1441;

    MP3FrameDecoder() { Reset(); }

    void Reset();

    // Decodes the frame whose body (the bytes after header and CRC) is given, writing
    // samples-per-frame x channels values to out. When the bit reservoir does not hold the
    // data the frame begins with, the frame plays as silence (ending the previous frame's
    // sound) and the result is false.
    bool DecodeFrame(const MP3Header& header, const std::uint8_t* body, int length, int* out);

    // Keeps the main data of a frame that is not played, for the frames that follow.
    void SkipFrame(const MP3Header& header, const std::uint8_t* body, int length);

private:
    // Scale factors, Huffman data and requantisation of one granule and channel; returns the
    // number of lines up to the last nonzero one.
    int DecodeGranuleChannel(const MP3Header& header, int gr, int ch, int& bitPosition);
    // Reordering, alias reduction, IMDCT and synthesis of one granule and channel.
    void Synthesize(const MP3GranuleInfo& info, const MP3BandTable& bands, int ch, int count,
                    int channels, int* out);

    MP3MainData mainData_;
    MP3SideInfo side_;
    MP3ScaleFactors factors_[2];
    int values_[576];
    float spectrum_[2][576];
    float reordered_[576];
    float overlap_[2][576];
    float subbandSamples_[18 * 32];
    MP3PolyphaseSynth synth_[2];
};
