#pragma once

#include "sound/SoundSink.h"

#include <vector>

// A sink that keeps everything written to it in a caller's vector and records where it was
// sought.
class CaptureSink : public LSoundSinkBase {
public:
    CaptureSink(int rate, unsigned char channels, std::vector<int>& samples,
                std::vector<int>* seeks = nullptr)
        : LSoundSinkBase(rate, channels), samples_(samples), seeks_(seeks) {}

    void Write(const int* buffer, int frames) override {
        samples_.insert(samples_.end(), buffer, buffer + frames * channels_);
        position_ += frames;
    }
    void Seek(int frame) override {
        if (seeks_) seeks_->push_back(frame);
        position_ = frame;
    }

private:
    std::vector<int>& samples_;
    std::vector<int>* seeks_;
};
