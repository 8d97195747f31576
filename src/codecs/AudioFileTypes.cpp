#include "codecs/AudioFileTypes.h"

#include "codecs/MP3File.h"
#include "codecs/Mp3EncodeSettings.h"
#include "codecs/Mp3EncodeSink.h"
#include "codecs/WaveFile.h"
#include "codecs/WaveFileFormat.h"
#include "platform/Paths.h"

#include <strings.h>
#include <unistd.h>

#include <cstring>

namespace {

// The user's saved wave format ("WavCodec.wff", stored first when there is none yet), or
// 16-bit PCM at the audio's own rate and channels.
LSoundSink OpenWaveSink(const char* path, int rate, unsigned char channels, bool savedFormat) {
    LWaveFileFormat format(rate, channels);
    char formatPath[kPathBufferSize];
    if (LWaveFileFormat::GetWavCodecFilePath(formatPath)) {
        if (access(formatPath, F_OK) != 0) format.SaveToWavCodecFile(formatPath);
        if (savedFormat) format.LoadFromWavCodecFile(formatPath);
    }
    return LWaveFile::OpenSink(path, format);
}

LSoundSink OpenMp3FileSink(const char* path, int rate, unsigned char channels, bool) {
    return OpenMp3Sink(path, LMp3EncodeSettings(), rate, channels);
}

} // namespace

const std::vector<LAudioFileType>& LAudioFileTypes() {
    static const std::vector<LAudioFileType> types = {
        {".wav", "Wave Files", LAudioTagKind::riff, LWaveFile::OpenSource, OpenWaveSink},
        {".mp3", "MP3 Files", LAudioTagKind::id3, LMP3File::OpenSource, OpenMp3FileSink},
    };
    return types;
}

const LAudioFileType* LFindAudioFileType(const char* path, LNameMatch match) {
    char extension[kPathBufferSize];
    _GetFileExtensionFromPath(extension, path);
    for (const LAudioFileType& type : LAudioFileTypes()) {
        const bool same = match == LNameMatch::exact ? std::strcmp(extension, type.extension) == 0
                                                     : strcasecmp(extension, type.extension) == 0;
        if (same) return &type;
    }
    return nullptr;
}

LFileFilter LAudioFilesFilter() {
    LFileFilter filter{"Audio Files", {}};
    for (const LAudioFileType& type : LAudioFileTypes())
        filter.patterns.push_back(std::string("*") + type.extension);
    return filter;
}
