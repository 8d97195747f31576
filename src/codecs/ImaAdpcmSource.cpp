#include "codecs/ImaAdpcmSource.h"

#include "codecs/WaveBytes.h"
#include "codecs/WaveRiffReader.h"
#include "sound/AudioBuffer.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int kMaxAmplitude16 = 524272;

} // namespace

LIMASoundSource::LIMASoundSource(LFile&& file, int64_t dataStart, uint32_t dataBytes,
                                 int sampleRate, unsigned blockAlign)
    : LSoundSourceBase(sampleRate, 1, kMaxAmplitude16), file_(std::move(file)),
      dataStart_(dataStart), blockAlign_(blockAlign),
      samplesPerBlock_(static_cast<int>((blockAlign - 4) * 2 + 1)), discard_(kDiscardFrames) {
    int64_t bytes = dataBytes;
    if (LWaveRiffReader::IsUnknownDataSize(dataBytes))
        bytes = std::max<int64_t>(file_.GetSize() - dataStart_, 0);
    dataEnd_ = dataStart_ + bytes;

    const int64_t rest = bytes % blockAlign_;
    int64_t end = bytes / blockAlign_ * samplesPerBlock_;
    if (rest > 3) end += 2 * rest - 7;
    end_ = static_cast<int>(std::min<int64_t>(end, INT_MAX));
    StartAt(dataStart_);
}

void LIMASoundSource::StartAt(int64_t offset) {
    readOffset_ = offset;
    byteCount_ = byteIndex_ = 0;
    samplesLeftInBlock_ = 0;
    highNibblePending_ = false;
}

bool LIMASoundSource::NextByte(uint8_t& byte) {
    if (byteIndex_ == byteCount_) {
        const int64_t want = std::min<int64_t>(kReadBytes, dataEnd_ - readOffset_);
        bool failed = false;
        byteCount_ = want > 0 ? static_cast<int>(ReadFileAt(file_, readOffset_, bytes_,
                                                            static_cast<size_t>(want), failed))
                              : 0;
        if (failed) error_ = sndErrRead;
        byteIndex_ = 0;
        readOffset_ += byteCount_;
        if (byteCount_ == 0) return false;
    }
    byte = bytes_[byteIndex_++];
    return true;
}

int LIMASoundSource::Decode(int* buffer, int frames) {
    for (int done = 0; done < frames; ++done) {
        if (samplesLeftInBlock_ == 0) {
            uint8_t header[4];
            for (uint8_t& b : header) {
                if (!NextByte(b)) return done;
            }
            decoder_.Reset(static_cast<int16_t>(GetLE16(header)), header[2]);
            buffer[done] = decoder_.GetPredictor() * 16;
            samplesLeftInBlock_ = samplesPerBlock_ - 1;
            highNibblePending_ = false;
            continue;
        }
        unsigned char code;
        if (highNibblePending_) {
            code = pendingByte_ >> 4;
            highNibblePending_ = false;
        } else {
            if (!NextByte(pendingByte_)) return done;
            code = pendingByte_ & 15;
            highNibblePending_ = true;
        }
        buffer[done] = decoder_.DecodeSample(code);
        --samplesLeftInBlock_;
    }
    return frames;
}

void LIMASoundSource::Read(int* buffer, int frames) {
    const int start = position_;
    position_ += frames;
    const int before = start < 0 ? std::min(frames, -start) : 0;
    const int first = start + before;
    const int count = std::clamp(end_ - first, 0, frames - before);
    ClearAudioBuffer(buffer, before);
    const int decoded = Decode(buffer + before, count);
    ClearAudioBuffer(buffer + before + decoded, frames - before - decoded);
}

void LIMASoundSource::Seek(int frame) {
    if (frame <= 0 || frame > end_) {
        StartAt(dataStart_);
        position_ = frame;
        return;
    }
    const int block = frame / samplesPerBlock_;
    StartAt(dataStart_ + int64_t{block} * blockAlign_);
    position_ = block * samplesPerBlock_;
    while (position_ < frame)
        Read(discard_.data(), std::min(frame - position_, kDiscardFrames));
}

LSoundSource LIMAWaveOpenSource(LFile& file, int64_t dataStart, uint32_t dataBytes, int sampleRate,
                                unsigned char channels, unsigned blockAlign) {
    if (channels != 1) return LSoundSource(new LSoundSourceError(sndErrClosed));
    if (blockAlign < LIMASoundSource::kMinBlockAlign ||
        blockAlign > LIMASoundSource::kMaxBlockAlign)
        return LSoundSource(new LSoundSourceError(sndErrFormat));
    return LSoundSource(
        new LIMASoundSource(std::move(file), dataStart, dataBytes, sampleRate, blockAlign));
}
