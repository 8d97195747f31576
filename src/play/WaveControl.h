#pragma once

#include "jobs/SignalObject.h"
#include "jobs/Thread.h"
#include "sound/SoundSource.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

// The scrolling waveform's model: one byte per pixel column holding the column's peak, measured
// on a thread of its own from a source opened for it alone. The owner moves the view with
// SetFrame; the thread measures the view's columns (only those that came into view when the
// view moved and kept its length) and hands them to the painter under the lock. The painter
// reads only the displayed columns.
class LWaveControl : public LThread {
public:
    // Called on the scan thread when columns [first, last) changed; the painter repaints them.
    using Invalidate = std::function<void(int first, int last)>;

    // The thread's priority: below the player's and the GUI's.
    static constexpr int kScanPriority = 1;

    LWaveControl();
    ~LWaveControl() override;

    void SetInvalidate(Invalidate invalidate);
    // The control's width in pixels (at least 1); every column is measured again.
    void SetWidth(int width);
    int GetWidth() const;
    // Stops any scan and starts scanning this source (for this control alone).
    void SetSource(LSoundSource source);
    // Stops the scan; the displayed columns are cleared.
    void StopScan();

    // Moves the view: its first frame and its length in frames.
    void SetFrame(int first, int length);
    void SetCursor(int frame);
    int GetCursor() const;

    // The frame under pixel column x of the view: first + ceil(x * frames per pixel).
    int FrameAtX(int x) const;
    // The pixel column of a frame in the displayed view; -1 when it is outside.
    int XOfFrame(int frame) const;

    // The displayed columns, copied for painting (the vector keeps its capacity).
    void CopyColumns(std::vector<uint8_t>& out) const;

    // A column's value from its peak (internal samples): peak / 1024, 255 from 261,121 on.
    static uint8_t ColumnValue(int peak);

protected:
    void ThreadFunction() override;

private:
    // A view as the scan thread measured it.
    struct View {
        int first = 0;
        int length = 0;
        int width = 0;
        double framesPerPixel = 0;
    };
    uint8_t MeasureColumn(const View& view, int column);
    // Measures the view into scan_; false when a stop came in between.
    bool Measure(const View& view, const View& previous, bool shift);

    mutable std::mutex lock_;
    // Shared with the owner, under lock_.
    int first_ = 0;
    int length_ = 0;
    int width_ = 1;
    int cursor_ = 0;
    bool moved_ = false;
    bool lengthChanged_ = false;
    View shown_;
    std::vector<uint8_t> columns_;
    Invalidate invalidate_;

    LSignalObject wake_;
    // The scan thread's own.
    LSoundSource source_;
    std::vector<uint8_t> scan_;
    std::vector<int> block_;
};
