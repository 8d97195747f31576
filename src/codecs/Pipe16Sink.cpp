#include "codecs/Pipe16Sink.h"

#include "platform/Log.h"
#include "sound/SampleFormat.h"

#include <unistd.h>

#include <algorithm>

LPipe16Sink::LPipe16Sink(const char* command, int sampleRate, unsigned char channels,
                         const char* outputPath)
    : LSoundSinkBase(sampleRate, channels),
      buffer_(static_cast<size_t>(kBufferFrames) * channels_ * LSFBE16::kBytes),
      outputPath_(outputPath ? outputPath : "") {
    if (!pipe_.Open(command)) {
        LOGERROR("Could not start the command: %s", command);
        error_ |= 1;
    }
}

LPipe16Sink::~LPipe16Sink() {
    if (!pipe_.IsOpen()) return;
    // -1: killed by a signal.
    const int status = pipe_.Close();
    if (status != 0) LOGERROR("The encoder ended with exit status %d", status);
    if ((status != 0 || IsFailed()) && !outputPath_.empty()) unlink(outputPath_.c_str());
}

void LPipe16Sink::Write(const int* buffer, int frames) {
    position_ += frames;
    while (frames > 0 && !IsFailed()) {
        const int block = std::min(frames, kBufferFrames);
        const int values = block * channels_;
        ConvertSamplesOut<LSFBE16>(buffer_.data(), buffer, values);
        if (!pipe_.Write(buffer_.data(), static_cast<size_t>(values) * LSFBE16::kBytes)) {
            LOGERROR("The encoder stopped reading its input");
            error_ |= 1;
        }
        buffer += values;
        frames -= block;
    }
}
