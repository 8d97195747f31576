#pragma once

#include "sound/SoundTime.h"

#include <cstdint>

// Error codes of sources.
enum LSoundErrorCode : uint8_t {
    sndErrNone = 0,        // usable
    sndErrClosed = 1,      // no source: a default-constructed or closed handle
    sndErrInput = 2,       // a stage whose inner source had an error
    sndErrFormat = 3,      // bad or damaged format
    sndErrOpen = 4,        // the file could not be opened
    sndErrUnsupported = 5, // the file's encoding is not supported
    sndErrRead = 6,        // a read failed: what it gave is not the audio
};

// A pulled stream of interleaved internal samples. Read always delivers exactly the frames
// asked for (zeros before the start and past the end) and advances the position by that many.
// Objects are owned through LSoundSource handles, never deleted directly.
class LSoundSourceBase {
public:
    LSoundSourceBase(int sampleRate, unsigned char channels, int maxAmplitude);
    virtual ~LSoundSourceBase() = default;
    LSoundSourceBase(const LSoundSourceBase&) = delete;
    LSoundSourceBase& operator=(const LSoundSourceBase&) = delete;

    virtual void Read(int* buffer, int frames) = 0;
    virtual int GetPositionSample() const = 0;
    virtual int GetEndSample() const = 0;
    virtual void Seek(int) {}
    virtual bool IsStreaming() const { return false; }
    virtual void WaitForStreamingData(int ms);

    int GetSampleRate() const { return sampleRate_; }
    unsigned char GetChannels() const { return channels_; }
    int GetMaxAmplitude() const { return maxAmplitude_; }
    // A source may fail while it is read; a reader asks again after reading.
    virtual uint8_t GetError() const { return error_; }

protected:
    int sampleRate_;
    int maxAmplitude_;
    unsigned char channels_;
    uint8_t error_ = sndErrNone;

private:
    friend class LSoundSource;
    uint16_t refCount_ = 0;
};

// Reads silence and carries an error code.
class LSoundSourceError : public LSoundSourceBase {
public:
    explicit LSoundSourceError(uint8_t error);
    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return 0; }
    int GetEndSample() const override { return 0; }
};

// Counted handle to a source. Never empty: a closed or default handle holds an error source.
class LSoundSource {
public:
    LSoundSource();
    // Takes a newly created source (its count goes from 0 to 1).
    explicit LSoundSource(LSoundSourceBase* source);
    LSoundSource(const LSoundSource& other);
    LSoundSource& operator=(const LSoundSource& other);
    ~LSoundSource();

    void Close();

    LSoundSourceBase* operator->() const { return source_; }
    LSoundSourceBase& operator*() const { return *source_; }
    LSoundSourceBase* Get() const { return source_; }

    LSoundTime GetEnd() const;
    void Seek(const LSoundTime& time);

private:
    void Drop();
    LSoundSourceBase* source_;
};

// Base of every processing stage: a source that reads an inner source. Rate, channels and
// maximum amplitude start as the inner source's; an inner error, also one that arises while
// reading, becomes sndErrInput.
class LSoundProcessBase : public LSoundSourceBase {
public:
    explicit LSoundProcessBase(LSoundSource& inner);

    uint8_t GetError() const override;

    int GetPositionSample() const override { return inner_->GetPositionSample(); }
    int GetEndSample() const override { return inner_->GetEndSample(); }
    void Seek(int frame) override { inner_->Seek(frame); }
    bool IsStreaming() const override { return inner_->IsStreaming(); }
    void WaitForStreamingData(int ms) override { inner_->WaitForStreamingData(ms); }

protected:
    LSoundSource inner_;
};

// A stage factory holding a stage's settings: wraps a source in the stage, or hands the source
// back when the stage would change nothing.
class LSoundProcess {
public:
    virtual LSoundSource OpenSource(LSoundSource& source) = 0;

protected:
    ~LSoundProcess() = default;
};

// A handle to a stage that keeps the stage's own type, so its operations stay reachable.
template <typename T>
class LSoundSourceTransparent : public LSoundSource {
public:
    LSoundSourceTransparent() = default;
    explicit LSoundSourceTransparent(T* stage) : LSoundSource(stage), stage_(stage) {}

    T* GetStage() const { return stage_; }

private:
    T* stage_ = nullptr;
};
