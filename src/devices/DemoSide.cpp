#include "devices/DemoSide.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr float kRate = LDemoSide::kSampleRate;
constexpr double kSideSeconds = 180;
constexpr double kLeadInSeconds = 1.5;
constexpr double kLeadOutSeconds = 2.0;
// Surface noise: hiss around -56 dBFS, rumble around -64 dBFS, and clicks from -40 to -16 dBFS
// while music plays (the quiet grooves between songs are clean)
// peak at about 0.4 a second.
constexpr float kHiss = 0.0039f;
constexpr float kRumble = 0.0006f;
constexpr int kClickSlot = 4410;
constexpr uint64_t kClickChance = 0x0A3D; // of 65,536: 4 % per 100 ms slot

constexpr int kScales[2][7] = {{0, 2, 4, 5, 7, 9, 11}, {0, 2, 3, 5, 7, 8, 10}};
constexpr int kProgressions[6][4] = {{0, 4, 5, 3}, {0, 5, 3, 4}, {5, 3, 0, 4},
                                     {0, 3, 4, 4}, {0, 5, 1, 4}, {3, 4, 0, 0}};
// Melody notes above the chord root: chord tones more often than passing notes.
constexpr int kMelodySteps[8] = {0, 2, 4, 7, 1, 2, 4, 5};

uint64_t Mix(uint64_t x) {
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

// A number in [0, 1) from a hash.
double Unit(uint64_t hash) {
    return static_cast<double>(hash >> 11) * 0x1.0p-53;
}

uint32_t PhaseStep(double frequency) {
    return static_cast<uint32_t>(std::llround(frequency / kRate * 4294967296.0));
}

int Frames(double seconds) {
    return static_cast<int>(std::lround(seconds * kRate));
}

// A fixed time in frames, worked out by the compiler.
consteval float At(double seconds) {
    return static_cast<float>(static_cast<int>(seconds * kRate + 0.5));
}

// Rises over `attack` frames and falls over the last `release` frames of a note `length` long,
// so every note starts and ends at zero.
float Edges(int at, int length, float attack, float release) {
    const float rise = std::min(1.0f, static_cast<float>(at) / attack);
    const float fall = std::min(1.0f, static_cast<float>(length - at) / release);
    return std::min(rise, fall);
}

int ToInternal(float value) {
    const float scaled = value * 32767.0f;
    const int stored = static_cast<int>(scaled + (scaled >= 0 ? 0.5f : -0.5f));
    return std::clamp(stored, -32767, 32767) * 16;
}

} // namespace

LDemoSide::LDemoSide(uint64_t seed) : LSoundSourceBase(kSampleRate, 2, 524272), key_(Mix(seed)) {
    for (size_t i = 0; i < sine_.size(); ++i)
        sine_[i] = static_cast<float>(
            std::sin(2 * std::numbers::pi * static_cast<double>(i) / (1 << kSineBits)));
    for (int i = 0; i <= kDecaySteps; ++i)
        decay_[i] = i == kDecaySteps ? 0.0f : static_cast<float>(std::exp(-8.0 * i / kDecaySteps));
    rumbleStep_[0] = PhaseStep(17);
    rumbleStep_[1] = PhaseStep(29);
    kickStep_ = PhaseStep(50);
    kickSweep_ = static_cast<float>(PhaseStep(100)) * At(0.03);
    MakeSides(seed);
}

