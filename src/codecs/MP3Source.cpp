#include "codecs/MP3Source.h"

#include "sound/AudioBuffer.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

std::uint32_t BigEndian32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
           static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}

// The decoder's own delay in frames, which the encoder's delay figure leaves out.
constexpr int kDecoderDelay = 529;

// The encoder's delay and padding from the tag after a Xing or Info header's fields; both 0
// when there is none.
void ReadEncoderDelay(const std::uint8_t* frame, int length, int xing, int& delay, int& padding) {
    const std::uint32_t flags = BigEndian32(frame + xing + 4);
    const int tag = xing + 8 + (flags & 1 ? 4 : 0) + (flags & 2 ? 4 : 0) + (flags & 4 ? 100 : 0) +
                    (flags & 8 ? 4 : 0);
    if (length < tag + 24) return;
    if (std::memcmp(frame + tag, "LAME", 4) != 0 && std::memcmp(frame + tag, "Lavc", 4) != 0 &&
        std::memcmp(frame + tag, "Lavf", 4) != 0)
        return;
    delay = frame[tag + 21] << 4 | frame[tag + 22] >> 4;
    padding = (frame[tag + 22] & 0x0F) << 8 | frame[tag + 23];
}

// The frame count of a Xing or Info frame (after the side information) or of a VBRI frame
// (32 bytes after the header); 0 when the frame holds none. `variable` tells whether the
// header announces a variable bit rate (Xing, VBRI) rather than a constant one (Info); `delay`
// and `padding` are the encoder's when its tag follows.
std::uint32_t ReadVbrFrameCount(const std::uint8_t* frame, int length, const MP3Header& header,
                                bool& variable, int& delay, int& padding) {
    const int xing = 4 + header.GetSideInfoLength();
    if (length >= xing + 12 &&
        (std::memcmp(frame + xing, "Xing", 4) == 0 || std::memcmp(frame + xing, "Info", 4) == 0) &&
        (BigEndian32(frame + xing + 4) & 1) != 0) {
        variable = frame[xing] == 'X';
        ReadEncoderDelay(frame, length, xing, delay, padding);
        return BigEndian32(frame + xing + 8);
    }
    constexpr int kVbri = 36;
    if (length >= kVbri + 18 && std::memcmp(frame + kVbri, "VBRI", 4) == 0) {
        variable = true;
        return BigEndian32(frame + kVbri + 14);
    }
    return 0;
}

} // namespace

LMP3Source::LMP3Source(const char* path) : LSoundSourceBase(44100, 2, kMaxAmplitude) {
    if (!file_.Open(path)) {
        error_ = sndErrOpen;
        return;
    }
    if (!DecodeInitialHeader()) {
        error_ = sndErrFormat;
        return;
    }
    channels_ = static_cast<unsigned char>(reference_.GetChannels());
    sampleRate_ = reference_.GetSampleRate();
    samplesPerFrame_ = reference_.GetSamplesPerFrame();
    const double bytes = static_cast<double>(file_.GetBytesRemaining());
    // Frames of a constant bit rate average exactly this many bytes, whatever follows the
    // audio (such as an APE tag); a VBR frame count gives the average of the file.
    bytesPerFrame_ = (reference_.version != 0 ? 72.0 : 144.0) * reference_.bitRate / sampleRate_;
    if (frameCount_ > 0 && variableBitRate_) bytesPerFrame_ = bytes / frameCount_;
    const int frames = frameCount_ > 0
                           ? frameCount_
                           : static_cast<int>(std::min(bytes / bytesPerFrame_ + 0.9, 1e9));
    end_ =
        static_cast<int>(std::min<std::int64_t>(std::int64_t{frames} * samplesPerFrame_, INT_MAX));
    if (skip_ + padding_ >= end_) skip_ = padding_ = 0;
    end_ -= padding_;
    seekIndex_.reserve(static_cast<size_t>(frames) * 2 / kIndexStep + 16);
    seekIndex_.push_back(firstFrameOffset_);
    delivered_ = samplesPerFrame_;
    if (skip_ > 0) Seek(0);
}

