#include "devices/DemoSide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kBlock = 4410; // 100 ms

// The whole side's peak, and the RMS of each 100 ms block in dBFS (both channels).
struct SideScan {
    std::vector<double> blockDB;
    int peak = 0;
};

SideScan Scan(LDemoSide& side) {
    const int blockFrames = 4096;
    SideScan scan;
    std::vector<int> buffer(static_cast<size_t>(blockFrames) * 2);
    double energy = 0;
    int inBlock = 0;
    for (int done = 0; done < side.GetEndSample(); done += blockFrames) {
        const int frames = std::min(blockFrames, side.GetEndSample() - done);
        side.Read(buffer.data(), frames);
        for (int i = 0; i < 2 * frames; ++i) {
            const int value = buffer[i] / 16;
            scan.peak = std::max(scan.peak, std::abs(value));
            energy += static_cast<double>(value) * value;
            if (i % 2 == 1 && ++inBlock == kBlock) {
                scan.blockDB.push_back(10 * std::log10(energy / (2.0 * kBlock) + 1e-9) -
                                       20 * std::log10(32768.0));
                energy = 0;
                inBlock = 0;
            }
        }
    }
    return scan;
}

// Runs of at least 1.5 s whose blocks are all below -45 dBFS, as (first block, block count).
std::vector<std::pair<int, int>> QuietRuns(const std::vector<double>& blockDB) {
    std::vector<std::pair<int, int>> runs;
    for (int i = 0, n = static_cast<int>(blockDB.size()); i < n;) {
        int j = i;
        while (j < n && blockDB[j] < -45)
            ++j;
        if (j - i >= 15) runs.emplace_back(i, j - i);
        i = std::max(j, i + 1);
    }
    return runs;
}

TEST(DemoSideTest, IsAThreeMinuteSideOfSeparatedTracksOverSurfaceNoise) {
    LDemoSide side;
    EXPECT_EQ(side.GetSampleRate(), 44100);
    EXPECT_EQ(side.GetChannels(), 2);
    const double seconds = side.GetEndSample() / 44100.0;
    EXPECT_NEAR(seconds, 180, 5);

    const SideScan scan = Scan(side);
    EXPECT_LT(scan.peak, 32767); // never clipped
    EXPECT_GT(scan.peak, 8000);  // but properly loud

    // The audio itself shows the tracks: quiet runs at the lead-in, between the tracks and at
    // the lead-out, and nowhere else.
    const std::vector<std::pair<int, int>> runs = QuietRuns(scan.blockDB);
    const size_t tracks = side.GetTracks().size();
    ASSERT_GE(tracks, 4u);
    ASSERT_LE(tracks, 6u);
    ASSERT_EQ(runs.size(), tracks + 1);
    EXPECT_EQ(runs.front().first, 0);
    EXPECT_EQ(runs.back().first + runs.back().second, static_cast<int>(scan.blockDB.size()));
    for (size_t t = 0; t < tracks; ++t) {
        const LDemoSide::Track& track = side.GetTracks()[t];
        // Each track lies between two quiet runs (fade-outs may add a little to the run after).
        EXPECT_NEAR(runs[t].first + runs[t].second, track.start / kBlock, 3) << t;
        EXPECT_GE(runs[t + 1].first, (track.start + track.frames) / kBlock - 30) << t;
        if (t + 1 < tracks) {
            const int gapBlocks =
                (side.GetTracks()[t + 1].start - track.start - track.frames) / kBlock;
            EXPECT_GE(gapBlocks, 19) << t;
            EXPECT_LE(gapBlocks, 41) << t;
        }
    }
    for (size_t a = 0; a < tracks; ++a)
        for (size_t b = a + 1; b < tracks; ++b)
            EXPECT_GT(std::abs(side.GetTracks()[a].frames - side.GetTracks()[b].frames), 44100);

    // The gaps sit at the noise floor of a worn record: about -50 to -60 dBFS, never silent.
    for (const auto& [first, count] : runs) {
        std::vector<double> levels(scan.blockDB.begin() + first + 3,
                                   scan.blockDB.begin() + first + count - 3);
        std::sort(levels.begin(), levels.end());
        const double median = levels[levels.size() / 2];
        EXPECT_GT(median, -62) << first;
        EXPECT_LT(median, -50) << first;
    }
    // The music is well above it.
    std::vector<double> musicLevels;
    for (const LDemoSide::Track& track : side.GetTracks())
        for (int b = track.start / kBlock + 10; b < (track.start + track.frames) / kBlock - 30; ++b)
            musicLevels.push_back(scan.blockDB[b]);
    std::sort(musicLevels.begin(), musicLevels.end());
    EXPECT_GT(musicLevels[musicLevels.size() / 10], -30);
}

TEST(DemoSideTest, IsReproducibleFromItsSeedInAnyBlockSize) {
    LDemoSide first, second, other(7);
    std::vector<int> a(2 * 44100 * 30), b(a.size());
    first.Read(a.data(), 44100 * 30);
    for (int done = 0; done < 44100 * 30; done += 1000)
        second.Read(b.data() + 2 * done, std::min(1000, 44100 * 30 - done));
    EXPECT_EQ(a, b);

    // A seek lands on the same audio as reading up to it.
    std::vector<int> whole(2 * 2000), sought(2 * 1000);
    first.Seek(5000000);
    first.Read(whole.data(), 2000);
    second.Seek(5001000);
    second.Read(sought.data(), 1000);
    EXPECT_TRUE(std::equal(sought.begin(), sought.end(), whole.begin() + 2000));

    // Another seed makes another side.
    std::vector<int> mine(2 * 44100), theirs(2 * 44100);
    first.Seek(44100 * 20);
    other.Seek(44100 * 20);
    first.Read(mine.data(), 44100);
    other.Read(theirs.data(), 44100);
    EXPECT_NE(mine, theirs);

    // Every seed gives 4 to 6 tracks on a side of about three minutes.
    for (uint64_t seed = 1; seed <= 40; ++seed) {
        const LDemoSide side(seed);
        EXPECT_GE(side.GetTracks().size(), 4u) << seed;
        EXPECT_LE(side.GetTracks().size(), 6u) << seed;
        EXPECT_NEAR(side.GetEndSample() / 44100.0, 180, 5) << seed;
    }
}

} // namespace
