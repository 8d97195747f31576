#pragma once

#include "codecs/Mp3EncodeSettings.h"
#include "sound/SoundSource.h"
#include "support/TempHome.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
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

// Raw 16-bit little-endian samples in the internal scale.
inline std::vector<int> Pcm16Samples(const std::string& raw) {
    std::vector<int> out;
    for (size_t i = 0; i + 1 < raw.size(); i += 2)
        out.push_back(int16_t(uint8_t(raw[i]) | uint8_t(raw[i + 1]) << 8) * 16);
    return out;
}

// A reference output of the conformance bitstreams.
inline std::vector<int> Mp3ConformanceReference(const std::string& name) {
    std::ifstream in(Mp3ConformancePath(name + ".pcm"), std::ios::binary);
    return Pcm16Samples(std::string(std::istreambuf_iterator<char>(in), {}));
}

// 16-bit samples as mpg123 decodes the file, in the internal scale. Without gapless decoding
// mpg123 keeps the encoder's delay and padding, as a stream without an encoder tag has them.
inline std::vector<int> Mpg123Samples(const std::filesystem::path& path, bool gapless) {
    return Pcm16Samples(RunCommand(std::string("mpg123 -q ") + (gapless ? "" : "--no-gapless ") +
                                   "-e s16 -s " + ShellQuote(path.string()) + " 2>/dev/null"));
}

// How far decoded samples, rounded to 16 bits as a file would store them, lie from a 16-bit
// reference, in 16-bit steps over their common length (the decoded from `skip` values on).
struct Mp3Difference {
    double rms = 0;
    double max = 0;
    size_t compared = 0;
};

inline Mp3Difference Compare16(const std::vector<int>& decoded, size_t skip,
                               const std::vector<int>& reference) {
    Mp3Difference d;
    d.compared = std::min(decoded.size() - std::min(skip, decoded.size()), reference.size());
    double sum = 0;
    for (size_t i = 0; i < d.compared; ++i) {
        const double e =
            std::clamp((decoded[skip + i] + 8) >> 4, -32768, 32767) - reference[i] / 16;
        sum += e * e;
        d.max = std::max(d.max, std::fabs(e));
    }
    d.rms = d.compared ? std::sqrt(sum / double(d.compared)) : 0;
    return d;
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
