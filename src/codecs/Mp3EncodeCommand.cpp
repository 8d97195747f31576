#include "codecs/Mp3EncodeCommand.h"

#include "platform/Components.h"
#include "platform/EscapeFilePath.h"
#include "platform/Paths.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr const char* kEncoderComponent = "mp3el";
constexpr const char* kModeLetters[] = {"s", "j", "f", "m"};

} // namespace

bool Mp3CreateEncoderCommandLine(char* out, int& sinkRate, unsigned char& sinkChannels,
                                 const char* outputPath, const LMp3EncodeSettings& settings,
                                 int rate, unsigned char channels) {
    out[0] = '\0';
    sinkRate = LMp3CorrectSampleRate(settings, rate);
    sinkChannels = std::clamp<unsigned char>(channels, 1, 2);
    if (settings.GetMinBitRate() <= 23) sinkChannels = 1;

    char encoder[kPathBufferSize];
    if (!GetComponentPath(kEncoderComponent, encoder, true)) return false;

    int mode = settings.channelMode;
    if (mode >= 4) mode = LMp3EncodeSettings::modeStereo;
    if (settings.GetMaxBitRate() <= 23) mode = LMp3EncodeSettings::modeMono;
    const char* downmix = "";
    if (sinkChannels == 1)
        mode = LMp3EncodeSettings::modeMono;
    else if (mode == LMp3EncodeSettings::modeMono)
        downmix = " -a";

    char bitRates[64];
    if (settings.constantBitRate)
        std::snprintf(bitRates, sizeof bitRates, "-b %d%s", settings.cbrBitRate,
                      settings.highQuality ? " -h" : "");
    else
        std::snprintf(bitRates, sizeof bitRates, "-v -b %d -B %d -V %d", settings.vbrMinBitRate,
                      settings.vbrMaxBitRate, settings.vbrQuality);

    // A path cut short to fit would make the encoder write some other file.
    char escapedEncoder[kPathBufferSize];
    char escapedOutput[kPathBufferSize];
    if (!EscapeFilePath(escapedEncoder, encoder) || !EscapeFilePath(escapedOutput, outputPath))
        return false;
    const int written = std::snprintf(
        out, kMp3CommandLineSize, "\"%s\"%s -m %s%s %s -r -x -s %d.%.3d -S - \"%s\"",
        escapedEncoder, downmix, kModeLetters[mode], settings.errorProtection ? " -p" : "",
        bitRates, sinkRate / 1000, sinkRate % 1000, escapedOutput);
    return written > 0 && static_cast<std::size_t>(written) < kMp3CommandLineSize;
}
