#pragma once

#include "sound/SoundSink.h"

#include <vector>

// Everything written to a RecordingSink, kept after the sink itself is gone.
struct RecordedWrites {
    std::vector<int> samples;
    std::vector<int> blockFrames; // frame count of each Write
    bool finished = false;        // the last handle let the sink go
};

// A sink that keeps what it is given in a RecordedWrites owned by the test.
class RecordingSink : public LSoundSinkBase {
public:
    RecordingSink(RecordedWrites& writes, int rate, unsigned char channels)
        : LSoundSinkBase(rate, channels), writes_(writes)
    {
    }
    ~RecordingSink() override { writes_.finished = true; }

    void Write(const int* buffer, int frames) override
    {
        writes_.samples.insert(writes_.samples.end(), buffer, buffer + frames * channels_);
        writes_.blockFrames.push_back(frames);
        position_ += frames;
    }

private:
    RecordedWrites& writes_;
};

inline LSoundSink MakeRecordingSink(RecordedWrites& writes, int rate, unsigned char channels)
{
    return LSoundSink(new RecordingSink(writes, rate, channels));
}
