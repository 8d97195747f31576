#pragma once

#include "sound/SoundSource.h"

// Reading MP3 files.
class LMP3File {
public:
    // A decoding source over the file, or an error source: sndErrOpen when the file cannot be
    // opened, sndErrFormat when it holds no MPEG Layer III audio.
    static LSoundSource OpenSource(const char* path);
    // Writes the stream's codec name ("MPEG-1 Layer III", "MPEG-2 Layer III" or
    // "MPEG-2.5 Layer III") into `out` (at least 260 bytes); false when it is not an MP3 file.
    static bool GetCodecName(char* out, const char* path);
};
