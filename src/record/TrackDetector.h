#pragma once

#include "sound/DB.h"

#include <cstdint>
#include <vector>

// Decides, from the input levels reported ten times a second, when a recording has really
// started and when a track has ended. Levels are compared with the measured noise floor:
//   - a candidate start is a level more than 5 dB above the floor; it is verified when, two
//     seconds later, the average of the upper tenth of the level range seen meanwhile is still
//     more than 5 dB above it (or at once when audio is not awaited);
//   - a candidate end is a level below floor + 2 dB; the track ends when, after 0.8 x the split
//     time of audio, the same average stays below floor + 2 dB.
class LTrackDetector {
public:
    struct Settings {
        int noiseFloor = -25;       // dB
        bool recordAudioOnly = true; // wait for audio before a track counts as started
        bool autoSplit = true;       // end tracks at silence
        int autoSplitTime = 2;       // seconds of silence that end a track
        int historyCapacity = 60;
    };
    // What one report led to.
    struct Result {
        bool verified = false; // the track's start was verified
        bool ended = false;    // the track ended; the next one starts at once
        // The level reached the end threshold (floor + 2 dB): the track's audio lasts at least
        // to here.
        bool loud = false;
    };

    explicit LTrackDetector(const Settings& settings);

    // One report: the levels, the recording's length in frames and its rate.
    Result OnLevel(const LDBMC& levels, int position, int rate);
    // Clears the detection state (a new track, a pause or a stop).
    void Reset();
    // Goes on from a start verified before (a recording resumed after a pause): only the end
    // of the track is looked for.
    void ResumeStarted() { started_ = true; }

    bool IsStarted() const { return started_; }
    // The level has dropped below the end threshold and the end check is under way.
    bool IsEnding() const { return endCandidate_; }
    // The average of the last start check, -127 before the first.
    int LastAverage() const { return lastAverage_; }

private:
    bool AutoDetectStartOfTrack(int mono, int position, int rate);
    bool AutoDetectEndOfTrack(int mono, int position, int rate);
    void GrowHistory();
    void Store(int mono);
    // Sums the values in the upper tenth of the stored range into historySum_ and keeps their
    // count as the history's length; returns that count.
    int Evaluate();

    Settings settings_;
    bool started_ = false;
    bool startCandidate_ = false;
    bool endCandidate_ = false;
    int32_t candidateStart_ = 0;
    int32_t elapsed_ = 0;
    int32_t waitElapsed_ = 0;
    std::vector<int32_t> history_;
    int historyCount_ = 0;
    int32_t historySum_ = 0;
    int lastAverage_ = LDB::kSilence;
};
