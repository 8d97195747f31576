#include "restore/ClickPop.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

// Detection runs above this frequency, where clicks stand out from the music.
constexpr int kDetectionCutoffHz = 1500;
// The source is read in pieces of at most this many frames.
constexpr int kMaxReadFrames = 8192;

int BlockLenFor(int rate, int maxWidth) {
    return std::max(rate / 100, 2 * maxWidth);
}

int MaxWidthFor(int rate, int maxClickWidthMicroseconds) {
    const double frames = static_cast<double>(maxClickWidthMicroseconds) * rate * 0.000001;
    return std::max(4, static_cast<int>(frames));
}

struct SquareSum {
    uint64_t sum;     // wraps for deviations of 2^22 and more
    uint32_t largest; // the largest deviation
};

// Sum of (|x[i] - x[i - lag]| - meanDiff)^2 for i = lag..n-1 in 64-bit integers.
__attribute__((target_clones("avx2", "default"))) SquareSum
SquaredDeviationsExact(const int* x, int lag, int n, int meanDiff) {
    SquareSum result{0, 0};
    for (int i = lag; i < n; ++i) {
        const auto deviation =
            static_cast<uint32_t>(std::abs(std::abs(x[i] - x[i - lag]) - meanDiff));
        result.largest = std::max(result.largest, deviation);
        result.sum += static_cast<uint64_t>(deviation) * deviation;
    }
    return result;
}

// The first i in [from, to) where a click may start: |x[i]| >= levelThreshold and it rose by
// at least jumpThreshold over `lag` values; `to` if there is none. Runs of 32 values are tested
// at once (in vector code) and skipped while none qualifies.
int FirstClickStart(const int* x, int lag, int from, int to, int levelThreshold,
                    int jumpThreshold) {
    const auto starts = [=](int i) {
        const int level = std::abs(x[i]);
        return static_cast<int>(level >= levelThreshold) &
               static_cast<int>(level - std::abs(x[i - lag]) >= jumpThreshold);
    };
    constexpr int kRun = 32;
    int i = from;
    for (; i + kRun <= to; i += kRun) {
        int any = 0;
        for (int k = 0; k < kRun; ++k)
            any |= starts(i + k);
        if (any) break;
    }
    while (i < to && !starts(i))
        ++i;
    return i;
}

} // namespace

LSRCClickPop::LSRCClickPop(LSoundSource& source, signed char sensitivity,
                           int maxClickWidthMicroseconds)
    : LSoundProcessBase(source), highPass_(kDetectionCutoffHz, sampleRate_, channels_),
      sensitivity_(sensitivity), lag_(sampleRate_ / 22050 + 1),
      maxWidth_(MaxWidthFor(sampleRate_, maxClickWidthMicroseconds)) {
    blockLen_ = BlockLenFor(sampleRate_, maxWidth_);
    step_ = blockLen_ - (maxWidth_ + 2 * lag_);
    // One second of audio; at very low rates or with very wide clicks, at least one block.
    bufferLen_ = std::max(sampleRate_, blockLen_);
    raw_.resize(static_cast<size_t>(bufferLen_) * channels_);
    filtered_.resize(raw_.size());
    channel_.resize(blockLen_);
}

void LSRCClickPop::Read(int* buffer, int frames) {
    const int channels = channels_;
    while (frames > 0) {
        if (processed_ > readPos_) {
            const int count = std::min(frames, processed_ - readPos_);
            std::copy_n(raw_.data() + static_cast<size_t>(readPos_) * channels, count * channels,
                        buffer);
            buffer += count * channels;
            frames -= count;
            readPos_ += count;
            continue;
        }
        FillBlock();
        AnalyseBlock();
        processed_ += step_;
    }
}

int LSRCClickPop::GetPositionSample() const {
    return inner_->GetPositionSample() - (filled_ - readPos_);
}

void LSRCClickPop::Seek(int frame) {
    inner_->Seek(frame);
    filled_ = 0;
    processed_ = 0;
    readPos_ = 0;
    highPass_.Clear();
}

void LSRCClickPop::FillBlock() {
    const int channels = channels_;
    while (filled_ - processed_ < blockLen_) {
        if (filled_ >= bufferLen_) {
            // Full: keep the frames not yet analysed, moved to the start of both buffers.
            const size_t from = static_cast<size_t>(processed_) * channels;
            const size_t to = static_cast<size_t>(filled_) * channels;
            std::copy(raw_.begin() + from, raw_.begin() + to, raw_.begin());
            std::copy(filtered_.begin() + from, filtered_.begin() + to, filtered_.begin());
            filled_ -= processed_;
            readPos_ -= processed_;
            processed_ = 0;
        }
        const int count = std::min(bufferLen_ - filled_, kMaxReadFrames);
        int* rawAt = raw_.data() + static_cast<size_t>(filled_) * channels;
        int* filteredAt = filtered_.data() + static_cast<size_t>(filled_) * channels;
        inner_->Read(rawAt, count);
        std::copy_n(rawAt, count * channels, filteredAt);
        highPass_.ApplyFilter(filteredAt, count);
        filled_ += count;
    }
}

