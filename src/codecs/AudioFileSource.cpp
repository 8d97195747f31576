#include "codecs/AudioFileSource.h"

#include "codecs/AudioFileTypes.h"
#include "codecs/WaveFile.h"


LSoundSource LOpenAudioFileSource(const char* path) {
    const LAudioFileType* type = LFindAudioFileType(path);
    return type ? type->openSource(path) : LWaveFile::OpenSource(path);
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
