#pragma once

#include <cstddef>
#include <cstdint>

// The first 18 bytes of a wave file's "fmt " chunk, in host byte order once read.
#pragma pack(push, 1)
struct WAVEFORMATEX {
    uint16_t wFormatTag;
    uint16_t nChannels;
    uint32_t nSamplesPerSec;
    uint32_t nAvgBytesPerSec;
    uint16_t nBlockAlign;
    uint16_t wBitsPerSample;
    uint16_t cbSize;
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);

inline constexpr uint16_t kWaveFormatPCM = 1;
inline constexpr uint16_t kWaveFormatIMAADPCM = 17;
inline constexpr uint16_t kWaveFormatGSM610 = 49;
// The highest sample rate a wave file may have to be read.
inline constexpr uint32_t kWaveMaxSampleRate = 196000;

// A wave format record: the format, up to 1006 extra format bytes and two trailing fields that
// are kept but not interpreted. Stored as 1028 little-endian bytes in "WavCodec.wff", the
// user's output format.
struct LWaveFileFormat {
    static constexpr size_t kStoredSize = 1028;
    static constexpr size_t kMaxExtraBytes = 1006;

    // PCM, 16 bits, with the block align and bytes per second that follow from rate and
    // channels.
    explicit LWaveFileFormat(int sampleRate = 44100, unsigned char channels = 2);

    WAVEFORMATEX wfx;
    uint8_t extra[kMaxExtraBytes] = {};
    uint16_t trailing1 = 0;
    uint16_t trailing2 = 0;

    // The 1028-byte image: the first cbSize + 18 bytes and the trailing fields; zeros between.
    void ToImage(uint8_t* image) const;
    static LWaveFileFormat FromImage(const uint8_t* image);

    // Byte order of a format read from or written to a file. Nothing to do on a
    // little-endian host.
    static void LittleEndianToNative(WAVEFORMATEX& format);
    static void NativeToLittleEndian(WAVEFORMATEX& format);

    // "WavCodec.wff" in the application data folder (created when missing); false when the
    // folder cannot be had.
    static bool GetWavCodecFilePath(char* out);
    bool SaveToWavCodecFile(const char* path) const;
    bool SaveToWavCodecFile() const;
    // False, leaving the record as it was, when the file is missing or shorter than a record.
    bool LoadFromWavCodecFile(const char* path);
    // The user's output format; when the file does not exist yet, a default record with the
    // given rate and channels is saved first and returned.
    static LWaveFileFormat LoadWavCodecFile(int sampleRate, unsigned char channels);

    // The 46-byte header of the wave files this system writes.
    struct WAVEOUTFILEHDR {
        static constexpr size_t kSize = 46;
        // Data bytes while a file is still being written: the RIFF size then reads 0xFFFFFFFF.
        static constexpr uint32_t kUnknownDataBytes = 0xFFFFFFD9u;

        WAVEOUTFILEHDR(unsigned char channels, int sampleRate, int bitsPerSample,
                       uint32_t dataBytes);
        uint8_t bytes[kSize];
    };
};
