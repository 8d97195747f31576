#pragma once

#include "codecs/WaveFileFormat.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"

#include <optional>

// Reading and writing RIFF wave files.
class LWaveFile {
public:
    // 8- and 16-bit PCM and mono IMA ADPCM; anything else gives an error source: sndErrOpen
    // when the file cannot be opened, sndErrFormat for a damaged or impossible header,
    // sndErrUnsupported for another encoding.
    static LSoundSource OpenSource(const char* path);
    // A PCM sink: 0 to 8 bits give an 8-bit file, 9 to 16 bits a 16-bit file, more an error
    // sink. The file gets its true sizes when the last handle is released.
    static LSoundSink OpenSinkPCM(const char* path, int sampleRate, unsigned char channels,
                                  unsigned short bitsPerSample, int startFrame);
    // A PCM sink in the record's format; an error sink for any format tag but PCM.
    static LSoundSink OpenSink(const char* path, const LWaveFileFormat& format);
};

// The first 18 bytes of the file's "fmt " chunk; nothing when it is not a readable wave file.
std::optional<WAVEFORMATEX> LGetWaveFormatEx(const char* path);

// Writes the registered codec name of the file's format tag into `out` (at least 260 bytes);
// "Microsoft Unknown Wave Format" when the file cannot be read or the tag is not registered.
void LGetWaveFileCodecName(char* out, const char* path);
