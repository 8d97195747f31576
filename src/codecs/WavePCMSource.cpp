#include "codecs/WavePCMSource.h"

#include "codecs/WaveBytes.h"
#include "codecs/WaveRiffReader.h"
#include "sound/AudioBuffer.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int kMaxAmplitude16 = 524272;

int FramesOf(int64_t bytes, int bytesPerFrame) {
    return static_cast<int>(std::clamp<int64_t>(bytes / bytesPerFrame, 0, INT_MAX));
}

} // namespace

LSRCPCMFileBase::LSRCPCMFileBase(LFile&& file, int64_t dataStart, int sampleRate,
                                 unsigned char channels, uint32_t dataBytes, int bytesPerSample,
                                 ConvertFunction convert)
    : LSoundSourceBase(sampleRate, channels, kMaxAmplitude16), file_(std::move(file)),
      dataStart_(dataStart), bytesPerSample_(bytesPerSample),
      bytesPerFrame_(channels_ * bytesPerSample), convert_(convert) {
    if (!file_.IsOpen()) error_ = sndErrOpen;
    frameCount_ =
        LWaveRiffReader::IsUnknownDataSize(dataBytes) ? -1 : FramesOf(dataBytes, bytesPerFrame_);
    stored_.resize(static_cast<size_t>(kBlockFrames) * bytesPerFrame_);
}

void LSRCPCMFileBase::Read(int* buffer, int frames) {
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        ReadBlock(buffer, block);
        buffer += block * channels_;
        frames -= block;
    }
}

void LSRCPCMFileBase::ReadBlock(int* buffer, int frames) {
    const int start = position_;
    position_ += frames;
    // Frames before the start of the stream are zeros; so are frames past a known end.
    const int before = start < 0 ? std::min(frames, -start) : 0;
    const int first = start + before;
    int count = frames - before;
    if (frameCount_ >= 0) count = std::clamp(frameCount_ - first, 0, count);

    size_t bytes = 0;
    if (count > 0 && file_.IsOpen()) {
        const int64_t offset = dataStart_ + static_cast<int64_t>(first) * bytesPerFrame_;
        bool failed = false;
        bytes = ReadFileAt(file_, offset, stored_.data(),
                           static_cast<size_t>(count) * bytesPerFrame_, failed);
        // A disk that cannot give the samples is not the recording's end.
        if (failed) error_ = sndErrRead;
    }
    // A file shorter than its header says ends where its samples end.
    if (frameCount_ >= 0 && bytes < static_cast<size_t>(count) * bytesPerFrame_)
        frameCount_ = first + static_cast<int>(bytes / bytesPerFrame_);
    const int values = static_cast<int>(bytes) / bytesPerSample_;
    const int leading = before * channels_;
    ClearAudioBuffer(buffer, leading);
    convert_(buffer + leading, stored_.data(), values);
    ClearAudioBuffer(buffer + leading + values, frames * channels_ - leading - values);
}

int LSRCPCMFileBase::GetEndSample() const {
    if (frameCount_ >= 0) return frameCount_;
    // The writer may have finished since: its size field stands just before the samples.
    uint8_t size[4];
    if (ReadFileAt(file_, dataStart_ - 4, size, sizeof size) == sizeof size &&
        !LWaveRiffReader::IsUnknownDataSize(GetLE32(size))) {
        frameCount_ = FramesOf(GetLE32(size), bytesPerFrame_);
        return frameCount_;
    }
    return FramesOf(file_.GetSize() - dataStart_, bytesPerFrame_);
}
