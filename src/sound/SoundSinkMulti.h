#pragma once

#include "sound/SoundSink.h"

#include <vector>

// Writes one stream into several sinks at once, each through the rate and channel converters
// it needs.
class LSoundSinkMultiBase : public LSoundSinkBase {
public:
    // The sinks must already accept this rate and channel count.
    LSoundSinkMultiBase(std::vector<LSoundSink> sinks, int rate, unsigned char channels);

    // Writes the same frames to every sink in turn, whatever their error state.
    void Write(const int* buffer, int frames) override;
    // Moves every sink to the same moment (a sink that cannot seek keeps its place).
    void Seek(int frame) override;

private:
    std::vector<LSoundSink> sinks_;
};

struct LSoundSinkMulti {
    // A sink at the largest rate and channel count of the given sinks that writes into all of
    // them; an error sink when there are none.
    static LSoundSink OpenSink(LSoundSink* sinks, unsigned long count);
};

struct LSoundSinkDuplicate {
    static LSoundSink OpenSink(LSoundSink& first, LSoundSink& second);
};
