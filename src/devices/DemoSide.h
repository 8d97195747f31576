#pragma once

#include "sound/SoundSource.h"

#include <array>
#include <cstdint>
#include <vector>

// The Virtual Turntable's built-in record side, made up as it is read: 4 to 6 music-like tracks
// (chords, bass line, melody and drums) of different lengths, separated by quiet gaps of 2 to
// 4 seconds, all under surface hiss, rumble and the odd click; 44,100 Hz stereo, three minutes.
// Every frame is a function of the seed and its position alone, so one seed gives the same
// audio bit for bit whatever the block sizes, and seeking is free.
class LDemoSide : public LSoundSourceBase {
public:
    static constexpr uint64_t kDefaultSeed = 0x33'45'1978;
    static constexpr int kSampleRate = 44100;

    // Where a track's music lies on the side, in frames.
    struct Track {
        int start = 0;
        int frames = 0;
    };

    explicit LDemoSide(uint64_t seed = kDefaultSeed);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return length_; }
    void Seek(int frame) override { position_ = frame; }

    const std::vector<Track>& GetTracks() const { return tracks_; }

private:
    // Scale degrees over five octaves from the song's bass root.
    static constexpr int kDegrees = 35;
    static constexpr int kSineBits = 12;
    static constexpr int kDecaySteps = 1024;

    // Whether a frame lies in a track's music.
    bool InTrack(int frame) const;

    struct Song {
        int start = 0;
        int frames = 0;
        int beat = 0; // frames per beat, even
        float gain = 0;
        uint64_t key = 0;
        std::array<int, 4> progression{};
        std::array<uint32_t, kDegrees> step{}; // phase step of each degree
    };

    void MakeSides(uint64_t seed);
    float Sine(uint32_t phase) const;
    // e^-x, and 0 from x = 8 on.
    float Decay(float x) const;
    float Noise(int frame, uint64_t stream) const;
    void AddSurface(int frame, float& left, float& right) const;
    void AddSong(const Song& song, int frame, float& left, float& right) const;

    uint64_t key_ = 0;
    int length_ = 0;
    int position_ = 0;
    std::vector<Track> tracks_;
    std::vector<Song> songs_;
    std::array<float, (1 << kSineBits) + 1> sine_{};
    std::array<float, kDecaySteps + 1> decay_{};
    uint32_t rumbleStep_[2] = {};
    uint32_t kickStep_ = 0;
    float kickSweep_ = 0;
};
