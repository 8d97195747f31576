#pragma once

#include "jobs/ProcessInterface.h"
#include "restore/HighPassIIR2.h"
#include "sound/SoundSource.h"

#include <vector>

// Replaces short impulsive disturbances (dust clicks, scratches) by a straight line between the
// clean samples on either side. Clicks are found on a copy of the audio high-passed at 1500 Hz,
// where the music hides them least; the repair is made to the audio as read, which is what the
// stage hands out. It analyses blocks of about 10 ms, overlapping so that every frame is tested
// once as the start of a click, and keeps up to one second of audio in two rolling buffers.
class LSRCClickPop : public LSoundProcessBase {
public:
    // Larger sensitivities raise both detection thresholds; the longest click is given in
    // microseconds.
    LSRCClickPop(LSoundSource& source, signed char sensitivity, int maxClickWidthMicroseconds);

    void Read(int* buffer, int frames) override;
    // The next frame this stage hands out; it has read further ahead than that.
    int GetPositionSample() const override;
    // Seeks the source and forgets everything held and the filter's history.
    void Seek(int frame) override;

    int GetBlockLen() const { return blockLen_; }
    int GetLag() const { return lag_; }
    int GetMaxWidth() const { return maxWidth_; }
    int GetStep() const { return step_; }

private:
    // Reads from the source until a whole block lies beyond the processed frames.
    void FillBlock();
    // Finds and repairs the clicks of the block at `processed_`, channel by channel.
    void AnalyseBlock();
    void AnalyseChannel(const int* f, int* r);
    // Sum of the squared deviations of the block's jumps from their mean.
    double SquaredDeviations(int meanDiff) const;

    LHighPassIIR2 highPass_;
    signed char sensitivity_;
    int blockLen_;  // N: frames per analysis
    int bufferLen_; // frames each buffer holds
    int lag_;       // L: frames over which a jump is measured
    int maxWidth_;  // W: frames of the longest click
    int step_;      // frames the analysis advances per block
    std::vector<int> raw_;
    std::vector<int> filtered_;
    std::vector<int> channel_; // one channel of the filtered block being analysed
    int filled_ = 0;
    int processed_ = 0;
    int readPos_ = 0;
};

// Opens the click remover with its settings on a source.
class LSPClickPop {
public:
    LSPClickPop(signed char detectionSensitivity, int maxWidthMicroseconds)
        : sensitivity(detectionSensitivity), maxClickWidth(maxWidthMicroseconds) {}

    LSoundSource OpenSource(LSoundSource& source) const;

    signed char sensitivity;
    int maxClickWidth; // microseconds
};

// Draws a straight line from buffer[a * stride] to buffer[b * stride] over the samples in
// between, one channel of an interleaved buffer; the two ends keep their values.
void ClickPopFix(int* buffer, int a, int b, unsigned long stride);

// Chain step: replaces the source by the click remover on it (sensitivity 35, clicks up to
// 450 microseconds).
LProcessResult ProcessClickPop(LProcessInterface& progress, LSoundSource& source);
