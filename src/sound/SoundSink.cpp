#include "sound/SoundSink.h"

LSoundSinkBase::LSoundSinkBase(int sampleRate, unsigned char channels)
    : sampleRate_(sampleRate), channels_(channels)
{
    if (channels_ == 0) {
        channels_ = 1;
        error_ = 1;
    }
}

LSoundSinkError::LSoundSinkError() : LSoundSinkBase(44100, 1)
{
    error_ = 1;
}

LSoundSink::LSoundSink() : LSoundSink(new LSoundSinkError()) {}

LSoundSink::LSoundSink(LSoundSinkBase* sink) : sink_(sink)
{
    ++sink_->refCount_;
}

LSoundSink::LSoundSink(const LSoundSink& other) : sink_(other.sink_)
{
    ++sink_->refCount_;
}

LSoundSink& LSoundSink::operator=(const LSoundSink& other)
{
    ++other.sink_->refCount_;
    Drop();
    sink_ = other.sink_;
    return *this;
}

LSoundSink::~LSoundSink()
{
    Drop();
}

void LSoundSink::Drop()
{
    if (--sink_->refCount_ == 0)
        delete sink_;
}

void LSoundSink::Close()
{
    Drop();
    sink_ = new LSoundSinkError();
    ++sink_->refCount_;
}