bool LMP3Source::DecodeInitialHeader() {
    constexpr int kScanFrames = 12;
    constexpr int kFirstAveraged = 5; // the first frames often differ from the rest
    if (!FindFrameStart()) return false;
    std::int64_t sum = 0;
    std::int64_t laterSum = 0;
    int frames = 0;
    int laterFrames = 0;
    bool ended = false;
    for (int frame = 1; frame <= kScanFrames; ++frame) {
        MP3Header header;
        if (!header.ReadHeader(file_)) {
            ended = true;
            break;
        }
        const std::int64_t frameStart = file_.Tell() - (header.protectionAbsent ? 4 : 6);
        const int length = header.GetFrameLength();
        if (frame == 1) {
            reference_ = header;
            firstFrameOffset_ = frameStart;
            std::uint8_t head[256] = {};
            file_.SeekTo(frameStart);
            int delay = 0;
            int padding = 0;
            const std::uint32_t count =
                ReadVbrFrameCount(head, file_.Read(head, std::min<int>(length, sizeof head)),
                                  header, variableBitRate_, delay, padding);
            if (count > 0 && count <= INT_MAX / 1152) {
                if (delay > 0 || padding > 0) {
                    skip_ = delay + kDecoderDelay;
                    padding_ = std::max(padding - kDecoderDelay, 0);
                }
                // The VBR header frame carries no audio.
                frameCount_ = static_cast<int>(count);
                file_.SeekTo(frameStart + length);
                firstFrameOffset_ = file_.Tell();
                return true;
            }
        }
        file_.SeekTo(frameStart + length);
        if (!header.Matches(reference_)) continue;
        variableBitRate_ = variableBitRate_ || header.bitRate != reference_.bitRate;
        ++frames;
        sum += header.bitRate;
        if (frame >= kFirstAveraged) {
            ++laterFrames;
            laterSum += header.bitRate;
        }
    }
    if (frames == 0) return false;
    file_.SeekTo(firstFrameOffset_);
    if (ended) {
        // The file ended within the first frames: they have all been counted.
        frameCount_ = frames;
        reference_.bitRate = static_cast<int>(sum / frames);
    } else {
        reference_.bitRate =
            static_cast<int>(laterFrames > 0 ? laterSum / laterFrames : sum / frames);
    }
    return true;
}

bool LMP3Source::FindFrameStart() {
    constexpr int kAttempts = 256;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        MP3Header header;
        if (!header.ReadHeader(file_)) return false;
        const std::int64_t at = file_.Tell() - (header.protectionAbsent ? 4 : 6);
        // A header is taken when the next frame's header follows it, or when its frame ends
        // exactly where the audio does.
        const std::int64_t end = at + header.GetFrameLength();
        file_.SeekTo(end);
        std::uint8_t bytes[4];
        MP3Header next;
        if (end == file_.GetAudioEnd() ||
            (file_.Read(bytes, 4) == 4 && next.Parse(bytes) && next.version == header.version &&
             next.sampleRateIndex == header.sampleRateIndex)) {
            file_.SeekTo(at);
            return true;
        }
        file_.SeekTo(at + 1);
    }
    return false;
}

bool LMP3Source::DecodeFrame(int* out) {
    // Frames of another version or sample rate are passed over, ten at most; frames that
    // only switch between one and two channels belong to the stream and are passed over
    // without limit.
    constexpr int kMaxSkipped = 10;
    for (int skipped = 0;;) {
        if (!header_.ReadHeader(file_)) return false;
        const int length = header_.GetFrameLength() - (header_.protectionAbsent ? 4 : 6);
        if (length > MP3FrameDecoder::kMaxFrameBody || file_.Read(body_, length) != length)
            return false;
        if (header_.Matches(reference_)) {
            decoder_.DecodeFrame(header_, body_, length, out);
            break;
        }
        decoder_.SkipFrame(header_, body_, length);
        if (header_.version != reference_.version ||
            header_.sampleRateIndex != reference_.sampleRateIndex) {
            if (++skipped > kMaxSkipped) return false;
        }
    }
    decodedEnd_ += samplesPerFrame_;
    if (frameCount_ == 0) EstimateEnd();
    return true;
}

