#include "restore/CueSpeed.h"

#include "sound/FixedQ24.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

namespace {

constexpr int kMaxReadFrames = 8192;

} // namespace

LSRCSpeed::LSRCSpeed(LSoundSource& source, double startSpeed, double endSpeed, LSoundTime rampTime)
    : LSoundProcessBase(source), segLen_(std::clamp(sampleRate_ / 90, 20, 2730) * channels_),
      jump_(static_cast<int>(startSpeed * segLen_)), endJump_(static_cast<int>(endSpeed * segLen_)),
      rampLeft_(rampTime.GetSamples(sampleRate_) * channels_),
      sourcePos_(inner_->GetPositionSample()), buffer_(8 * static_cast<size_t>(segLen_)),
      window_(segLen_) {
    // Full weight for the first half, then a raised-cosine fall toward 0.
    const int half = segLen_ >> 1;
    const int h = segLen_ - half;
    std::fill_n(window_.begin(), half, kQ24One);
    for (int k = 0; k < h; ++k)
        window_[half + k] =
            static_cast<int>((std::cos(std::numbers::pi * k / h) * 0.5 + 0.5) * 16777216.0 + 0.5);
    RestartAt(sourcePos_);
}

void LSRCSpeed::ReadSource(int frame, int* out, int count) {
    if (frame != sourcePos_) inner_->Seek(frame);
    int frames = count / channels_;
    sourcePos_ = frame + frames;
    while (frames > 0) {
        const int n = std::min(frames, kMaxReadFrames);
        inner_->Read(out, n);
        out += n * channels_;
        frames -= n;
    }
}

void LSRCSpeed::Restart() {
    RestartAt(GetPositionSample());
}

void LSRCSpeed::Seek(int frame) {
    RestartAt(frame);
}

// Fills the buffer so that the first segment's two streams lie inside it, with the position one
// segment after the buffer's start when playing forward and one segment before its end when
// playing backward. The position is taken as the end of a previous segment's destination
// stream, so the first Read starts a segment there as any other.
void LSRCSpeed::RestartAt(int frame) {
    const int capacity = static_cast<int>(buffer_.size());
    const int start = jump_ >= 0 ? segLen_ : capacity - segLen_;
    bufStart_ = frame - start / channels_;
    ReadSource(bufStart_, buffer_.data(), capacity);
    validBegin_ = 0;
    validEnd_ = capacity;
    fromPos_ = toPos_ = start;
    jumpBase_ = start - segLen_;
    outPos_ = segLen_;
}

void LSRCSpeed::Reposition(int newStart) {
    const int capacity = static_cast<int>(buffer_.size());
    const int keepBegin = std::max(validBegin_, newStart);
    const int keepEnd = std::min(validEnd_, newStart + capacity);
    bufStart_ += newStart / channels_;
    if (keepBegin >= keepEnd) {
        ReadSource(bufStart_, buffer_.data(), capacity);
    } else {
        const int to = keepBegin - newStart;
        std::memmove(buffer_.data() + to, buffer_.data() + keepBegin,
                     sizeof(int) * (keepEnd - keepBegin));
        // The part in front first (moving backward), then the part after (moving forward).
        ReadSource(bufStart_, buffer_.data(), to);
        const int after = to + keepEnd - keepBegin;
        ReadSource(bufStart_ + after / channels_, buffer_.data() + after, capacity - after);
    }
    validBegin_ = 0;
    validEnd_ = capacity;
    fromPos_ -= newStart;
    toPos_ -= newStart;
    jumpBase_ -= newStart;
}

void LSRCSpeed::Realign(int lo, int hi) {
    if (lo >= validBegin_ && hi <= validEnd_) return;
    const int capacity = static_cast<int>(buffer_.size());
    if (hi - lo >= capacity) {
        // The two streams are too far apart to share the buffer: the stream that goes on
        // takes the first segment, the destination and what follows it the rest.
        const int fromFrame = bufStart_ + fromPos_ / channels_;
        const int toFrame = bufStart_ + jumpBase_ / channels_;
        ReadSource(fromFrame, buffer_.data(), segLen_);
        bufStart_ = toFrame - segLen_ / channels_;
        ReadSource(toFrame, buffer_.data() + segLen_, capacity - segLen_);
        validBegin_ = segLen_;
        validEnd_ = capacity;
        fromPos_ = 0;
        toPos_ = jumpBase_ = segLen_;
        return;
    }
    // Moving backward the needed range goes to the buffer's end, leaving room in front of it;
    // moving forward it goes to the start.
    Reposition(lo < validBegin_ ? hi - capacity : lo);
}

void LSRCSpeed::ReBuffer() {
    // The new segment continues the stream the previous one faded into, and crossfades into a
    // stream that starts `jump` samples after the previous destination.
    fromPos_ = toPos_;
    jumpBase_ = (jumpBase_ + jump_) / channels_ * channels_;
    toPos_ = jumpBase_;
    Realign(std::min(fromPos_, jumpBase_), std::max(fromPos_, jumpBase_) + segLen_);

    if (rampLeft_ > 0) {
        jump_ += static_cast<int>(static_cast<int64_t>(endJump_ - jump_) * segLen_ / rampLeft_);
        rampLeft_ -= segLen_;
        if (rampLeft_ < 1) jump_ = endJump_;
    }
    outPos_ = 0;
}

void LSRCSpeed::Read(int* buffer, int frames) {
    int left = frames * channels_;
    while (left > 0) {
        if (outPos_ == segLen_) ReBuffer();
        const int n = std::min(left, segLen_ - outPos_);
        const int* from = buffer_.data() + fromPos_;
        const int* to = buffer_.data() + toPos_;
        const int* w = window_.data() + outPos_;
        int i = 0;
        for (; i + 4 <= n; i += 4) {
            buffer[i] = MulQ24(from[i], w[i]) + MulQ24(to[i], kQ24One - w[i]);
            buffer[i + 1] = MulQ24(from[i + 1], w[i + 1]) + MulQ24(to[i + 1], kQ24One - w[i + 1]);
            buffer[i + 2] = MulQ24(from[i + 2], w[i + 2]) + MulQ24(to[i + 2], kQ24One - w[i + 2]);
            buffer[i + 3] = MulQ24(from[i + 3], w[i + 3]) + MulQ24(to[i + 3], kQ24One - w[i + 3]);
        }
        for (; i < n; ++i)
            buffer[i] = MulQ24(from[i], w[i]) + MulQ24(to[i], kQ24One - w[i]);
        fromPos_ += n;
        toPos_ += n;
        outPos_ += n;
        buffer += n;
        left -= n;
    }
}

int LSRCSpeed::GetPositionSample() const {
    return bufStart_ + toPos_ / channels_;
}

int LSRCSpeed::GetEndSample() const {
    return jump_ >= 0 ? inner_->GetEndSample() : 2 * GetPositionSample();
}

LSoundSource LSPSpeed::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone || (startSpeed == 1.0 && endSpeed == 1.0)) return source;
    return LSoundSource(new LSRCSpeed(source, startSpeed, endSpeed, rampTime));
}
