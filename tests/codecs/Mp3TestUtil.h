#pragma once

#include "sound/SoundSource.h"

#include <algorithm>
#include <string>
#include <vector>

// Helpers for the MP3 decoder tests.

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
