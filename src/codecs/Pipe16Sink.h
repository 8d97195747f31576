#pragma once

#include "codecs/PipeOut.h"
#include "sound/SoundSink.h"

#include <cstdint>
#include <vector>

// A sink that runs a command and pipes what it is given into the command's standard input as
// raw interleaved 16-bit big-endian samples, e.g. to an encoder that writes a file. Releasing
// the sink closes the pipe and waits for the command to finish. A command that cannot be
// started sets bit 0 of the error code; one that stops reading is not noticed by the writer
// (what it leaves behind is its own affair), but an exit status other than 0 is logged.
class LPipe16Sink : public LSoundSinkBase {
public:
    LPipe16Sink(const char* command, int sampleRate, unsigned char channels);
    ~LPipe16Sink() override;

    void Write(const int* buffer, int frames) override;

private:
    static constexpr int kBufferFrames = 8192;

    LPipeOut pipe_;
    std::vector<uint8_t> buffer_;
};
