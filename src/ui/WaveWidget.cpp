#include "ui/WaveWidget.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>

LWaveWidget::LWaveWidget(LWaveControl& wave, QWidget* parent) : QWidget(parent), wave_(wave) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName("Waveform");
    setCursor(Qt::IBeamCursor);
    // The scan thread reports; the repaint happens on the GUI thread, and not at all once the
    // widget is gone.
    wave_.SetInvalidate([this](int first, int last) {
        QMetaObject::invokeMethod(
            this, [this, first, last] { update(QRect(first, 0, last - first, height())); },
            Qt::QueuedConnection);
    });
}

LWaveWidget::~LWaveWidget() {
    wave_.StopScan();
    wave_.SetInvalidate({});
}

void LWaveWidget::SetMarks(std::vector<int> frames) {
    marks_ = std::move(frames);
    update();
}

void LWaveWidget::resizeEvent(QResizeEvent*) {
    wave_.SetWidth(width());
}

void LWaveWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    setFocus();
    if (clicked_) clicked_(static_cast<int>(event->position().x()));
    update();
}

void LWaveWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRect area = event->rect();
    const QPalette& colours = palette();
    painter.fillRect(area, colours.color(QPalette::Base));
    const int middle = height() / 2;
    painter.setPen(colours.color(QPalette::Mid));
    painter.drawLine(area.left(), middle, area.right(), middle);

    wave_.CopyColumns(columns_);
    painter.setPen(colours.color(QPalette::Highlight));
    const int last = std::min<int>(area.right(), static_cast<int>(columns_.size()) - 1);
    lines_.clear();
    for (int x = std::max(area.left(), 0); x <= last; ++x) {
        const int half = columns_[x] * (middle - 2) / 255;
        if (half > 0) lines_.emplace_back(x, middle - half, x, middle + half);
    }
    painter.drawLines(lines_.data(), static_cast<int>(lines_.size()));

    painter.setPen(QPen(QColor(0xe5, 0xa5, 0x0a), 2));
    for (int frame : marks_)
        if (const int x = wave_.XOfFrame(frame); x >= 0) painter.drawLine(x, 0, x, height());
    if (const int x = wave_.XOfFrame(wave_.GetCursor()); x >= 0) {
        painter.setPen(QPen(QColor(0xe0, 0x1b, 0x24), 1));
        painter.drawLine(x, 0, x, height());
    }
    if (hasFocus()) {
        painter.setPen(QPen(colours.color(QPalette::Highlight), 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}
