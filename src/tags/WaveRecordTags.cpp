// Wave tags in the bext and cart chunks, through the shared records _bwf and _cart.

#include "codecs/WaveFile.h"
#include "codecs/WaveFormatTags.h"
#include "tags/AudioTagData.h"
#include "tags/BWF.h"
#include "tags/CART.h"
#include "tags/TagLock.h"

#include <cstdio>
#include <mutex>

namespace {

// "A=<codec> F=<rate> W=<bits> M=mono|stereo" for the file's "fmt " chunk.
bool CodingHistoryLine(const char* path, std::string& line) {
    const std::optional<WAVEFORMATEX> format = LGetWaveFormatEx(path);
    if (!format) return false;
    char text[512];
    std::snprintf(text, sizeof(text), "A=%s F=%d W=%d M=%s", LGetWaveCodecName(format->wFormatTag),
                  static_cast<int>(format->nSamplesPerSec), format->wBitsPerSample,
                  format->nChannels == 1 ? "mono" : "stereo");
    line = text;
    return true;
}

} // namespace

bool LAudioTagData::ReadTagsBWF(const char* path) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    if (!ReadWaveTagRecord(path, _bwf)) return false;
    _bwf.ToHashTable(*this);
    return true;
}

bool LAudioTagData::WriteTagsBWF(const char* path, bool codingHistory) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    std::string line;
    if (codingHistory && !CodingHistoryLine(path, line)) return false;
    _bwf.FromHashTable(*this);
    if (codingHistory) _bwf.AddHistoryLine(line.c_str());
    return WriteWaveTagRecord(path, _bwf);
}

bool LAudioTagData::ReadTagsCART(const char* path) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    if (!ReadWaveTagRecord(path, _cart)) return false;
    _cart.ToHashTable(*this);
    return true;
}

bool LAudioTagData::WriteTagsCART(const char* path) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    _cart.FromHashTable(*this);
    return WriteWaveTagRecord(path, _cart);
}
