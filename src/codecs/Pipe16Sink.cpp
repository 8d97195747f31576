#include "codecs/Pipe16Sink.h"

#include "platform/Log.h"
#include "sound/SampleFormat.h"

#include <unistd.h>

#include <algorithm>
#include <system_error>

LPipe16Sink::LPipe16Sink(const char* command, int sampleRate, unsigned char channels,
                         const char* outputPath)
    : LSoundSinkBase(sampleRate, channels),
      buffer_(static_cast<size_t>(kBufferFrames) * channels_ * LSFBE16::kBytes),
      chunk_(kChunkBytes), outputPath_(outputPath ? outputPath : "") {
    if (!pipe_.Open(command)) {
        LOGERROR("Could not start the command: %s", command);
        error_ |= 1;
        return;
    }
    try {
        feeder_ = std::thread([this] { Feed(); });
    } catch (const std::system_error&) {
        LOGERROR("Could not start the thread that feeds the command: %s", command);
        error_ |= 1;
    }
}

LPipe16Sink::~LPipe16Sink() {
    if (!pipe_.IsOpen()) return;
    closing_ = true;
    ring_.DataAvailable().Signal();
    if (feeder_.joinable()) feeder_.join();
    SetBroken();
    // -1: killed by a signal.
    const int status = pipe_.Close();
    if (status != 0) LOGERROR("The encoder ended with exit status %d", status);
    if ((status != 0 || IsFailed()) && !outputPath_.empty()) unlink(outputPath_.c_str());
}

void LPipe16Sink::SetBroken() {
    if (!broken_ || IsFailed()) return;
    LOGERROR("The encoder stopped reading its input");
    error_ |= 1;
}

void LPipe16Sink::Write(const int* buffer, int frames) {
    position_ += frames;
    while (frames > 0 && !IsFailed()) {
        const int block = std::min(frames, kBufferFrames);
        const int values = block * channels_;
        const unsigned long bytes = static_cast<unsigned long>(values) * LSFBE16::kBytes;
        ConvertSamplesOut<LSFBE16>(buffer_.data(), buffer, values);
        while (!broken_ && ring_.GetBytesWriteAvailable() < bytes)
            ring_.SpaceAvailable().WaitSignal(WAIT_FOREVER);
        SetBroken();
        if (IsFailed()) break;
        ring_.Write(buffer_.data(), bytes);
        buffer += values;
        frames -= block;
    }
}

void LPipe16Sink::Feed() {
    for (;;) {
        const unsigned long ready = ring_.GetBytesReadAvailable();
        if (ready == 0) {
            // Everything written before the sink closed is in the ring by now.
            if (closing_ && ring_.GetBytesReadAvailable() == 0) return;
            ring_.DataAvailable().WaitSignal(WAIT_FOREVER);
            continue;
        }
        const unsigned long bytes = std::min<unsigned long>(ready, chunk_.size());
        ring_.Read(chunk_.data(), bytes);
        if (!pipe_.Write(chunk_.data(), bytes)) {
            broken_ = true;
            ring_.SpaceAvailable().Signal();
            return;
        }
    }
}
