// Where a session cuts a side into tracks: sides of music-like tracks over quiet surface noise,
// with varied lead-ins, gaps and track lengths, go through vinora-cli split-side (the input
// read as fast as the session takes it) and vinora-cli record (the input in faster than real
// time, as a live input); every queued recording must hold its track's music and at most a
// quarter of a second of the quiet on either side.
#include "CliTestUtil.h"

#include "codecs/WaveFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;
constexpr double kFullScale = 32767;

struct Span {
    int start; // frames
    int end;
};

// A side: `leadIn` seconds of surface noise, then each track followed by its gap, all over
// white noise at -60 dBFS RMS with crackle. Tracks are chords whose notes change every quarter second, with
// peaks between -30 and -6 dBFS. Returns the frames of the side and where the music is.
std::vector<int16_t> MakeSide(double leadIn, const std::vector<double>& tracks,
                              const std::vector<double>& gaps, uint32_t seed,
                              std::vector<Span>& music) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(-1, 1);
    const double noise = kFullScale * std::pow(10, -60 / 20.0) * std::sqrt(3.0);
    int total = static_cast<int>(leadIn * kRate);
    for (size_t i = 0; i < tracks.size(); ++i) {
        const int length = static_cast<int>(tracks[i] * kRate);
        music.push_back({total, total + length});
        total += length + static_cast<int>(gaps[i] * kRate);
    }
    std::vector<int16_t> side(static_cast<size_t>(total) * 2);
    for (int16_t& sample : side)
        sample = static_cast<int16_t>(std::lround(noise * unit(random)));
    // Crackle: about twenty ticks a second at -52 dBFS, above the hiss but well below music.
    const int tick = static_cast<int>(kFullScale * std::pow(10, -52 / 20.0));
    for (int f = 0; f < total; ++f) {
        if (unit(random) < 1 - 2 * 20.0 / kRate) continue;
        const int16_t value = static_cast<int16_t>(unit(random) < 0 ? -tick : tick);
        side[static_cast<size_t>(f) * 2] = side[static_cast<size_t>(f) * 2 + 1] = value;
    }
    const double w = 2 * std::numbers::pi / kRate;
    for (const Span& span : music) {
        const int note = kRate / 4;
        for (int first = span.start; first < span.end; first += note) {
            const double level = std::pow(10, (-30 + 24 * (unit(random) + 1) / 2) / 20) / 3;
            const double root = 110 * std::pow(2, std::floor((unit(random) + 1) * 12) / 12);
            for (int f = first; f < std::min(first + note, span.end); ++f) {
                // 5 ms ramps at the edges of the music keep its ends sharp but without a click.
                const double edge =
                    std::min({1.0, (f - span.start) / (0.005 * kRate), (span.end - f) / (0.005 * kRate)});
                const double t = f - first;
                const double value = level * edge *
                                     (std::sin(w * root * t) + std::sin(w * root * 1.25 * t) +
                                      std::sin(w * root * 1.5 * t));
                for (int c = 0; c < 2; ++c) {
                    int16_t& sample = side[static_cast<size_t>(f) * 2 + c];
                    sample = static_cast<int16_t>(
                        std::clamp(std::lround(sample + kFullScale * value), -32768L, 32767L));
                }
            }
        }
    }
    return side;
}

void WriteWave(const fs::path& path, const std::vector<int16_t>& frames) {
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), kRate, 2, 16, 0);
    std::vector<int> samples(frames.begin(), frames.end());
    for (int& sample : samples)
        sample *= 16;
    sink->Write(samples.data(), static_cast<int>(samples.size() / 2));
}

std::vector<int16_t> ReadWave(const std::string& path) {
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    std::vector<int> samples(static_cast<size_t>(source->GetEndSample()) * 2);
    source->Read(samples.data(), source->GetEndSample());
    std::vector<int16_t> frames(samples.size());
    for (size_t i = 0; i < samples.size(); ++i)
        frames[i] = static_cast<int16_t>(samples[i] / 16);
    return frames;
}

// Where a recording lies in the side: the frame at which its first 64 frames are found.
int Locate(const std::vector<int16_t>& side, const std::vector<int16_t>& track) {
    const size_t probe = std::min<size_t>(128, track.size());
    for (size_t at = 0; at + probe <= side.size(); at += 2)
        if (std::equal(track.begin(), track.begin() + static_cast<long>(probe), side.begin() + static_cast<long>(at)))
            return static_cast<int>(at / 2);
    return -1;
}

