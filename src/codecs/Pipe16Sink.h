#pragma once

#include "codecs/PipeOut.h"
#include "sound/Bucket.h"
#include "sound/SoundSink.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

// A sink that runs a command and pipes what it is given into the command's standard input as
// raw interleaved 16-bit big-endian samples, e.g. to an encoder that writes a file. Releasing
// the sink closes the pipe and waits for the command to finish. A command that cannot be
// started sets bit 0 of the error code, and so does one that stops reading its input (the rest
// of the audio is dropped). When the command fails (stops reading, exits with a status other
// than 0, or is killed) the failure is logged and the file it writes, `outputPath` when given,
// is removed when the sink is released, so that no half-written output is left and the writer
// sees that no file was made.
//
// Write only converts the samples into a ring of several seconds; a thread of the sink's own
// moves the ring into the pipe. The command thus always has input waiting while the writer
// computes its next blocks, and the writer waits only when it is that far ahead.
class LPipe16Sink : public LSoundSinkBase {
public:
    LPipe16Sink(const char* command, int sampleRate, unsigned char channels,
                const char* outputPath = nullptr);
    ~LPipe16Sink() override;

    void Write(const int* buffer, int frames) override;

private:
    static constexpr int kBufferFrames = 8192;
    // About 24 s of CD audio.
    static constexpr unsigned long kRingBytes = 4UL << 20;
    // What the pipe thread moves at once.
    static constexpr std::size_t kChunkBytes = 256 << 10;

    // The pipe thread: moves the ring into the pipe until the sink closes or the command stops
    // reading.
    void Feed();
    // Notes (once) that the command no longer reads.
    void SetBroken();

    LPipeOut pipe_;
    std::vector<uint8_t> buffer_; // one block converted, written by Write
    std::vector<uint8_t> chunk_;  // what the pipe thread writes next
    LBucket ring_{kRingBytes};
    std::atomic<bool> closing_ = false;
    std::atomic<bool> broken_ = false; // the command stopped reading
    std::string outputPath_;
    std::thread feeder_;
};