void LDemoSide::MakeSides(uint64_t seed) {
    uint64_t state = Mix(seed ^ 0x51DE);
    auto next = [&state] { return Mix(state += 0x632BE59BD9B4E019ULL); };

    const int count = 4 + static_cast<int>(next() % 3);
    std::vector<double> gaps(count - 1), weights(count);
    double music = kSideSeconds - kLeadInSeconds - kLeadOutSeconds;
    for (double& gap : gaps) {
        gap = 2.0 + 2.0 * Unit(next());
        music -= gap;
    }
    // Each track's length comes from its own band of a shuffled set, so no two are alike.
    std::vector<int> bands(count);
    for (int i = 0; i < count; ++i)
        bands[i] = i;
    for (int i = count - 1; i > 0; --i)
        std::swap(bands[i], bands[next() % (i + 1)]);
    double weightSum = 0;
    for (int i = 0; i < count; ++i)
        weightSum += weights[i] = 0.6 + 0.8 * (bands[i] + 0.5 * Unit(next())) / count;

    int frame = Frames(kLeadInSeconds);
    for (int i = 0; i < count; ++i) {
        Song song;
        song.start = frame;
        song.frames = Frames(music * weights[i] / weightSum);
        const double bpm = 88 + 44 * Unit(next());
        song.beat = 2 * static_cast<int>(std::lround(kRate * 60 / bpm / 2));
        song.gain = static_cast<float>(0.55 + 0.2 * Unit(next()));
        song.key = next();
        const int* progression = kProgressions[next() % 6];
        std::copy(progression, progression + 4, song.progression.begin());
        const int* scale = kScales[next() % 2];
        const int root = 36 + static_cast<int>(next() % 8);
        for (int d = 0; d < kDegrees; ++d) {
            const int note = root + 12 * (d / 7) + scale[d % 7];
            song.step[d] = PhaseStep(440.0 * std::pow(2.0, (note - 69) / 12.0));
        }
        songs_.push_back(song);
        tracks_.push_back({song.start, song.frames});
        frame += song.frames;
        if (i + 1 < count) frame += Frames(gaps[i]);
    }
    length_ = frame + Frames(kLeadOutSeconds);
}

float LDemoSide::Sine(uint32_t phase) const {
    const uint32_t index = phase >> (32 - kSineBits);
    const float fraction = static_cast<float>(phase & ((1u << (32 - kSineBits)) - 1)) * 0x1.0p-20f;
    return sine_[index] + (sine_[index + 1] - sine_[index]) * fraction;
}

float LDemoSide::Decay(float x) const {
    const float at = x * (kDecaySteps / 8.0f);
    if (at >= kDecaySteps) return 0;
    const int index = static_cast<int>(at);
    return decay_[index] + (decay_[index + 1] - decay_[index]) * (at - static_cast<float>(index));
}

float LDemoSide::Noise(int frame, uint64_t stream) const {
    const uint64_t hash =
        Mix(key_ ^ (static_cast<uint64_t>(static_cast<uint32_t>(frame)) << 3 | stream));
    return static_cast<float>(static_cast<int32_t>(hash >> 32)) * 0x1.0p-31f;
}

bool LDemoSide::InTrack(int frame) const {
    for (const Track& track : tracks_)
        if (frame >= track.start && frame < track.start + track.frames) return true;
    return false;
}

void LDemoSide::AddSurface(int frame, float& left, float& right) const {
    left += kHiss * 0.5f * (Noise(frame, 0) + Noise(frame - 1, 0));
    right += kHiss * 0.5f * (Noise(frame, 1) + Noise(frame - 1, 1));
    const uint32_t t = static_cast<uint32_t>(frame);
    const float rumble =
        kRumble * (0.6f * Sine(rumbleStep_[0] * t) + 0.4f * Sine(rumbleStep_[1] * t + 0x40000000));
    left += rumble;
    right += rumble;

    // A click may start anywhere in its 100 ms slot, so one from the slot before may still ring.
    const int slot = frame / kClickSlot;
    for (int s = std::max(slot - 1, 0); s <= slot; ++s) {
        const uint64_t hash = Mix(key_ ^ 0xC11C ^ (static_cast<uint64_t>(s) << 16));
        if ((hash & 0xFFFF) >= kClickChance || !InTrack(s * kClickSlot)) continue;
        const int width = 6 + static_cast<int>((hash >> 16) % 34);
        const int at = frame - (s * kClickSlot + static_cast<int>((hash >> 24) % kClickSlot));
        if (at < 0 || at >= width) continue;
        const float peak = std::pow(
            10.0f, (-40.0f + 24.0f * static_cast<float>((hash >> 40) & 0xFF) / 255.0f) / 20.0f);
        const float value = ((hash >> 48) & 1 ? peak : -peak) *
                            Decay(4.0f * static_cast<float>(at) / static_cast<float>(width));
        left += value;
        right += 0.8f * value;
    }
}