// The sources of the queued requests, oldest first ("SOURCE -> DESTINATION" lines).
std::vector<std::string> QueuedRecordings() {
    std::vector<std::string> sources;
    std::istringstream lines(Cli("queue list", nullptr, "2>/dev/null"));
    for (std::string line; std::getline(lines, line);)
        if (const size_t arrow = line.find(" -> "); arrow != std::string::npos)
            sources.push_back(line.substr(0, arrow));
    return sources;
}

void ExpectTracks(const std::vector<int16_t>& side, const std::vector<Span>& music,
                  const std::string& how) {
    const std::vector<std::string> recordings = QueuedRecordings();
    ASSERT_EQ(recordings.size(), music.size()) << how;
    const int quarter = kRate / 4;
    for (size_t i = 0; i < recordings.size(); ++i) {
        const std::vector<int16_t> track = ReadWave(recordings[i]);
        const int start = Locate(side, track);
        ASSERT_GE(start, 0) << how << " track " << i;
        const int end = start + static_cast<int>(track.size() / 2);
        EXPECT_LE(start, music[i].start) << how << " track " << i << " starts in its music";
        EXPECT_GE(start, music[i].start - quarter)
            << how << " track " << i << " starts " << (music[i].start - start) / double(kRate)
            << " s early";
        EXPECT_GE(end, music[i].end) << how << " track " << i << " ends in its music";
        EXPECT_LE(end, music[i].end + quarter)
            << how << " track " << i << " ends " << (end - music[i].end) / double(kRate)
            << " s late";
    }
}

TEST(TrackEndsCli, EveryTrackEndsAndStartsWithinAQuarterSecondOfItsMusic) {
    const struct {
        double leadIn;
        std::vector<double> tracks;
        std::vector<double> gaps;
    } sides[] = {
        // The last gap is shorter than the end check: the input ends inside it.
        {1.2, {7.3, 5.1, 9.6, 6.2, 8.05}, {3.5, 3.5, 3.5, 3.5, 1.0}},
        {2.75, {5.55, 11.2, 6.8, 5.3}, {3.5, 4.2, 3.5, 3.2}},
    };
    for (size_t s = 0; s < std::size(sides); ++s) {
        TempHome home;
        std::vector<Span> music;
        const std::vector<int16_t> side =
            MakeSide(sides[s].leadIn, sides[s].tracks, sides[s].gaps,
                     static_cast<uint32_t>(s), music);
        const fs::path path = home.Path() / "side.wav";
        WriteWave(path, side);
        Cli("settings set OutputFormat OutputFormatNum 0");
        // The input's gain at unity: the recordings hold the side's own samples.
        Cli("settings set Recording Volume 0");
        const std::string how = "side " + std::to_string(s);
        int status = -1;
        Cli("split-side " + ShellQuote(path.string()) + " --floor -40", &status, "2>/dev/null");
        ASSERT_EQ(status, 0) << how;
        ExpectTracks(side, music, "split-side " + how);
        for (const std::string& recording : QueuedRecordings())
            fs::remove(recording);
        fs::remove(home.DataHome() / "Brakwater Software/Vinora/vnprocesses.list");

        // The same side as a live input, four times faster than real time. A live input does
        // not wait: when the machine is too busy for the recorder to take a buffer in time,
        // that audio is lost and logged, and the run says nothing about where tracks end.
        for (int attempt = 1;; ++attempt) {
            RunCommand("VINORA_VIRTUAL_TURNTABLE=" + ShellQuote(path.string() + ",speed=4") +
                           " " + VINORA_CLI + " record --device 'Virtual Turntable' >/dev/null 2>&1",
                       &status);
            ASSERT_EQ(status, 0) << how;
            const bool lost = home.TakeLostAudioLogged();
            if (!lost || attempt == 3) {
                EXPECT_FALSE(lost) << how << ": audio was lost in three runs";
                ExpectTracks(side, music, "record " + how);
            }
            for (const std::string& recording : QueuedRecordings())
                fs::remove(recording);
            fs::remove(home.DataHome() / "Brakwater Software/Vinora/vnprocesses.list");
            if (!lost || attempt == 3) break;
        }
    }
}

} // namespace
