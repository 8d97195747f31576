#pragma once

#include <cstdint>

class MP3ReadFile;

// One Layer III frame header.
struct MP3Header {
    int version = 0;          // 0 MPEG-1, 1 MPEG-2, 2 MPEG-2.5, 3 reserved
    int protectionAbsent = 1; // 1 when the frame carries no CRC
    int bitRate = 0;          // bits per second
    int sampleRateIndex = 0;  // 0-2
    int padding = 0;
    int mode = 0; // 0 stereo, 1 joint stereo, 2 dual channel, 3 single channel
    int modeExtension = 0;

    static const int VersionTable[4];
    static const int SampleRateTable[3];
    static const int BitRateTable[32];

    // Parses four header bytes; false when they are not a usable Layer III header.
    bool Parse(const std::uint8_t* bytes);
    // Finds the next header in the file, skipping tags and garbage, and reads past its CRC.
    bool ReadHeader(MP3ReadFile& file);

    int GetSampleRate() const { return SampleRateTable[sampleRateIndex] >> version; }
    int GetChannels() const { return mode == 3 ? 1 : 2; }
    int GetGranules() const { return version == 0 ? 2 : 1; }
    int GetSamplesPerFrame() const { return version == 0 ? 1152 : 576; }
    int GetFrameLength() const;
    int GetSideInfoLength() const;
    int GetMainDataLength() const;
    // True when a frame with this header belongs to a stream that began with reference.
    bool Matches(const MP3Header& reference) const;
};
