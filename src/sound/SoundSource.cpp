#include "sound/SoundSource.h"

#include "sound/AudioBuffer.h"

#include <chrono>
#include <thread>

LSoundSourceBase::LSoundSourceBase(int sampleRate, unsigned char channels, int maxAmplitude)
    : sampleRate_(sampleRate), maxAmplitude_(maxAmplitude), channels_(channels)
{
    if (sampleRate_ < 1) {
        sampleRate_ = 44100;
        error_ = sndErrFormat;
    }
    if (channels_ == 0) {
        channels_ = 1;
        error_ = sndErrFormat;
    }
}

void LSoundSourceBase::WaitForStreamingData(int ms)
{
    if (ms > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

LSoundSourceError::LSoundSourceError(uint8_t error) : LSoundSourceBase(11025, 1, 2097152)
{
    error_ = error;
}

void LSoundSourceError::Read(int* buffer, int frames)
{
    ClearAudioBuffer(buffer, frames);
}

LSoundSource::LSoundSource() : LSoundSource(new LSoundSourceError(sndErrClosed)) {}

LSoundSource::LSoundSource(LSoundSourceBase* source) : source_(source)
{
    ++source_->refCount_;
}

LSoundSource::LSoundSource(const LSoundSource& other) : source_(other.source_)
{
    ++source_->refCount_;
}

LSoundSource& LSoundSource::operator=(const LSoundSource& other)
{
    ++other.source_->refCount_;
    Drop();
    source_ = other.source_;
    return *this;
}

LSoundSource::~LSoundSource()
{
    Drop();
}

void LSoundSource::Drop()
{
    if (--source_->refCount_ == 0)
        delete source_;
}

void LSoundSource::Close()
{
    Drop();
    source_ = new LSoundSourceError(sndErrClosed);
    ++source_->refCount_;
}

LSoundTime LSoundSource::GetEnd() const
{
    return LSoundTime::FromSamples(source_->GetEndSample(), source_->GetSampleRate());
}

void LSoundSource::Seek(const LSoundTime& time)
{
    source_->Seek(time.GetSamples(source_->GetSampleRate()));
}

LSoundProcessBase::LSoundProcessBase(LSoundSource& inner)
    : LSoundSourceBase(inner->GetSampleRate(), inner->GetChannels(), inner->GetMaxAmplitude()),
      inner_(inner)
{
    if (inner_->GetError() != sndErrNone)
        error_ = sndErrInput;
}

uint8_t LSoundProcessBase::GetError() const
{
    if (error_ != sndErrNone)
        return error_;
    return inner_->GetError() != sndErrNone ? sndErrInput : sndErrNone;
}
