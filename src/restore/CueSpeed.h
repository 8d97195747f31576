#pragma once

#include "sound/SoundSource.h"
#include "sound/SoundTime.h"

#include <vector>

// Plays a source at a varying speed, forward or backward, with its pitch unchanged: the output
// is made of short segments of normal-direction audio, each crossfading into a stream that
// starts `jump` samples after the one before. The speed (jump per segment) ramps linearly from
// the start speed to the end speed over the ramp time. Used for audible cueing.
class LSRCSpeed : public LSoundProcessBase {
public:
    // Speeds are source frames per output frame; negative speeds play backward.
    LSRCSpeed(LSoundSource& source, double startSpeed, double endSpeed, LSoundTime rampTime);

    void Read(int* buffer, int frames) override;
    // The source frame the next output segment's destination stream has reached.
    int GetPositionSample() const override;
    // The source's end while playing forward; while playing backward twice the position, so
    // that a consumer reading up to the end reads as much as lies before the position.
    int GetEndSample() const override;
    void Seek(int frame) override;

    // Refills the buffer around the current position and starts a new segment there.
    void Restart();
    // Starts the next segment.
    void ReBuffer();

    // Segment length in samples (frames times channels).
    int GetSegmentLength() const { return segLen_; }

private:
    void RestartAt(int frame);
    // Makes buffer indices [lo, hi) hold source data.
    void Realign(int lo, int hi);
    // Moves the buffer so that old index newStart becomes index 0, keeping what is buffered
    // there and reading the rest.
    void Reposition(int newStart);
    // Reads `count` samples of the source from `frame` on into `out`.
    void ReadSource(int frame, int* out, int count);

    int segLen_;       // S: samples per segment
    int outPos_ = 0;   // sample position within the current segment
    int fromPos_ = 0;  // buffer index of the stream fading out
    int toPos_ = 0;    // buffer index of the stream fading in
    int jumpBase_ = 0; // buffer index where the current destination stream started
    int jump_;         // source samples advanced per segment
    int endJump_;
    int rampLeft_;       // samples of ramp still to go
    int bufStart_ = 0;   // source frame at buffer index 0
    int validBegin_ = 0; // buffer indices holding source data mapped from bufStart_
    int validEnd_ = 0;
    int sourcePos_;           // frame the source will deliver next
    std::vector<int> buffer_; // 8 S samples
    std::vector<int> window_; // S Q24 weights of the fading-out stream
};

class LSPSpeed : public LSoundProcess {
public:
    LSPSpeed(double startSpeed, double endSpeed, LSoundTime rampTime)
        : startSpeed(startSpeed), endSpeed(endSpeed), rampTime(rampTime) {}

    // The source itself when it has an error or both speeds are 1.
    LSoundSource OpenSource(LSoundSource& source) override;

    double startSpeed;
    double endSpeed;
    LSoundTime rampTime;
};
