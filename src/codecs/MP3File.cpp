#include "codecs/MP3File.h"

#include "codecs/MP3Source.h"

#include <cstdio>

LSoundSource LMP3File::OpenSource(const char* path) {
    LSoundSource source(new LMP3Source(path));
    if (const uint8_t error = source->GetError(); error != sndErrNone)
        return LSoundSource(new LSoundSourceError(error));
    return source;
}

bool LMP3File::GetCodecName(char* out, const char* path) {
    auto* mp3 = new LMP3Source(path);
    const LSoundSource source(mp3);
    if (mp3->GetError() != sndErrNone) return false;
    static const char* const kVersions[3] = {"1", "2", "2.5"};
    std::snprintf(out, 260, "MPEG-%s Layer III", kVersions[mp3->GetReferenceHeader().version]);
    return true;
}
