#include "cli/CliAudioFiles.h"

#include "codecs/AudioFileSource.h"
#include "codecs/AudioFileTypes.h"

#include <strings.h>

LSoundSource CliOpenAudioSource(const std::string& path) {
    return LOpenAudioFileSource(path.c_str());
}

bool CliIsMP3File(const std::string& path) {
    const LAudioFileType* type = LFindAudioFileType(path.c_str());
    return type && type->tags == LAudioTagKind::id3;
}

bool CliHasExtension(const std::string& path, const char* extension) {
    const std::string::size_type length = std::char_traits<char>::length(extension);
    return path.size() > length && strcasecmp(path.c_str() + path.size() - length, extension) == 0;
}

const char* CliSoundErrorText(uint8_t error) {
    return LSoundErrorText(error);
}
