#pragma once

#include "codecs/PipeOut.h"
#include "sound/SoundSink.h"

#include <cstdint>
#include <string>
#include <vector>

// A sink that runs a command and pipes what it is given into the command's standard input as
// raw interleaved 16-bit big-endian samples, e.g. to an encoder that writes a file. Releasing
// the sink closes the pipe and waits for the command to finish. A command that cannot be
// started sets bit 0 of the error code, and so does one that stops reading its input (the rest
// of the audio is dropped). When the command fails (stops reading, exits with a status other
// than 0, or is killed) the failure is logged and the file it writes, `outputPath` when given,
// is removed when the sink is released, so that no half-written output is left and the writer
// sees that no file was made.
class LPipe16Sink : public LSoundSinkBase {
public:
    LPipe16Sink(const char* command, int sampleRate, unsigned char channels,
                const char* outputPath = nullptr);
    ~LPipe16Sink() override;

    void Write(const int* buffer, int frames) override;

private:
    static constexpr int kBufferFrames = 8192;

    LPipeOut pipe_;
    std::vector<uint8_t> buffer_;
    std::string outputPath_;
};
