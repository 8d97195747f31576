#include "sound/PeakLimit.h"

#include "sound/AudioBuffer.h"
#include "sound/FixedQ24.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

constexpr int kMaxLimit = 0x3FFFFF;

int BlockLength(const LSoundSourceBase& source)
{
    // Live input keeps a shorter look-ahead so that less of it is held back.
    const int rate = source.GetSampleRate();
    return std::clamp(source.IsStreaming() ? rate / 70 : rate / 35, 16, 8192);
}

} // namespace

LSRCPeakLimit::LSRCPeakLimit(LSoundSource& source, int limit)
    : LSoundProcessBase(source), limit_(std::clamp(limit, 0, kMaxLimit)),
      blockLen_(BlockLength(*source)), aheadLen_(3 * blockLen_), pos_(aheadLen_),
      blockA_(static_cast<size_t>(blockLen_) * channels_), blockB1_(blockA_.size()),
      blockB2_(blockA_.size())
{
    maxAmplitude_ = limit_;
}

int LSRCPeakLimit::ConvMaxtoLev(int peak) const
{
    if (limit_ >= peak)
        return kQ24One;
    const int64_t scale = (static_cast<int64_t>(peak) + 64) >> 6;
    return static_cast<int>((static_cast<int64_t>(limit_) * 512 / scale) * 512);
}

void LSRCPeakLimit::CalcCLev()
{
    const int average = (levPrev_ + levCur_ + levNext_ + levNext2_) >> 2;
    const int target = std::min({average, levCur_, levNext_});
    const int delta = target - gain_;
    // The remainder is taken at once so that the ramp lands on the target after one block.
    gainStep_ = delta / blockLen_;
    gain_ += delta % blockLen_;
}

int LSRCPeakLimit::ReadBlock(std::vector<int>& block)
{
    inner_->Read(block.data(), blockLen_);
    return ConvMaxtoLev(GetBufferPeak(block.data(), blockLen_, channels_));
}

void LSRCPeakLimit::Restart()
{
    levCur_ = ReadBlock(blockA_);
    levPrev_ = levCur_;
    levNext_ = ReadBlock(blockB1_);
    levNext2_ = ReadBlock(blockB2_);
    gain_ = levCur_;
    CalcCLev();
    pos_ = 0;
}

void LSRCPeakLimit::Rotate()
{
    std::swap(blockA_, blockB1_);
    std::swap(blockB1_, blockB2_);
    levPrev_ = levCur_;
    levCur_ = levNext_;
    levNext_ = levNext2_;
    levNext2_ = ReadBlock(blockB2_);
    CalcCLev();
    pos_ = 0;
}

void LSRCPeakLimit::Read(int* buffer, int frames)
{
    while (frames > 0) {
        if (pos_ >= blockLen_) {
            if (pos_ < aheadLen_)
                Rotate();
            else
                Restart();
        }
        const int count = std::min(frames, blockLen_ - pos_);
        const int values = count * channels_;
        const int* from = blockA_.data() + static_cast<size_t>(pos_) * channels_;
        if (gain_ >= kQ24One && gainStep_ == 0) {
            std::memcpy(buffer, from, sizeof(int) * static_cast<size_t>(values));
        } else if (channels_ == 1) {
            for (int i = 0; i < count; ++i, gain_ += gainStep_)
                buffer[i] = MulQ24(from[i], gain_);
        } else if (channels_ == 2) {
            for (int i = 0; i < values; i += 2, gain_ += gainStep_) {
                buffer[i] = MulQ24(from[i], gain_);
                buffer[i + 1] = MulQ24(from[i + 1], gain_);
            }
        } else {
            for (int i = 0; i < values; i += channels_, gain_ += gainStep_)
                for (int c = 0; c < channels_; ++c)
                    buffer[i + c] = MulQ24(from[i + c], gain_);
        }
        pos_ += count;
        buffer += values;
        frames -= count;
    }
}

int LSRCPeakLimit::GetPositionSample() const
{
    return inner_->GetPositionSample() - (aheadLen_ - pos_);
}

int LSRCPeakLimit::GetEndSample() const
{
    const int end = inner_->GetEndSample();
    return inner_->IsStreaming() ? end - aheadLen_ : end;
}

void LSRCPeakLimit::Seek(int frame)
{
    inner_->Seek(frame);
    Restart();
}

LSoundSource LSPPeakLimit::OpenSource(LSoundSource& source)
{
    if (source->GetError() != sndErrNone || source->GetMaxAmplitude() <= limit_)
        return source;
    return LSoundSource(new LSRCPeakLimit(source, limit_));
}
