#include "play/WaveOrMp3Source.h"

#include "codecs/MP3Source.h"
#include "codecs/WaveFile.h"

#include <filesystem>
#include <strings.h>

bool IsWaveFileName(const std::string& path) {
    return strcasecmp(std::filesystem::path(path).extension().c_str(), ".wav") == 0;
}

LSoundSource OpenWaveOrMp3Source(const std::string& path) {
    if (IsWaveFileName(path)) return LWaveFile::OpenSource(path.c_str());
    return LSoundSource(new LMP3Source(path.c_str()));
}
