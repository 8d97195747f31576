#pragma once

#include "codecs/WaveFileIO.h"
#include "sound/SampleFormat.h"
#include "sound/SoundSink.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// A file sink that writes a header, then raw sample frames, and writes the header again with
// the true sizes when it is finished (when its last handle is released). The header comes from
// a function, so one sink serves every file type with a fixed header in front of its samples.
class LRawFileDataSoundSinkBase : public LSoundSinkBase {
public:
    static constexpr size_t kMaxHeaderBytes = 64;
    // Puts the header into `out` (at most kMaxHeaderBytes) and returns its length. `final`
    // says whether the sink is finished: only then are the sizes known.
    using HeaderFunction = size_t (*)(const LRawFileDataSoundSinkBase& sink, bool final,
                                      uint8_t* out);
    using ConvertFunction = void (*)(void*, const int*, int);

    // Opens the file read-write (created with mode 0644 when missing) under a shared lock
    // taken without waiting; when that fails, bit 0 of the error code is set and the sink
    // writes nothing. Writing starts at `startFrame` (the file is cut there).
    LRawFileDataSoundSinkBase(const char* path, int sampleRate, unsigned char channels,
                              int startFrame, int bytesPerSample, HeaderFunction header,
                              ConvertFunction convert);
    ~LRawFileDataSoundSinkBase() override;

    // A write the file does not take (a full disk) sets bit 0 of the error code; nothing is
    // written after it.
    void Write(const int* buffer, int frames) override;
    // Only backwards: the audio after `frame` is discarded. A later frame is ignored.
    void Seek(int frame) override;

    int GetBytesPerSample() const { return bytesPerSample_; }
    // Bytes of sample data written so far.
    uint32_t GetDataBytes() const { return static_cast<uint32_t>(position_) * bytesPerFrame_; }

private:
    static constexpr int kBlockFrames = 8192;
    // Writes the header at the start of the file and returns its length.
    size_t WriteHeader(bool final) const;

    LFile file_;
    int bytesPerSample_;
    uint32_t bytesPerFrame_;
    HeaderFunction header_;
    ConvertFunction convert_;
    int64_t headerLength_ = 0;
    int64_t writeOffset_ = 0;
    std::vector<uint8_t> stored_;
};

template <typename Format> class LRawFileDataSoundSink : public LRawFileDataSoundSinkBase {
public:
    LRawFileDataSoundSink(const char* path, int sampleRate, unsigned char channels, int startFrame,
                          HeaderFunction header)
        : LRawFileDataSoundSinkBase(path, sampleRate, channels, startFrame, Format::kBytes, header,
                                    ConvertSamplesOut<Format>) {}
};
