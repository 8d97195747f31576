#pragma once

#include "sound/SoundSource.h"
#include "support/TempHome.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

// Helpers for the codec tests: building RIFF files byte by byte, reading whole files and
// sources, and asking outside tools (sox, ffprobe) about a file.

inline std::vector<uint8_t> ReadFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFileBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

inline uint32_t LE32At(const std::vector<uint8_t>& bytes, size_t offset) {
    return bytes[offset] | (bytes[offset + 1] << 8) | (bytes[offset + 2] << 16) |
           (static_cast<uint32_t>(bytes[offset + 3]) << 24);
}

inline uint32_t BE32At(const std::vector<uint8_t>& bytes, size_t offset) {
    return (static_cast<uint32_t>(bytes[offset]) << 24) | (bytes[offset + 1] << 16) |
           (bytes[offset + 2] << 8) | bytes[offset + 3];
}

// A RIFF file put together chunk by chunk; odd chunks get their pad byte.
class RiffBuilder {
public:
    explicit RiffBuilder(const char* form = "WAVE") { Append(form, 4); }

    RiffBuilder& Chunk(const char* id, const std::vector<uint8_t>& data) {
        return ChunkWithSize(id, static_cast<uint32_t>(data.size()), data);
    }
    // A chunk whose size field says `size`, whatever the data holds.
    RiffBuilder& ChunkWithSize(const char* id, uint32_t size, const std::vector<uint8_t>& data) {
        Append(id, 4);
        Put32(size);
        body_.insert(body_.end(), data.begin(), data.end());
        if (data.size() % 2) body_.push_back(0);
        return *this;
    }
    // A "fmt " chunk of `size` bytes (at least 16).
    RiffBuilder& Format(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits,
                        uint16_t blockAlign = 0, uint32_t size = 16) {
        if (blockAlign == 0) blockAlign = static_cast<uint16_t>(channels * ((bits + 7) / 8));
        std::vector<uint8_t> fmt(size, 0);
        Set16(fmt, 0, tag);
        Set16(fmt, 2, channels);
        Set32(fmt, 4, rate);
        Set32(fmt, 8, rate * blockAlign);
        Set16(fmt, 12, blockAlign);
        Set16(fmt, 14, bits);
        return Chunk("fmt ", fmt);
    }
    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = {'R', 'I', 'F', 'F'};
        const uint32_t size = static_cast<uint32_t>(body_.size());
        for (int i = 0; i < 4; ++i)
            out.push_back(static_cast<uint8_t>(size >> (8 * i)));
        out.insert(out.end(), body_.begin(), body_.end());
        return out;
    }

    static void Set16(std::vector<uint8_t>& v, size_t at, uint16_t x) {
        v[at] = static_cast<uint8_t>(x);
        v[at + 1] = static_cast<uint8_t>(x >> 8);
    }
    static void Set32(std::vector<uint8_t>& v, size_t at, uint32_t x) {
        for (int i = 0; i < 4; ++i)
            v[at + i] = static_cast<uint8_t>(x >> (8 * i));
    }

private:
    void Append(const char* text, size_t n) { body_.insert(body_.end(), text, text + n); }
    void Put32(uint32_t x) {
        for (int i = 0; i < 4; ++i)
            body_.push_back(static_cast<uint8_t>(x >> (8 * i)));
    }
    std::vector<uint8_t> body_;
};

// 16-bit little-endian samples as chunk data.
inline std::vector<uint8_t> Pcm16Bytes(std::initializer_list<int> samples) {
    std::vector<uint8_t> out;
    for (int s : samples) {
        out.push_back(static_cast<uint8_t>(s));
        out.push_back(static_cast<uint8_t>(s >> 8));
    }
    return out;
}

// Reads `frames` frames from the source's current position, in blocks of at most 8,192.
inline std::vector<int> ReadFrames(const LSoundSource& source, int frames) {
    std::vector<int> out(static_cast<size_t>(frames) * source->GetChannels());
    for (int done = 0; done < frames;) {
        const int block = std::min(frames - done, 8192);
        source->Read(out.data() + static_cast<size_t>(done) * source->GetChannels(), block);
        done += block;
    }
    return out;
}

// The file's samples as sox decodes them, in the internal scale (32-bit from sox, shifted
// down to 16 units per 16-bit step).
inline std::vector<int> SoxSamples(const std::filesystem::path& path) {
    int status = 0;
    const std::string raw = RunCommand(
        "sox " + ShellQuote(path.string()) + " -t s32 -e signed -L - 2>/dev/null", &status);
    std::vector<int> out;
    if (status != 0) return out;
    for (size_t i = 0; i + 4 <= raw.size(); i += 4) {
        uint32_t u = 0;
        for (int b = 0; b < 4; ++b)
            u |= static_cast<uint32_t>(static_cast<uint8_t>(raw[i + b])) << (8 * b);
        out.push_back(static_cast<int32_t>(u) >> 12);
    }
    return out;
}

// One line of `soxi -X FILE` (X = r, c, b, s, e...), trimmed.
inline std::string Soxi(const char* option, const std::filesystem::path& path) {
    std::string out = RunCommand(std::string("soxi ") + option + " " + ShellQuote(path.string()) +
                                 " 2>/dev/null");
    while (!out.empty() && (out.back() == '\n' || out.back() == ' '))
        out.pop_back();
    return out;
}

// `key=value` lines of ffprobe about the first audio stream.
inline std::string FFprobeStream(const std::filesystem::path& path) {
    return RunCommand("ffprobe -v error -select_streams a:0 -count_packets -show_entries "
                      "stream=codec_name,sample_rate,channels,bits_per_sample,duration_ts "
                      "-of default=noprint_wrappers=1 " +
                      ShellQuote(path.string()) + " 2>&1");
}
