#pragma once

#include "play/WaveControl.h"

#include <QLine>
#include <QWidget>

#include <functional>
#include <vector>

// Paints a waveform control's columns as bars about the centre line, with the wave cursor and
// the split points as vertical lines; repaints only the columns the scan thread reports.
// A click hands the pixel column to the owner.
class LWaveWidget : public QWidget {
public:
    LWaveWidget(LWaveControl& wave, QWidget* parent);
    ~LWaveWidget() override;

    void SetMarks(std::vector<int> frames);
    void SetClickHandler(std::function<void(int x)> clicked) { clicked_ = std::move(clicked); }

    QSize sizeHint() const override { return {640, 120}; }
    QSize minimumSizeHint() const override { return {200, 60}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    LWaveControl& wave_;
    std::vector<int> marks_;
    std::vector<uint8_t> columns_;
    std::vector<QLine> lines_;
    std::function<void(int x)> clicked_;
};
