#pragma once

#include "sound/SoundSink.h"

#include <vector>

// Base of the sinks that accept one channel count and write another into their target, at the
// target's rate. Seeking seeks the target and takes over its position.
class LSinkConvertChannelsBase : public LSoundSinkBase {
public:
    void Seek(int frame) override;

protected:
    LSinkConvertChannelsBase(LSoundSink& target, unsigned char channels);

    static constexpr int kBlockFrames = 8192;
    LSoundSink target_;
    std::vector<int> buffer_; // kBlockFrames frames of the target
};

// Writes stereo into a mono target: each frame becomes the average of its channels.
class LSinkConvertMonoToStereo final : public LSinkConvertChannelsBase {
public:
    explicit LSinkConvertMonoToStereo(LSoundSink& target) : LSinkConvertChannelsBase(target, 2) {}
    void Write(const int* buffer, int frames) override;
};

// Writes mono into a stereo target: each value goes to both channels.
class LSinkConvertStereoToMono final : public LSinkConvertChannelsBase {
public:
    explicit LSinkConvertStereoToMono(LSoundSink& target) : LSinkConvertChannelsBase(target, 1) {}
    void Write(const int* buffer, int frames) override;
};

struct LSinkConvertChannels {
    // A sink that accepts the given channel count and writes into the given sink: the sink
    // itself when it has that count, a converter between mono and stereo, else an error sink.
    static LSoundSink OpenSink(LSoundSink& sink, unsigned char channels);
};
