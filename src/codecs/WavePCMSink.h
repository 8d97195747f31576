#pragma once

#include "codecs/RawFileDataSoundSink.h"

// The 46-byte PCM wave header: "unknown" sizes while the sink is writing (so that a reader
// sees a file still being recorded), the true sizes once it is finished.
size_t WriteHeaderWave(const LRawFileDataSoundSinkBase& sink, bool final, uint8_t* out);

// A sink that writes an 8-bit (LSFU8) or 16-bit (LSF16) PCM wave file.
template <typename Format> class LSNKPCMFile : public LRawFileDataSoundSink<Format> {
public:
    LSNKPCMFile(const char* path, int sampleRate, unsigned char channels, int startFrame)
        : LRawFileDataSoundSink<Format>(path, sampleRate, channels, startFrame, WriteHeaderWave) {}
};
