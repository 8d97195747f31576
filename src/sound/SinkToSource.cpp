#include "sound/SinkToSource.h"

#include "sound/AudioBuffer.h"

#include <algorithm>

namespace {

constexpr unsigned int kWriterWaitMS = 200;
constexpr unsigned int kReaderWaitMS = 1000;

} // namespace

LSinkToSourceBase::LSinkToSourceBase(int sampleRate, unsigned char channels, int maxAmplitude)
    : sampleRate_(sampleRate), channels_(channels == 0 ? 1 : channels), maxAmplitude_(maxAmplitude),
      bytesPerFrame_(channels_ * 4), bucket_(kBucketBytes)
{
}

void LSinkToSourceBase::Release()
{
    if (refCount_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

void LSinkToSourceBase::WriteFrames(const int* buffer, int frames)
{
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(buffer);
    unsigned long remaining = static_cast<unsigned long>(frames) * bytesPerFrame_;
    while (remaining > 0) {
        const unsigned long writable = bucket_.GetBytesWriteAvailable();
        if (writable > 0) {
            const unsigned long move = std::min(remaining, writable);
            bucket_.Write(bytes, move);
            bytes += move;
            remaining -= move;
        } else if (!sourceOpen_.load()) {
            return;
        } else {
            bucket_.SpaceAvailable().WaitSignal(kWriterWaitMS);
        }
    }
}

void LSinkToSourceBase::ReadFrames(int* buffer, int frames)
{
    unsigned char* bytes = reinterpret_cast<unsigned char*>(buffer);
    unsigned long remaining = static_cast<unsigned long>(frames) * bytesPerFrame_;
    while (remaining > 0) {
        unsigned long readable = bucket_.GetBytesReadAvailable();
        if (readable == 0 && !sinkOpen_.load()) {
            // The writer may have finished just after the first look.
            readable = bucket_.GetBytesReadAvailable();
            if (readable == 0) {
                std::fill(bytes, bytes + remaining, 0);
                return;
            }
        }
        if (readable > 0) {
            const unsigned long move = std::min(remaining, readable);
            bucket_.Read(bytes, move);
            bytes += move;
            remaining -= move;
        } else {
            bucket_.DataAvailable().WaitSignal(kReaderWaitMS);
        }
    }
}

int LSinkToSourceBase::FramesReadable()
{
    return static_cast<int>(bucket_.GetBytesReadAvailable() / bytesPerFrame_);
}

void LSinkToSourceBase::SetSinkOpen(bool open)
{
    sinkOpen_.store(open);
    if (!open)
        bucket_.DataAvailable().Signal();
}

void LSinkToSourceBase::SetSourceOpen(bool open)
{
    sourceOpen_.store(open);
    if (!open)
        bucket_.SpaceAvailable().Signal();
}

LSinkToSource::LSinkToSource(int sampleRate, unsigned char channels, int maxAmplitude)
    : shared_(new LSinkToSourceBase(sampleRate, channels, maxAmplitude))
{
}

LSinkToSource::LSinkToSource(const LSinkToSource& other) : shared_(other.shared_)
{
    shared_->AddRef();
}

LSinkToSource& LSinkToSource::operator=(const LSinkToSource& other)
{
    other.shared_->AddRef();
    shared_->Release();
    shared_ = other.shared_;
    return *this;
}

LSinkToSource::~LSinkToSource()
{
    shared_->Release();
}

LSoundSource LSinkToSource::OpenSource()
{
    return LSoundSource(new LSinkToSourceSource(shared_));
}

LSoundSink LSinkToSource::OpenSink()
{
    return LSoundSink(new LSinkToSourceSink(shared_));
}

LSinkToSourceSink::LSinkToSourceSink(LSinkToSourceBase* shared)
    : LSoundSinkBase(shared->SampleRate(), shared->Channels()), shared_(shared)
{
    shared_->AddRef();
    shared_->SetSinkOpen(true);
}

LSinkToSourceSink::~LSinkToSourceSink()
{
    shared_->SetSinkOpen(false);
    shared_->Release();
}

void LSinkToSourceSink::Write(const int* buffer, int frames)
{
    shared_->WriteFrames(buffer, frames);
    position_ += frames;
}

LSinkToSourceSource::LSinkToSourceSource(LSinkToSourceBase* shared)
    : LSoundSourceBase(shared->SampleRate(), shared->Channels(), shared->MaxAmplitude()),
      shared_(shared)
{
    shared_->AddRef();
    shared_->SetSourceOpen(true);
}

LSinkToSourceSource::~LSinkToSourceSource()
{
    _Close();
    shared_->Release();
}

void LSinkToSourceSource::_Close()
{
    shared_->SetSourceOpen(false);
}

void LSinkToSourceSource::Read(int* buffer, int frames)
{
    shared_->ReadFrames(buffer, frames);
}

int LSinkToSourceSource::GetEndSample() const
{
    return shared_->FramesReadable();
}

void LSinkToSourceSource::WaitForStreamingData(int ms)
{
    shared_->DataAvailable().WaitSignal(ms < 0 ? 0 : static_cast<unsigned int>(ms));
}
