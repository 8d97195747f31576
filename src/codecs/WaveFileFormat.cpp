#include "codecs/WaveFileFormat.h"

#include "codecs/WaveBytes.h"
#include "platform/FileOps.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace {

constexpr const char* kWavCodecFileName = "WavCodec.wff";

[[maybe_unused]] uint16_t ByteSwap(uint16_t v) {
    return static_cast<uint16_t>((v >> 8) | (v << 8));
}

[[maybe_unused]] uint32_t ByteSwap(uint32_t v) {
    return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}

void ParseFormat(WAVEFORMATEX& format, const uint8_t* p) {
    std::memcpy(&format, p, sizeof format);
    LWaveFileFormat::LittleEndianToNative(format);
}

// How long loading or saving the format waits for another holder's lock.
constexpr uint32_t kLockWaitMs = 1000;

} // namespace

LWaveFileFormat::LWaveFileFormat(int sampleRate, unsigned char channels) {
    wfx.wFormatTag = kWaveFormatPCM;
    wfx.nChannels = channels;
    wfx.nSamplesPerSec = static_cast<uint32_t>(sampleRate);
    wfx.nBlockAlign = static_cast<uint16_t>(2 * channels);
    wfx.nAvgBytesPerSec = static_cast<uint32_t>(sampleRate) * wfx.nBlockAlign;
    wfx.wBitsPerSample = 16;
    wfx.cbSize = 0;
}

void LWaveFileFormat::ToImage(uint8_t* image) const {
    std::memset(image, 0, kStoredSize);
    WAVEFORMATEX format = wfx;
    NativeToLittleEndian(format);
    std::memcpy(image, &format, sizeof format);
    std::memcpy(image + sizeof format, extra, std::min<size_t>(wfx.cbSize, kMaxExtraBytes));
    PutLE16(image + 1024, trailing1);
    PutLE16(image + 1026, trailing2);
}

LWaveFileFormat LWaveFileFormat::FromImage(const uint8_t* image) {
    LWaveFileFormat record;
    ParseFormat(record.wfx, image);
    std::memcpy(record.extra, image + sizeof(WAVEFORMATEX), kMaxExtraBytes);
    record.trailing1 = GetLE16(image + 1024);
    record.trailing2 = GetLE16(image + 1026);
    return record;
}

void LWaveFileFormat::LittleEndianToNative(WAVEFORMATEX& format) {
    if constexpr (std::endian::native == std::endian::big) {
        format.wFormatTag = ByteSwap(format.wFormatTag);
        format.nChannels = ByteSwap(format.nChannels);
        format.nSamplesPerSec = ByteSwap(format.nSamplesPerSec);
        format.nAvgBytesPerSec = ByteSwap(format.nAvgBytesPerSec);
        format.nBlockAlign = ByteSwap(format.nBlockAlign);
        format.wBitsPerSample = ByteSwap(format.wBitsPerSample);
        format.cbSize = ByteSwap(format.cbSize);
    }
}

void LWaveFileFormat::NativeToLittleEndian(WAVEFORMATEX& format) {
    // The swap is its own inverse.
    LittleEndianToNative(format);
}

bool LWaveFileFormat::GetWavCodecFilePath(char* out) {
    char folder[kPathBufferSize];
    const bool ok = GetApplicationDataFolder(folder);
    _MakeFilePath(out, folder, kWavCodecFileName);
    return ok;
}

bool LWaveFileFormat::SaveToWavCodecFile(const char* path) const {
    uint8_t image[kStoredSize];
    ToImage(image);
    return SaveFile(path, image, sizeof image, kLockWaitMs);
}

bool LWaveFileFormat::SaveToWavCodecFile() const {
    char path[kPathBufferSize];
    return GetWavCodecFilePath(path) && SaveToWavCodecFile(path);
}

bool LWaveFileFormat::LoadFromWavCodecFile(const char* path) {
    std::vector<uint8_t> image;
    if (!LoadFile(path, image, kLockWaitMs) || image.size() < kStoredSize) return false;
    *this = FromImage(image.data());
    return true;
}

LWaveFileFormat LWaveFileFormat::LoadWavCodecFile(int sampleRate, unsigned char channels) {
    LWaveFileFormat record(sampleRate, channels);
    char path[kPathBufferSize];
    GetWavCodecFilePath(path);
    if (!record.LoadFromWavCodecFile(path)) record.SaveToWavCodecFile(path);
    return record;
}

LWaveFileFormat::WAVEOUTFILEHDR::WAVEOUTFILEHDR(unsigned char channels, int sampleRate,
                                                int bitsPerSample, uint32_t dataBytes) {
    const uint32_t bytesPerSample = static_cast<uint32_t>(bitsPerSample / 8);
    PutChunkId(bytes, "RIFF");
    PutLE32(bytes + 4, dataBytes + 38);
    PutChunkId(bytes + 8, "WAVE");
    PutChunkId(bytes + 12, "fmt ");
    PutLE32(bytes + 16, 18);
    PutLE16(bytes + 20, kWaveFormatPCM);
    PutLE16(bytes + 22, channels);
    PutLE32(bytes + 24, static_cast<uint32_t>(sampleRate));
    PutLE32(bytes + 28, channels * static_cast<uint32_t>(sampleRate) * bytesPerSample);
    PutLE16(bytes + 32, static_cast<uint16_t>(bytesPerSample * channels));
    PutLE16(bytes + 34, static_cast<uint16_t>(bitsPerSample));
    PutLE16(bytes + 36, 0);
    PutChunkId(bytes + 38, "data");
    PutLE32(bytes + 42, dataBytes);
}