void LSRCClickPop::AnalyseBlock() {
    const size_t start = static_cast<size_t>(processed_) * channels_;
    for (int c = 0; c < channels_; ++c)
        AnalyseChannel(filtered_.data() + start + c, raw_.data() + start + c);
}

// f and r point at one channel of the block's filtered and raw frames (stride = channels).
void LSRCClickPop::AnalyseChannel(const int* f, int* r) {
    const int stride = channels_;
    const int n = blockLen_;
    const int lag = lag_;
    // The channel's filtered block, gathered so that the sums below run in vector code.
    int* x = channel_.data();
    for (int i = 0; i < n; ++i)
        x[i] = f[i * stride];
    const auto level = [x](int i) { return std::abs(x[i]); };
    const auto jump = [x, lag](int i) { return std::abs(x[i] - x[i - lag]); };

    // Typical level and typical change over `lag` frames of this block, and how much the
    // change varies.
    uint32_t levelSum = 0;
    for (int i = 0; i < n; ++i)
        levelSum += static_cast<uint32_t>(level(i));
    const int meanAbs = static_cast<int>(levelSum / static_cast<uint32_t>(n));
    uint32_t jumpSum = 0;
    for (int i = lag; i < n; ++i)
        jumpSum += static_cast<uint32_t>(jump(i));
    const int meanDiff = static_cast<int>(jumpSum / static_cast<uint32_t>(n - lag));
    const int sd = static_cast<int>(std::sqrt(SquaredDeviations(meanDiff) / (n - lag)));

    const int sensitivity = sensitivity_;
    int levelThreshold = (meanAbs * sensitivity) / 50 + meanDiff;
    int jumpThreshold = (sensitivity / 10) * (meanDiff + (sensitivity * sd) / 50 + 100);

    // A click starts where the level is high and has risen steeply over `lag` frames, and ends
    // where the level falls below a third of its start. Every frame of the block's first
    // `step_` (past the lag) is tested once; the rest of the block is look-ahead.
    const int end = lag + step_;
    for (int i = FirstClickStart(x, lag, lag, end, levelThreshold, jumpThreshold); i < end;
         i = FirstClickStart(x, lag, i + 1, end, levelThreshold, jumpThreshold)) {
        const int peak = level(i);
        const int before = i - lag;
        const int limit = peak / 3;
        ++i;
        // Frames crossed here are not tested as click starts again. A click still running
        // at the end of the look-ahead is left alone.
        for (int k = 1; i < n - lag; ++i, ++k) {
            if (level(i) < limit) {
                ClickPopFix(r, before, i + lag, static_cast<unsigned long>(stride));
                break;
            }
            if (k >= maxWidth_) {
                // Too long for a click: music or a loud passage, so judge the rest of this
                // block more strictly.
                levelThreshold += levelThreshold >> 1;
                jumpThreshold += jumpThreshold >> 1;
                break;
            }
        }
    }
}

LSoundSource LSPClickPop::OpenSource(LSoundSource& source) const {
    return LSoundSource(new LSRCClickPop(source, sensitivity, maxClickWidth));
}

// The sum over the block of (jump - meanDiff)^2 in double precision, added in order. Squares of
// deviations below 2^22 are exact, and while their total stays below 2^53 so is every partial
// sum: the sum is then taken in 64-bit integers (in vector code, without overflow for any block
// length) and converted once. Otherwise it is added in order in double precision.
double LSRCClickPop::SquaredDeviations(int meanDiff) const {
    const int n = blockLen_;
    const int lag = lag_;
    const int* x = channel_.data();
    const SquareSum exact = SquaredDeviationsExact(x, lag, n, meanDiff);
    if (exact.largest < (1u << 22) && exact.sum < (uint64_t{1} << 53))
        return static_cast<double>(exact.sum);
    double squares = 0;
    for (int i = lag; i < n; ++i) {
        const double deviation = std::abs(x[i] - x[i - lag]) - meanDiff;
        squares += deviation * deviation;
    }
    return squares;
}

void ClickPopFix(int* buffer, int a, int b, unsigned long stride) {
    const int64_t first = buffer[a * stride];
    const int64_t last = buffer[b * stride];
    const int64_t n = b - a;
    for (int64_t k = 1; k < n; ++k)
        buffer[(a + k) * stride] = static_cast<int>((n - k) * first / n + k * last / n);
}

LProcessResult ProcessClickPop(LProcessInterface& progress, LSoundSource& source) {
    progress.SetStatus("Click Pop Remover", 0);
    const LSPClickPop clickPop(35, 450);
    source = clickPop.OpenSource(source);
    return PROCESS_DONE;
}
