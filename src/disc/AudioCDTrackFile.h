#pragma once

#include "burn/DiscService.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One converted track file (AIFF) as the disc service burns it: where its samples lie in the
// file and how to turn them into CD frames.
struct LAudioTrackRef {
    int fd = 0;               // open while the track is burnt, 0 when closed
    uint32_t channels = 0;
    uint32_t sampleRate = 0;  // upper 32 bits of the 80-bit rate of "COMM"
    uint32_t sampleSize = 0;  // bits per sample
    uint32_t bytesPerSample = 0;
    uint32_t dataStart = 0;   // file offset of the first sample byte
    uint32_t dataEnd = 0;     // file offset after the last sample byte
    uint32_t readPosition = 0;
    uint32_t sampleMask = 0;  // 0xFFFF0000 >> sample size (0xFFFF for 16-bit)
    std::string path;         // "kTrackSourceFilePath"
};

// The upper 32 bits of the extended sample rates the parser takes.
inline constexpr uint32_t kAiffRate22050 = 0x400DAC44;
inline constexpr uint32_t kAiffRate44100 = 0x400EAC44;

// Reads an AIFF file's "COMM" and "SSND" chunks into a track record; false when the file is not
// an AIFF file, its format is not one a CD track can be made of, or it holds no frames.
bool ParseAiffTrack(const std::string& path, LAudioTrackRef& track);

// A track's length in whole 2352-byte blocks; a remainder is dropped.
uint32_t TrackLengthBlocks(const LAudioTrackRef& track);

// The properties of one audio track, each a 32-bit number, plus the track file's path.
struct LAudioTrackProperties {
    uint32_t blockSize = kAudioBlockBytes;
    uint32_t blockType = 0;
    uint32_t dataForm = 0;
    uint32_t sessionFormat = 0;
    uint32_t trackMode = 0;
    uint32_t trackLength = 0; // in blocks
    std::string sourceFilePath;
};

LAudioTrackProperties CreateAudioTrackProperties(uint32_t lengthBlocks);

// The producer's message codes and results.
inline constexpr uint32_t kProducerPreBurn = 0x70726520;    // 'pre '
inline constexpr uint32_t kProducerProduce = 0x70726F64;    // 'prod'
inline constexpr uint32_t kProducerPostBurn = 0x706F7374;   // 'post'
inline constexpr int32_t kProducerReadError = int32_t(0x80020062);
inline constexpr int32_t kProducerBadMessage = int32_t(0x80020067);

// What a 'prod' call is given and returns.
struct LTrackProductionInfo {
    uint8_t* buffer = nullptr;
    uint32_t requestedBytes = 0;
    uint32_t producedBytes = 0;
};

// The track producer: 'pre ' opens the file and goes to its first sample, 'prod' fills the
// buffer with 44100 Hz stereo 16-bit little-endian frames (big-endian samples swapped and
// masked; mono doubled; 3, 4 and 6 channels mixed down to two), 'post' closes the file.
// Returns 0 or an error code.
int32_t sampleTrackProducerCallback(LAudioTrackRef& track, uint32_t message,
                                    LTrackProductionInfo* info);

// A track the service burns: its properties and its record, fed to the service through the
// producer. Going away closes a file left open (trackRefConDestructor).
class LServiceAudioTrack : public LAudioTrackProducer {
public:
    LServiceAudioTrack(LAudioTrackProperties properties, LAudioTrackRef track);
    ~LServiceAudioTrack() override;
    LServiceAudioTrack(const LServiceAudioTrack&) = delete;
    LServiceAudioTrack& operator=(const LServiceAudioTrack&) = delete;

    const LAudioTrackProperties& Properties() const { return properties_; }
    const LAudioTrackRef& Track() const { return track_; }

    int32_t PreBurn() override;
    int32_t Produce(uint8_t* out, uint32_t bytes, uint32_t& produced) override;
    void PostBurn() override;

private:
    LAudioTrackProperties properties_;
    LAudioTrackRef track_;
};

using LServiceTrackArray = std::vector<std::unique_ptr<LServiceAudioTrack>>;

// The tracks of every AIFF file ("*.aiff", "*.aif") in the folder, in file-name order; files
// that do not parse are left out. Nothing when the folder does not exist.
std::optional<LServiceTrackArray> CreateTracks(std::string folder);

// Frees a track record: closes its file when still open.
void trackRefConDestructor(LAudioTrackRef& track);
