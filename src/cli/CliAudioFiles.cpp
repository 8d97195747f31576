#include "cli/CliAudioFiles.h"

#include "codecs/MP3File.h"
#include "codecs/WaveFile.h"

#include <strings.h>

LSoundSource CliOpenAudioSource(const std::string& path) {
    if (CliIsMP3File(path)) return LMP3File::OpenSource(path.c_str());
    return LWaveFile::OpenSource(path.c_str());
}

bool CliIsMP3File(const std::string& path) {
    return CliHasExtension(path, ".mp3");
}

bool CliHasExtension(const std::string& path, const char* extension) {
    const std::string::size_type length = std::char_traits<char>::length(extension);
    return path.size() > length && strcasecmp(path.c_str() + path.size() - length, extension) == 0;
}

const char* CliSoundErrorText(uint8_t error) {
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