void LDemoSide::AddSong(const Song& song, int frame, float& left, float& right) const {
    const int at = frame - song.start;
    const int beatLength = song.beat;
    const int halfLength = beatLength / 2;
    const int barLength = 4 * beatLength;
    const int beat = at / beatLength;
    const int inBeat = at % beatLength;
    const int half = at / halfLength;
    const int inHalf = at % halfLength;
    const int inBar = at % barLength;
    const int chord = song.progression[(at / barLength) % 4];
    const auto bar = static_cast<uint32_t>(inBar);
    const auto t = static_cast<uint32_t>(inBeat);
    const auto h = static_cast<uint32_t>(inHalf);

    // A held triad two octaves above the bass, one chord a bar.
    float pad = 0;
    for (int n = 0; n < 3; ++n) {
        const uint32_t step = song.step[chord + 14 + 2 * n];
        pad += Sine(step * bar) + 0.25f * Sine(2 * step * bar);
    }
    pad *= 0.045f * Edges(inBar, barLength, At(0.15), At(0.2));

    // Bass: the chord's root and fifth on alternate beats, plucked.
    const uint32_t bassStep = song.step[chord + (beat % 2 ? 4 : 0)];
    const float bass = 0.16f * (Sine(bassStep * t) + 0.5f * Sine(2 * bassStep * t)) *
                       Decay(static_cast<float>(inBeat) / At(0.35)) *
                       Edges(inBeat, beatLength, 40, 200);

    // Melody: on two half-beats of three, a note near the chord an octave above the triad.
    float melody = 0;
    const uint64_t choice = Mix(song.key ^ static_cast<uint64_t>(half));
    if ((choice & 0xFF) < 170) {
        const uint32_t step = song.step[chord + 21 + kMelodySteps[(choice >> 8) & 7] - 7 +
                                        static_cast<int>((choice >> 12) % 2) * 7];
        melody = 0.09f * (Sine(step * h) + 0.5f * Sine(2 * step * h) + 0.25f * Sine(3 * step * h)) *
                 Decay(static_cast<float>(inHalf) / At(0.2)) * Edges(inHalf, halfLength, 130, 440);
    }

    // Drums: kick on beats 1 and 3 with a falling pitch, snare on 2 and 4, hi-hat every half.
    float drums = 0;
    const int beatInBar = beat % 4;
    const float fromBeat = static_cast<float>(inBeat);
    if (beatInBar % 2 == 0) {
        // The pitch falls from 150 to 50 Hz: the phase of a decaying extra 100 Hz is added.
        const float sweep = kickSweep_ * (1 - Decay(fromBeat / At(0.03)));
        const uint32_t phase = kickStep_ * t + static_cast<uint32_t>(static_cast<int64_t>(sweep));
        drums +=
            0.3f * Sine(phase) * Decay(fromBeat / At(0.12)) * Edges(inBeat, beatLength, 20, 200);
    } else {
        drums += 0.12f * (0.7f * Noise(frame, 2) + 0.3f * Sine(song.step[chord + 7] * t)) *
                 Decay(fromBeat / At(0.07)) * Edges(inBeat, beatLength, 10, 200);
    }
    const float hat = 0.035f * 0.5f * (Noise(frame, 3) - Noise(frame - 1, 3)) *
                      Decay(static_cast<float>(inHalf) / At(0.02));

    float fade = std::min(1.0f, static_cast<float>(at) / At(0.2));
    fade = std::min(fade, static_cast<float>(song.frames - at) / At(2.5));
    const float centre = (pad + bass + drums) * song.gain * fade;
    left += centre + (0.7f * melody + hat) * song.gain * fade;
    right += centre + (melody + 0.6f * hat) * song.gain * fade;
}

void LDemoSide::Read(int* buffer, int frames) {
    for (int f = 0; f < frames; ++f, ++position_) {
        float left = 0, right = 0;
        if (position_ >= 0 && position_ < length_) {
            AddSurface(position_, left, right);
            for (const Song& song : songs_)
                if (position_ >= song.start && position_ < song.start + song.frames) {
                    AddSong(song, position_, left, right);
                    break;
                }
        }
        *buffer++ = ToInternal(left);
        *buffer++ = ToInternal(right);
    }
}
