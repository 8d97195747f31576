#pragma once

#include "sound/Bucket.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"

#include <atomic>
#include <cstdint>

// The state shared by the two ends of a sink-to-source pipe: audio written into the sink end on
// one thread is read from the source end on another. Held by the LSinkToSource handle and by
// each end; freed when the last of them is gone (the count is atomic because the ends are
// released on different threads).
class LSinkToSourceBase {
public:
    LSinkToSourceBase(int sampleRate, unsigned char channels, int maxAmplitude);

    void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }
    void Release();

    // Blocks while the bucket is full and the source end is open; drops the rest once it closes.
    void WriteFrames(const int* buffer, int frames);
    // Blocks while the bucket is empty and the sink end is open; zeros once it has closed.
    void ReadFrames(int* buffer, int frames);
    int FramesReadable();

    void SetSinkOpen(bool open);
    void SetSourceOpen(bool open);
    bool IsSinkOpen() const { return sinkOpen_.load(); }

    int SampleRate() const { return sampleRate_; }
    unsigned char Channels() const { return channels_; }
    int MaxAmplitude() const { return maxAmplitude_; }
    LSignalObject& DataAvailable() { return bucket_.DataAvailable(); }

    static constexpr unsigned long kBucketBytes = 1234800;

private:
    std::atomic<int32_t> refCount_{1};
    int sampleRate_;
    unsigned char channels_;
    int maxAmplitude_;
    int bytesPerFrame_;
    std::atomic<bool> sinkOpen_{false};
    std::atomic<bool> sourceOpen_{false};
    LBucket bucket_;
};

// Handle to a pipe; each end it opens holds the shared state too.
class LSinkToSource {
public:
    LSinkToSource(int sampleRate, unsigned char channels, int maxAmplitude);
    LSinkToSource(const LSinkToSource& other);
    LSinkToSource& operator=(const LSinkToSource& other);
    ~LSinkToSource();

    LSoundSource OpenSource();
    LSoundSink OpenSink();

private:
    LSinkToSourceBase* shared_;
};

// The writing end.
class LSinkToSourceSink : public LSoundSinkBase {
public:
    explicit LSinkToSourceSink(LSinkToSourceBase* shared);
    ~LSinkToSourceSink() override;
    void Write(const int* buffer, int frames) override;

private:
    LSinkToSourceBase* shared_;
};

// The reading end: its end is what can be read now, and it streams while the sink end is open.
class LSinkToSourceSource : public LSoundSourceBase {
public:
    explicit LSinkToSourceSource(LSinkToSourceBase* shared);
    ~LSinkToSourceSource() override;
    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return 0; }
    int GetEndSample() const override;
    bool IsStreaming() const override { return shared_->IsSinkOpen(); }
    void WaitForStreamingData(int ms) override;

private:
    void _Close();
    LSinkToSourceBase* shared_;
};
