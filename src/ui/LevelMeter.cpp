#include "ui/LevelMeter.h"

#include <QPainter>
#include <QResizeEvent>

#include <algorithm>

namespace {

constexpr int kMargin = 4;
constexpr int kScaleHeight = 14;

// The scale's 16-bit components hold 8-bit values shifted left by 8.
QColor ToQColor(const LDBMeterScale::Colour& colour) {
    return QColor(colour[0] >> 8, colour[1] >> 8, colour[2] >> 8);
}

} // namespace

LDBDisplay2::LDBDisplay2(QWidget* parent) : QWidget(parent) {
    setAccessibleName("Input level");
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    Clear();
}

int LDBDisplay2::BarLength() const {
    return std::max(width() - 2 * kMargin - 24, 10);
}

void LDBDisplay2::resizeEvent(QResizeEvent* event) {
    scale_.CalculateColours(BarLength());
    QWidget::resizeEvent(event);
}

void LDBDisplay2::Clear() {
    levels_.fill(LDB::kSilence);
    peaks_.fill(LDB::kSilence);
    update();
}

void LDBDisplay2::SetLevel(const LDBMC& levels) {
    for (int c = 0; c < kChannels; ++c) {
        const int db = levels.count > 0 ? int{levels.values[std::min(c, levels.count - 1)]} : int{LDB::kSilence};
        levels_[c] = db;
        if (db >= peaks_[c] || !peakAge_[c].isValid() || peakAge_[c].elapsed() > kPeakHoldMs) {
            peaks_[c] = db;
            peakAge_[c].start();
        }
    }
    update();
}

QColor LDBDisplay2::ColourAt(LDB db) const {
    const int pixel = std::clamp(scale_.MapDBToPixel(db), 0, std::max(scale_.Length() - 1, 0));
    return scale_.Length() > 0 ? ToQColor(scale_.ColourAt(pixel)) : QColor();
}

void LDBDisplay2::paintEvent(QPaintEvent*) {
    if (scale_.Length() != BarLength()) scale_.CalculateColours(BarLength());
    QPainter painter(this);
    const QPalette& colours = palette();
    const int length = scale_.Length();
    const int barHeight = (height() - kScaleHeight - 2 * kMargin - 2) / kChannels;
    // Red beyond 0 dB takes what is right of the bar's end.
    const int overload = 24;
    for (int c = 0; c < kChannels; ++c) {
        const QRect bar(kMargin, kMargin + c * (barHeight + 2), length + overload, barHeight);
        painter.fillRect(bar, colours.color(QPalette::Base).darker(120));
        const int lit = levels_[c] > 0 ? length + overload
                                       : std::clamp(scale_.MapDBToPixel(static_cast<int8_t>(levels_[c])), 0, length);
        for (int x = 0; x < lit; ++x)
            painter.fillRect(bar.left() + x, bar.top(), 1, bar.height(),
                             x < length ? ToQColor(scale_.ColourAt(x)) : QColor(255, 0, 0));
        if (peaks_[c] > scale_.MinDB()) {
            const int peak = std::clamp(scale_.MapDBToPixel(static_cast<int8_t>(std::min(peaks_[c], 1))),
                                        0, length + overload - 2);
            painter.fillRect(bar.left() + peak, bar.top(), 2, bar.height(),
                             colours.color(QPalette::Text));
        }
    }
    painter.setPen(colours.color(QPalette::WindowText));
    QFont font = painter.font();
    font.setPointSizeF(font.pointSizeF() * 0.8);
    painter.setFont(font);
    const int top = height() - kScaleHeight - kMargin;
    for (int db = scale_.MinDB(); db <= scale_.MaxDB(); db += scale_.LabelStep()) {
        const int x = kMargin + scale_.MapDBToPixel(static_cast<int8_t>(db));
        painter.drawLine(x, top, x, top + 3);
        // Labels at the ends stay inside the widget.
        const int left = std::clamp(x - 20, 0, width() - 40);
        const Qt::Alignment align = left == x - 20 ? Qt::AlignHCenter
                                    : left == 0    ? Qt::AlignLeft
                                                   : Qt::AlignRight;
        painter.drawText(QRect(left, top + 2, 40, kScaleHeight), align | Qt::AlignTop,
                         QString::number(db));
    }
}
