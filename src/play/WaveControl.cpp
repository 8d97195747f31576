#include "play/WaveControl.h"

#include "play/WaveOrMp3Source.h"
#include "sound/AudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int kBlockFrames = 8192;
constexpr int kPeakPerStep = 1024;
constexpr int kPeakFullColumn = 261121;
constexpr unsigned int kIdleWaitMs = 200;

} // namespace

LWaveControl::LWaveControl() = default;

LWaveControl::~LWaveControl() {
    StopThreadNow();
}

uint8_t LWaveControl::ColumnValue(int peak) {
    if (peak >= kPeakFullColumn) return 255;
    return static_cast<uint8_t>(peak / kPeakPerStep);
}

void LWaveControl::SetInvalidate(Invalidate invalidate) {
    std::lock_guard hold(lock_);
    invalidate_ = std::move(invalidate);
}

void LWaveControl::SetWidth(int width) {
    {
        std::lock_guard hold(lock_);
        width_ = std::max(width, 1);
        lengthChanged_ = true;
        columns_.assign(static_cast<size_t>(width_), 0);
    }
    wake_.Signal();
}

int LWaveControl::GetWidth() const {
    std::lock_guard hold(lock_);
    return width_;
}

void LWaveControl::SetSource(LSoundSource source) {
    StopScan();
    source_ = std::move(source);
    block_.assign(static_cast<size_t>(kBlockFrames) * source_->GetChannels(), 0);
    {
        std::lock_guard hold(lock_);
        lengthChanged_ = true;
    }
    Start(kScanPriority);
}

void LWaveControl::StopScan() {
    StopThreadNow();
}

void LWaveControl::SetFrame(int first, int length) {
    {
        std::lock_guard hold(lock_);
        if (first != first_) moved_ = true;
        if (length != length_) lengthChanged_ = true;
        first_ = first;
        length_ = length;
    }
    wake_.Signal();
}

void LWaveControl::SetCursor(int frame) {
    std::lock_guard hold(lock_);
    cursor_ = frame;
}

int LWaveControl::GetCursor() const {
    std::lock_guard hold(lock_);
    return cursor_;
}

int LWaveControl::FrameAtX(int x) const {
    std::lock_guard hold(lock_);
    const double framesPerPixel = static_cast<double>(length_) / width_;
    return first_ + static_cast<int>(std::ceil(x * framesPerPixel));
}

int LWaveControl::XOfFrame(int frame) const {
    std::lock_guard hold(lock_);
    if (length_ <= 0 || frame < first_ || frame >= first_ + length_) return -1;
    return static_cast<int>(static_cast<int64_t>(frame - first_) * width_ / length_);
}

void LWaveControl::CopyColumns(std::vector<uint8_t>& out) const {
    std::lock_guard hold(lock_);
    out.assign(columns_.begin(), columns_.end());
}

uint8_t LWaveControl::MeasureColumn(const View& view, int column) {
    const int start = view.first + static_cast<int>(std::ceil(column * view.framesPerPixel));
    const int end = view.first + static_cast<int>(std::ceil((column + 1) * view.framesPerPixel));
    const int stop = std::min(end, source_->GetEndSample());
    if (start < 0 || start >= stop) return 0;
    source_->Seek(start);
    int peak = 0;
    for (int at = start; at < stop;) {
        const int frames = std::min(stop - at, kBlockFrames);
        const int got = ReadFileFrames(*source_, block_.data(), frames);
        peak = std::max(peak, GetBufferPeak(block_.data(), got, source_->GetChannels()));
        if (got < frames) break; // the file ended before its header said
        at += frames;
    }
    return ColumnValue(peak);
}

bool LWaveControl::Measure(const View& view, const View& previous, bool shift) {
    const int width = view.width;
    int begin = 0;
    int end = width;
    if (shift) {
        const int moved = static_cast<int>((view.first - previous.first) / view.framesPerPixel);
        if (moved > 0 && moved < width) {
            std::copy(scan_.begin() + moved, scan_.end(), scan_.begin());
            begin = width - moved;
        } else if (moved < 0 && -moved < width) {
            std::copy_backward(scan_.begin(), scan_.end() + moved, scan_.end());
            end = -moved;
        } else if (moved == 0) {
            end = 0;
        }
    }
    for (int column = begin; column < end; ++column) {
        if (IsToStop()) return false;
        scan_[column] = MeasureColumn(view, column);
    }
    return true;
}

void LWaveControl::ThreadFunction() {
    View previous;
    bool measured = false;
    while (!IsToStop()) {
        View view;
        bool moved = false;
        bool lengthChanged = false;
        // Cleared before the flags are read, so that a change made in between still wakes us.
        wake_.Reset();
        {
            std::lock_guard hold(lock_);
            moved = std::exchange(moved_, false);
            lengthChanged = std::exchange(lengthChanged_, false);
            view.first = first_;
            view.length = length_;
            view.width = width_;
        }
        if (!moved && !lengthChanged) {
            if (ProcessWaitSignal(wake_, kIdleWaitMs) == WAIT_STOPPED) break;
            continue;
        }
        view.framesPerPixel = static_cast<double>(view.length) / view.width;
        const bool shift = measured && !lengthChanged && view.width == previous.width;
        if (static_cast<int>(scan_.size()) != view.width) scan_.assign(view.width, 0);
        if (!Measure(view, previous, shift)) break;

        Invalidate invalidate;
        int low = view.width;
        int high = 0;
        {
            std::lock_guard hold(lock_);
            if (!shift || columns_.size() != scan_.size()) {
                low = 0;
                high = view.width;
            } else {
                for (int column = 0; column < view.width; ++column) {
                    if (columns_[column] == scan_[column]) continue;
                    low = std::min(low, column);
                    high = column + 1;
                }
            }
            const auto cursorColumn = [this](const View& shown) {
                if (shown.length <= 0 || cursor_ < shown.first || cursor_ >= shown.first + shown.length)
                    return -1;
                return static_cast<int>(static_cast<int64_t>(cursor_ - shown.first) * shown.width /
                                        shown.length);
            };
            for (const int column : {cursorColumn(shown_), cursorColumn(view)}) {
                if (column < 0) continue;
                low = std::min(low, column);
                high = std::max(high, column + 1);
            }
            columns_ = scan_;
            shown_ = view;
            invalidate = invalidate_;
        }
        previous = view;
        measured = true;
        if (invalidate && low < high) invalidate(low, high);
    }
    Invalidate invalidate;
    {
        std::lock_guard hold(lock_);
        std::fill(columns_.begin(), columns_.end(), 0);
        shown_ = View{};
        invalidate = invalidate_;
        // The next scan measures its first view whole.
        lengthChanged_ = true;
    }
    if (invalidate) invalidate(0, GetWidth());
}
