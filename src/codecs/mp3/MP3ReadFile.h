#pragma once

#include "platform/File.h"

#include <array>
#include <cstdint>

// An MP3 file reduced to its audio: the bytes between a leading ID3v2 tag and a trailing
// ID3v1 tag, read through a buffer so that the header search can go byte by byte.
class MP3ReadFile {
public:
    MP3ReadFile() = default;
    MP3ReadFile(const MP3ReadFile&) = delete;
    MP3ReadFile& operator=(const MP3ReadFile&) = delete;

    // Opens the file and finds its audio extent; false when it cannot be opened.
    bool Open(const char* path);

    // Reads up to n bytes of audio; fewer at the end of the audio.
    int Read(void* destination, int n);
    // Moves by n bytes (backwards when negative), staying within the audio.
    void Skip(std::int64_t n) { SeekTo(Tell() + n); }
    // Moves to a file offset, clamped to the audio extent.
    void SeekTo(std::int64_t offset);

    std::int64_t Tell() const { return bufferOffset_ + bufferPosition_; }
    std::int64_t GetBytesRemaining() const { return GetAudioEnd() - Tell(); }
    std::int64_t GetAudioLength() const { return audioLength_; }
    std::int64_t GetStartOffset() const { return startOffset_; }
    std::int64_t GetFileSize() const { return fileSize_; }
    std::int64_t GetAudioEnd() const { return startOffset_ + audioLength_; }
    // Whether a read failed (an error of the disk, not the end of the file).
    bool Failed() const { return failed_; }

private:
    bool Fill();

    LFile file_;
    std::int64_t audioLength_ = 0;
    std::int64_t startOffset_ = 0;
    std::int64_t fileSize_ = 0;
    std::int64_t bufferOffset_ = 0; // file offset of the first buffered byte
    int bufferPosition_ = 0;
    int bufferFill_ = 0;
    bool failed_ = false;
    std::array<std::uint8_t, 32768> buffer_{};
};
