#pragma once

#include "sound/SoundSource.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Helpers for the codec tests: RIFF files put together byte by byte, whole files and sources
// read at once, and what outside tools (sox, ffprobe) make of a file.

inline std::vector<uint8_t> ReadFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFileBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

// A 32-bit field, little- or big-endian.
inline uint32_t Field32(const std::vector<uint8_t>& bytes, size_t at, bool bigEndian = false) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value |= uint32_t{bytes[at + i]} << (bigEndian ? 24 - 8 * i : 8 * i);
    return value;
}

inline void AppendLE(std::vector<uint8_t>& bytes, uint32_t value, int width) {
    for (int i = 0; i < width; ++i)
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// A RIFF WAVE file put together chunk by chunk; odd chunks get their pad byte.
class RiffBuilder {
public:
    // A chunk whose size field says `size` (by default the data's), whatever the data holds.
    RiffBuilder& Chunk(const char* id, const std::vector<uint8_t>& data, int64_t size = -1) {
        body_.insert(body_.end(), id, id + 4);
        AppendLE(body_, size < 0 ? uint32_t(data.size()) : uint32_t(size), 4);
        body_.insert(body_.end(), data.begin(), data.end());
        if (data.size() % 2) body_.push_back(0);
        return *this;
    }
    // A "fmt " chunk of `size` bytes; the block align defaults to whole bytes per frame.
    RiffBuilder& Format(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits,
                        uint16_t blockAlign = 0, uint32_t size = 16) {
        if (blockAlign == 0) blockAlign = uint16_t(channels * ((bits + 7) / 8));
        std::vector<uint8_t> fmt;
        AppendLE(fmt, tag, 2);
        AppendLE(fmt, channels, 2);
        AppendLE(fmt, rate, 4);
        AppendLE(fmt, rate * blockAlign, 4);
        AppendLE(fmt, blockAlign, 2);
        AppendLE(fmt, bits, 2);
        fmt.resize(size, 0);
        return Chunk("fmt ", fmt);
    }
    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = {'R', 'I', 'F', 'F'};
        AppendLE(out, uint32_t(body_.size()), 4);
        out.insert(out.end(), body_.begin(), body_.end());
        return out;
    }

private:
    std::vector<uint8_t> body_ = {'W', 'A', 'V', 'E'};
};

inline std::vector<uint8_t> Pcm16Bytes(const std::vector<int>& samples) {
    std::vector<uint8_t> out;
    for (int s : samples)
        AppendLE(out, uint32_t(s), 2);
    return out;
}

// Reads `frames` frames from the source's current position, in blocks of at most 8,192.
inline std::vector<int> ReadFrames(const LSoundSource& source, int frames) {
    std::vector<int> out(size_t(frames) * source->GetChannels());
    for (int done = 0; done < frames; done += 8192)
        source->Read(out.data() + size_t(done) * source->GetChannels(),
                     std::min(frames - done, 8192));
    return out;
}

// Reading `margin` frames either side of the stream's start and of its end gives zeros outside
// it and `all` (the whole stream) inside, and leaves the position after what was read.
inline void ExpectZerosOutside(const LSoundSource& source, const std::vector<int>& all,
                               int margin) {
    const int channels = source->GetChannels();
    const int end = int(all.size()) / channels;
    for (const int from : {-margin, end - margin}) {
        std::vector<int> expected;
        for (int i = from * channels; i < (from + 2 * margin) * channels; ++i)
            expected.push_back(i >= 0 && i < int(all.size()) ? all[i] : 0);
        source->Seek(from);
        EXPECT_EQ(ReadFrames(source, 2 * margin), expected) << "from " << from;
        EXPECT_EQ(source->GetPositionSample(), from + 2 * margin);
    }
}

// The file's samples as sox decodes them, in the internal scale (sox's 32-bit samples shifted
// down to 16 units per 16-bit step).
inline std::vector<int> SoxSamples(const std::filesystem::path& path) {
    int status = 0;
    const std::string raw = RunCommand(
        "sox " + ShellQuote(path.string()) + " -t s32 -e signed -L - 2>/dev/null", &status);
    std::vector<int> out;
    for (size_t i = 0; status == 0 && i + 4 <= raw.size(); i += 4) {
        const auto* p = reinterpret_cast<const uint8_t*>(raw.data() + i);
        out.push_back(int32_t(p[0] | p[1] << 8 | p[2] << 16 | uint32_t{p[3]} << 24) >> 12);
    }
    return out;
}

// What `soxi -X FILE` prints (X = r, c, b, s, t...), without its line end.
inline std::string Soxi(const char* option, const std::filesystem::path& path) {
    std::string out = RunCommand(std::string("soxi ") + option + " " + ShellQuote(path.string()) +
                                 " 2>/dev/null");
    while (!out.empty() && std::isspace(static_cast<unsigned char>(out.back())))
        out.pop_back();
    return out;
}

// `key=value` lines of ffprobe about the first audio stream.
inline std::string FFprobeStream(const std::filesystem::path& path) {
    return RunCommand("ffprobe -v error -select_streams a:0 -show_entries "
                      "stream=codec_name,sample_rate,channels,duration_ts "
                      "-of default=noprint_wrappers=1 " +
                      ShellQuote(path.string()) + " 2>&1");
}
