#pragma once

#include "record/LevelMeterScale.h"
#include "sound/DB.h"

#include <QElapsedTimer>
#include <QWidget>

#include <array>

// A stereo level meter: one horizontal bar per channel from -48 to 0 dB, green to yellow to
// orange and red above 0 dB, with a peak mark that holds for a moment, and a dB scale below.
class LDBDisplay2 : public QWidget {
public:
    explicit LDBDisplay2(QWidget* parent = nullptr);

    void SetLevel(const LDBMC& levels);
    void Clear();
    // The colour the bar has at a level, for tests and for the scale.
    QColor ColourAt(LDB db) const;

    QSize sizeHint() const override { return {360, 54}; }
    QSize minimumSizeHint() const override { return {160, 40}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    static constexpr int kChannels = 2;
    static constexpr int kPeakHoldMs = 1500;

    int BarLength() const;

    LDBMeterScale scale_;
    std::array<int, kChannels> levels_{};
    std::array<int, kChannels> peaks_{};
    std::array<QElapsedTimer, kChannels> peakAge_;
};
