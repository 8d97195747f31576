#include "codecs/RawFileDataSoundSink.h"

#include <algorithm>

LRawFileDataSoundSinkBase::LRawFileDataSoundSinkBase(const char* path, int sampleRate,
                                                     unsigned char channels, int startFrame,
                                                     int bytesPerSample, HeaderFunction header,
                                                     ConvertFunction convert)
    : LSoundSinkBase(sampleRate, channels), bytesPerSample_(bytesPerSample),
      bytesPerFrame_(static_cast<uint32_t>(channels_ * bytesPerSample)), header_(header),
      convert_(convert) {
    if (IsFailed()) return;
    file_ = OpenSharedReadWrite(path);
    if (!file_.IsOpen()) {
        error_ |= 1;
        return;
    }
    position_ = std::max(startFrame, 0);
    headerLength_ = static_cast<int64_t>(WriteHeader(false));
    writeOffset_ = headerLength_;
    if (position_ > 0)
        writeOffset_ =
            std::min(file_.GetSize(), headerLength_ + int64_t{position_} * bytesPerFrame_);
    TruncateFile(file_, writeOffset_);
    stored_.resize(static_cast<size_t>(kBlockFrames) * bytesPerFrame_);
}

LRawFileDataSoundSinkBase::~LRawFileDataSoundSinkBase() {
    if (file_.IsOpen()) WriteHeader(true);
}

size_t LRawFileDataSoundSinkBase::WriteHeader(bool final) const {
    uint8_t bytes[kMaxHeaderBytes];
    const size_t length = header_(*this, final, bytes);
    WriteFileAt(file_, 0, bytes, length);
    return length;
}

void LRawFileDataSoundSinkBase::Write(const int* buffer, int frames) {
    if (!file_.IsOpen() || IsFailed()) return;
    position_ += frames;
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        convert_(stored_.data(), buffer, block * channels_);
        const size_t bytes = static_cast<size_t>(block) * bytesPerFrame_;
        // A full disk: the file is not whole, and nothing more is written.
        if (!WriteFileAt(file_, writeOffset_, stored_.data(), bytes)) {
            error_ |= 1;
            return;
        }
        writeOffset_ += static_cast<int64_t>(bytes);
        buffer += block * channels_;
        frames -= block;
    }
}

void LRawFileDataSoundSinkBase::Seek(int frame) {
    if (!file_.IsOpen() || frame > position_) return;
    position_ = std::max(frame, 0);
    writeOffset_ = headerLength_ + int64_t{position_} * bytesPerFrame_;
    TruncateFile(file_, writeOffset_);
}
