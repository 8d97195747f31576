#include "cli/CliAudioFiles.h"
#include "cli/Commands.h"

#include "codecs/MP3File.h"
#include "codecs/WaveFile.h"
#include "codecs/WaveFormatTags.h"
#include "platform/Paths.h"

#include <cstdio>
#include <optional>

namespace {

// The wave format tag of MPEG Layer III audio.
constexpr unsigned kFormatTagMP3 = 85;

// What the file's header says beyond what its source tells. MP3 audio has no bits per sample.
struct FileFormat {
    unsigned formatTag = 0;
    unsigned bitsPerSample = 0;
    char codec[kPathBufferSize] = {};
};

FileFormat ReadFileFormat(const std::string& path) {
    FileFormat format;
    if (CliIsMP3File(path)) {
        format.formatTag = kFormatTagMP3;
        if (!LMP3File::GetCodecName(format.codec, path.c_str()))
            std::snprintf(format.codec, sizeof format.codec, "%s",
                          LGetWaveCodecName(kFormatTagMP3));
        return format;
    }
    if (const std::optional<WAVEFORMATEX> wave = LGetWaveFormatEx(path.c_str())) {
        format.formatTag = wave->wFormatTag;
        format.bitsPerSample = wave->wBitsPerSample;
    }
    std::snprintf(format.codec, sizeof format.codec, "%s",
                  LGetWaveCodecName(static_cast<uint16_t>(format.formatTag)));
    return format;
}

} // namespace

int CliInfo(const CliArgs& args) {
    if (args.size() != 1) {
        std::fprintf(stderr, "usage: vinora-cli info FILE\n");
        return 2;
    }
    const std::string& path = args[0];
    const LSoundSource source = CliOpenAudioSource(path);
    if (source->GetError() != sndErrNone) {
        std::fprintf(stderr, "vinora-cli info: %s: %s\n", path.c_str(),
                     CliSoundErrorText(source->GetError()));
        return 2;
    }
    const FileFormat format = ReadFileFormat(path);
    char length[32];
    source.GetEnd()._GetText(length);
    std::printf("format tag: %u\n", format.formatTag);
    std::printf("codec: %s\n", format.codec);
    std::printf("sample rate: %d\n", source->GetSampleRate());
    std::printf("channels: %d\n", source->GetChannels());
    std::printf("bits: %u\n", format.bitsPerSample);
    std::printf("frames: %d\n", source->GetEndSample());
    std::printf("length: %s\n", length);
    return 0;
}
