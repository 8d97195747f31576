#pragma once

#include "codecs/RawFileDataSoundSink.h"
#include "sound/SoundSink.h"

// Writing 16-bit big-endian AIFF files (the format the audio CD burner takes).
class LAifFile {
public:
    static LSoundSink OpenSinkPCM16(const char* path, int sampleRate, unsigned char channels);
};

// The 54-byte AIFF header: FORM, COMM (channels, frames, 16 bits, rate) and the SSND chunk
// header. The SSND size reads 0xFFFFFFFF until the sink is finished.
size_t WriteHeaderAIFF(const LRawFileDataSoundSinkBase& sink, bool final, uint8_t* out);

// A sample rate as the 80-bit IEEE extended number of the COMM chunk (10 bytes, big-endian).
void LConvert32to80(unsigned char* out, unsigned int rate);
