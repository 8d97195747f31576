#pragma once

#include "codecs/mp3/MP3FrameDecoder.h"
#include "codecs/mp3/MP3Header.h"
#include "codecs/mp3/MP3ReadFile.h"
#include "sound/SoundSource.h"

#include <cstdint>
#include <vector>

// A source over an MPEG-1, MPEG-2 or MPEG-2.5 Layer III file. The length comes from a Xing,
// Info or VBRI frame count, from counting the frames of a short file, or is estimated from the
// average bit rate of the first frames and corrected while reading. Seeking finds the frame by
// byte position (constant bit rate) or by walking the frame headers (variable bit rate) and
// decodes up to four frames before the target to rebuild the decoder's state. When the encoder
// recorded its delay and padding (a LAME or libavcodec tag in the Info or Xing frame), the stream
// starts after the encoder's and the decoder's delay and ends before the padding, as it was
// before it was encoded.
class LMP3Source : public LSoundSourceBase {
public:
    static constexpr int kMaxAmplitude = 2097152;

    // Opens and scans the file; the error code is sndErrOpen when it cannot be opened and
    // sndErrFormat when no Layer III frame is found.
    explicit LMP3Source(const char* path);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_ - skip_; }
    int GetEndSample() const override { return end_ - skip_; }
    void Seek(int frame) override;

    // The first frame's header (its bit rate replaced by the average measured when opening).
    const MP3Header& GetReferenceHeader() const { return reference_; }

private:
    // Finds the first frame, reads a VBR header or measures the average bit rate.
    bool DecodeInitialHeader();
    // Finds and decodes the next frame of the stream into out; false at the end of the
    // file or when no fitting frame can be found.
    bool DecodeFrame(int* out);
    // Moves to the next header that is followed by another header of the stream (or whose
    // frame ends the audio); false when there is none.
    bool FindFrameStart();
    void EstimateEnd();
    // Moves the file to the start of the given frame (counted from the first audio frame).
    void MoveToFrame(int frame);

    // Every kIndexStep-th frame's offset is kept once a seek has walked past it.
    static constexpr int kIndexStep = 32;

    // Positions are counted in decoded frames, the encoder's and the decoder's delay included;
    // the stream seen from outside starts `skip_` frames in.
    int position_ = 0;
    int end_ = 0;
    int skip_ = 0;
    int padding_ = 0; // decoded frames after the stream's end
    int frameCount_ = 0; // frames from a VBR header or a full count; 0 when unknown
    MP3ReadFile file_;
    std::int64_t firstFrameOffset_ = 0; // the first audio frame (after a VBR header frame)
    MP3Header reference_;
    MP3Header header_;
    double bytesPerFrame_ = 0;
    bool variableBitRate_ = false;
    std::vector<std::int64_t> seekIndex_; // frames 0, kIndexStep, 2 kIndexStep, ...
    int samplesPerFrame_ = 1152;
    int decodedEnd_ = 0; // the frame position just after the last decoded frame
    int delivered_ = 0;  // frames of decodeBuffer_ already read
    MP3FrameDecoder decoder_;
    int decodeBuffer_[1152 * 2] = {};
    std::uint8_t body_[MP3FrameDecoder::kMaxFrameBody + 8] = {};
};
