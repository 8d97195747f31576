#pragma once

#include "sound/SoundSource.h"

#include <vector>

// Base of the stages that deliver their inner source with another channel count. They read
// the inner source into their own buffer, at most 8,192 frames at a time.
class LSRCConvChannels : public LSoundProcessBase {
public:
    // A channel count of 0 becomes 1 with error sndErrFormat.
    LSRCConvChannels(LSoundSource& inner, unsigned char channels);

protected:
    static constexpr int kBlockFrames = 8192;
    std::vector<int> buffer_; // kBlockFrames frames of the inner source
};

// Mono to stereo: each value goes to both channels.
class LSRCConvMonoStereo final : public LSRCConvChannels {
public:
    explicit LSRCConvMonoStereo(LSoundSource& inner) : LSRCConvChannels(inner, 2) {}
    void Read(int* buffer, int frames) override;
};

// Stereo to mono: the average of both channels.
class LSRCConvStereoMono final : public LSRCConvChannels {
public:
    explicit LSRCConvStereoMono(LSoundSource& inner) : LSRCConvChannels(inner, 1) {}
    void Read(int* buffer, int frames) override;
};

// Opens a source with another channel count where that is mono to stereo or stereo to mono;
// any other source is handed back as it is.
class LSPConvChannels final : public LSoundProcess {
public:
    explicit LSPConvChannels(unsigned char channels) : channels_(channels) {}
    LSoundSource OpenSource(LSoundSource& source) override;

private:
    unsigned char channels_;
};
