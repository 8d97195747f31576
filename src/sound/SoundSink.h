#pragma once

#include "sound/SoundTime.h"

#include <atomic>
#include <cstdint>

// A pushed consumer of interleaved internal samples. Objects are owned through LSoundSink
// handles; releasing the last handle finishes the sink (a file sink completes its file then).
class LSoundSinkBase {
public:
    LSoundSinkBase(int sampleRate, unsigned char channels);
    virtual ~LSoundSinkBase() = default;
    LSoundSinkBase(const LSoundSinkBase&) = delete;
    LSoundSinkBase& operator=(const LSoundSinkBase&) = delete;

    virtual void Write(const int* buffer, int frames) = 0;
    virtual void Seek(int) {}
    void Seek(const LSoundTime& time) { Seek(time.GetSamples(sampleRate_)); }

    // Any thread: a window shows the length of a recording while the recorder's thread writes it.
    int GetPosition() const { return position_.load(std::memory_order_relaxed); }
    int GetSampleRate() const { return sampleRate_; }
    unsigned char GetChannels() const { return channels_; }
    // Bit 0 set: the sink cannot take audio.
    uint8_t GetError() const { return error_; }
    // Whether the sink cannot take audio (it failed to open, or a write failed).
    bool IsFailed() const { return (error_ & 1) != 0; }

protected:
    // Written only by the thread that writes the sink.
    std::atomic<int> position_ = 0;
    int sampleRate_;
    unsigned char channels_;
    // Set by the thread that writes the sink; a window may read it meanwhile.
    std::atomic<uint8_t> error_ = 0;

private:
    friend class LSoundSink;
    uint16_t refCount_ = 0;
};

// Swallows writes; the sink of a closed or failed handle.
class LSoundSinkError : public LSoundSinkBase {
public:
    LSoundSinkError();
    void Write(const int*, int) override {}
};

// Counted handle to a sink. Never empty: a closed or default handle holds an error sink.
class LSoundSink {
public:
    LSoundSink();
    // Takes a newly created sink (its count goes from 0 to 1).
    explicit LSoundSink(LSoundSinkBase* sink);
    LSoundSink(const LSoundSink& other);
    LSoundSink& operator=(const LSoundSink& other);
    ~LSoundSink();

    // Releases this handle's hold (finishing the sink if it was the last) and holds an error sink.
    void Close();

    LSoundSinkBase* operator->() const { return sink_; }
    LSoundSinkBase& operator*() const { return *sink_; }
    LSoundSinkBase* Get() const { return sink_; }

private:
    void Drop();
    LSoundSinkBase* sink_;
};

// Counts what is written and keeps nothing.
class LSoundSinkStubBase : public LSoundSinkBase {
public:
    using LSoundSinkBase::LSoundSinkBase;
    void Write(const int*, int frames) override { position_ += frames; }
};

// The format of a stub sink; OpenSink makes one.
struct LSoundSinkStub {
    int sampleRate = 44100;
    unsigned char channels = 2;
    LSoundSink OpenSink() const { return LSoundSink(new LSoundSinkStubBase(sampleRate, channels)); }
};