void LMP3Source::EstimateEnd() {
    const double frames = static_cast<double>(file_.GetBytesRemaining()) / bytesPerFrame_ + 0.9;
    const std::int64_t end =
        decodedEnd_ + std::int64_t{samplesPerFrame_} * static_cast<std::int64_t>(frames);
    end_ = static_cast<int>(std::min<std::int64_t>(end, INT_MAX));
}

void LMP3Source::Read(int* buffer, int frames) {
    const int channels = channels_;
    const int start = position_;
    position_ += frames;
    if (error_ != sndErrNone || start >= end_) {
        ClearAudioBuffer(buffer, frames, channels_);
        return;
    }
    int* out = buffer;
    int remaining = frames;
    if (start < skip_) {
        const int lead = std::min(skip_ - start, frames);
        ClearAudioBuffer(out, lead, channels_);
        out += lead * channels;
        remaining -= lead;
    }
    // With an exact length nothing is played past the end.
    const int tail = frameCount_ > 0 ? std::clamp(position_ - end_, 0, remaining) : 0;
    remaining -= tail;
    while (remaining > 0) {
        if (delivered_ < samplesPerFrame_) {
            const int take = std::min(samplesPerFrame_ - delivered_, remaining);
            std::memcpy(out, decodeBuffer_ + delivered_ * channels, take * channels * sizeof *out);
            delivered_ += take;
            out += take * channels;
            remaining -= take;
        } else if (remaining >= samplesPerFrame_) {
            if (!DecodeFrame(out)) break;
            out += samplesPerFrame_ * channels;
            remaining -= samplesPerFrame_;
        } else {
            if (!DecodeFrame(decodeBuffer_)) break;
            delivered_ = 0;
        }
    }
    if (file_.Failed()) error_ = sndErrRead;
    if (remaining > 0) {
        // The stream ended (or broke off) before its estimated end.
        end_ = std::min(end_, position_ - tail - remaining);
    }
    ClearAudioBuffer(out, remaining + tail, channels_);
}

void LMP3Source::Seek(int frame) {
    position_ = frame + skip_;
    if (error_ != sndErrNone) return;
    constexpr int kPrimingFrames = 4;
    const int target = std::clamp(position_, skip_, end_);
    const int index = target / samplesPerFrame_;
    const int first = std::max(index - kPrimingFrames, 0);
    decoder_.Reset();
    MoveToFrame(first);
    decodedEnd_ = first * samplesPerFrame_;
    for (int i = first; i < index; ++i)
        if (!DecodeFrame(decodeBuffer_)) break;
    delivered_ = DecodeFrame(decodeBuffer_) ? target % samplesPerFrame_ : samplesPerFrame_;
}

void LMP3Source::MoveToFrame(int frame) {
    if (frame == 0 || !variableBitRate_) {
        // Frames of a constant bit rate follow the average length; a few bytes early is safe
        // whatever the encoder's padding pattern.
        constexpr int kMargin = 4;
        file_.SeekTo(firstFrameOffset_);
        if (frame > 0) {
            file_.Skip(static_cast<std::int64_t>(frame * bytesPerFrame_) - kMargin);
            FindFrameStart();
        }
        return;
    }
    // Variable bit rate: walk the headers from the nearest indexed frame.
    const int known = std::min(frame / kIndexStep, static_cast<int>(seekIndex_.size()) - 1);
    file_.SeekTo(seekIndex_[known]);
    for (int counted = known * kIndexStep;;) {
        MP3Header header;
        if (!header.ReadHeader(file_)) return;
        const std::int64_t start = file_.Tell() - (header.protectionAbsent ? 4 : 6);
        if (header.Matches(reference_)) {
            if (counted % kIndexStep == 0 && counted / kIndexStep == int(seekIndex_.size()) &&
                seekIndex_.size() < seekIndex_.capacity())
                seekIndex_.push_back(start);
            if (counted == frame) {
                file_.SeekTo(start);
                return;
            }
            ++counted;
        }
        file_.SeekTo(start + header.GetFrameLength());
    }
}
