#pragma once

#include "codecs/Mp3EncodeSettings.h"
#include "sound/SoundSource.h"
#include "support/TempHome.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// Helpers for the MP3 tests: the conformance bitstreams, encoder settings, and reading a
// whole stream with this program's decoder or with mpg123.

inline std::string Mp3ConformancePath(const std::string& name) {
    return std::string(VINORA_TESTDATA) + "/mp3-conformance/" + name;
}

// Reads the source from its position to its end in blocks of 8,192 frames. An estimated end
// may move while reading, so it is asked again after every block, and what was read past the
// end the source settled on is dropped.
inline std::vector<int> ReadToEnd(const LSoundSource& source) {
    const int start = source->GetPositionSample();
    const int channels = source->GetChannels();
    std::vector<int> out;
    std::vector<int> block(8192 * channels);
    while (source->GetPositionSample() < source->GetEndSample()) {
        const int frames = std::min(8192, source->GetEndSample() - source->GetPositionSample());
        source->Read(block.data(), frames);
        out.insert(out.end(), block.begin(), block.begin() + frames * channels);
    }
    out.resize(size_t(std::max(source->GetEndSample() - start, 0)) * channels);
    return out;
}

// 16-bit samples as mpg123 decodes the file, in the internal scale. Without gapless decoding
// mpg123 keeps the encoder's delay and padding, as a stream without an encoder tag has them.
inline std::vector<int> Mpg123Samples(const std::filesystem::path& path, bool gapless) {
    const std::string raw =
        RunCommand(std::string("mpg123 -q ") + (gapless ? "" : "--no-gapless ") + "-e s16 -s " +
                   ShellQuote(path.string()) + " 2>/dev/null");
    std::vector<int> out;
    for (size_t i = 0; i + 1 < raw.size(); i += 2)
        out.push_back(int16_t(uint8_t(raw[i]) | uint8_t(raw[i + 1]) << 8) * 16);
    return out;
}

inline LMp3EncodeSettings Mp3Cbr(int kbps, bool highQuality = false) {
    LMp3EncodeSettings settings{LMp3EncodeSettings::DefaultsTag{}};
    settings.cbrBitRate = static_cast<uint16_t>(kbps);
    settings.highQuality = highQuality;
    return settings;
}

inline LMp3EncodeSettings Mp3Vbr(int minKbps, int maxKbps, int quality = 4) {
    LMp3EncodeSettings settings{LMp3EncodeSettings::DefaultsTag{}};
    settings.constantBitRate = 0;
    settings.vbrMinBitRate = static_cast<uint16_t>(minKbps);
    settings.vbrMaxBitRate = static_cast<uint16_t>(maxKbps);
    settings.vbrQuality = static_cast<uint8_t>(quality);
    return settings;
}

inline LMp3EncodeSettings WithMode(LMp3EncodeSettings settings, uint8_t channelMode) {
    settings.channelMode = channelMode;
    return settings;
}
