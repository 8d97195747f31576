#include "codecs/WaveFile.h"

#include "codecs/ImaAdpcmSource.h"
#include "codecs/WaveFormatTags.h"
#include "codecs/WavePCMSink.h"
#include "codecs/WavePCMSource.h"
#include "codecs/WaveRiffReader.h"
#include "platform/Paths.h"

#include <cstdio>

namespace {

LSoundSource ErrorSource(uint8_t error) {
    return LSoundSource(new LSoundSourceError(error));
}

} // namespace

LSoundSource LWaveFile::OpenSource(const char* path) {
    LFile file(_OpenRead(path, 0));
    if (!file.IsOpen()) return ErrorSource(sndErrOpen);

    LWaveRiffReader reader(file);
    WAVEFORMATEX format;
    uint32_t dataBytes = 0;
    if (uint8_t error = reader.ReadFormat(format); error != sndErrNone) return ErrorSource(error);
    if (uint8_t error = reader.FindData(dataBytes); error != sndErrNone) return ErrorSource(error);
    if (format.nChannels < 1 || format.nChannels > 255 || format.nSamplesPerSec < 1 ||
        format.nSamplesPerSec > kWaveMaxSampleRate)
        return ErrorSource(sndErrFormat);

    const int rate = static_cast<int>(format.nSamplesPerSec);
    const auto channels = static_cast<unsigned char>(format.nChannels);
    const int64_t dataStart = reader.GetDataStart();
    if (format.wFormatTag == kWaveFormatIMAADPCM)
        return LIMAWaveOpenSource(file, dataStart, dataBytes, rate, channels, format.nBlockAlign);
    if (format.wFormatTag != kWaveFormatPCM || format.wBitsPerSample > 16)
        return ErrorSource(sndErrUnsupported);
    if (format.wBitsPerSample > 8)
        return LSoundSource(
            new LSRCPCMFile<LSF16>(std::move(file), dataStart, rate, channels, dataBytes));
    return LSoundSource(
        new LSRCPCMFile<LSFU8>(std::move(file), dataStart, rate, channels, dataBytes));
}

LSoundSink LWaveFile::OpenSinkPCM(const char* path, int sampleRate, unsigned char channels,
                                  unsigned short bitsPerSample, int startFrame) {
    if (sampleRate < 1 || bitsPerSample > 16) return LSoundSink();
    if (bitsPerSample > 8)
        return LSoundSink(new LSNKPCMFile<LSF16>(path, sampleRate, channels, startFrame));
    return LSoundSink(new LSNKPCMFile<LSFU8>(path, sampleRate, channels, startFrame));
}

LSoundSink LWaveFile::OpenSink(const char* path, const LWaveFileFormat& format) {
    if (format.wfx.wFormatTag != kWaveFormatPCM) return LSoundSink();
    return OpenSinkPCM(path, static_cast<int>(format.wfx.nSamplesPerSec),
                       static_cast<unsigned char>(format.wfx.nChannels), format.wfx.wBitsPerSample,
                       0);
}

std::optional<WAVEFORMATEX> LGetWaveFormatEx(const char* path) {
    const LFile file(_OpenRead(path, 0));
    if (!file.IsOpen()) return std::nullopt;
    WAVEFORMATEX format;
    if (LWaveRiffReader(file).ReadFormat(format) != sndErrNone) return std::nullopt;
    return format;
}

void LGetWaveFileCodecName(char* out, const char* path) {
    const std::optional<WAVEFORMATEX> format = LGetWaveFormatEx(path);
    std::snprintf(out, kPathBufferSize, "%s", LGetWaveCodecName(format ? format->wFormatTag : 0));
}
