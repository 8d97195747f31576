#include "codecs/AudioFileSource.h"

#include "codecs/MP3File.h"
#include "codecs/WaveFile.h"

#include <cstring>
#include <strings.h>

LSoundSource LOpenAudioFileSource(const char* path) {
    const size_t length = std::strlen(path);
    if (length > 4 && strcasecmp(path + length - 4, ".mp3") == 0) return LMP3File::OpenSource(path);
    return LWaveFile::OpenSource(path);
}

const char* LSoundErrorText(uint8_t error) {
    switch (error) {
    case sndErrNone:
        return "no error";
    case sndErrClosed:
        return "no audio could be opened";
    case sndErrInput:
        return "the audio it reads from has an error";
    case sndErrFormat:
        return "bad or damaged audio format";
    case sndErrOpen:
        return "the file could not be opened";
    case sndErrUnsupported:
        return "the file's encoding is not supported";
    }
    return "unknown error";
}
