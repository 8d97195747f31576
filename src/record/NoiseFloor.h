#pragma once

#include "sound/DB.h"

#include <string>
#include <vector>

// Measuring the noise floor: the level of the input while no music plays, over two seconds of
// level reports, stored as "dBNoiseFloor" in section "Settings". The floor is the average of
// the reports in the upper tenth of the range seen; a large spread of the reports around it
// means music played during the measurement.
class LNoiseFloorMeasure {
public:
    enum class State { Idle, Sampling, Done };

    // Starts a measurement at the recording's current length in frames.
    void Start(int position);
    // Gives up a measurement the input ended before.
    void Cancel() { measuring_ = false; }
    bool IsMeasuring() const { return measuring_; }

    // One level report; returns Done once, on the report that finishes the measurement.
    State OnLevel(const LDBMC& levels, int position, int rate);

    // After Done: the floor (stored in the settings), and whether music seemed to play.
    int Floor() const { return floor_; }
    double Spread() const { return spread_; }
    bool SignalDetected() const { return spread_ > 1000.0; }

private:
    bool measuring_ = false;
    int count_ = 0;
    int measureStart_ = 0;
    std::vector<int> history_ = std::vector<int>(30);
    int floor_ = -25;
    double spread_ = 0;
};

// The texts of the noise page.
inline constexpr const char* kNoiseSamplingText = "Sampling - Please wait...";
inline constexpr const char* kCustomNoiseFloorText = "[Custom Noise Floor Being Used]";
inline constexpr const char* kNoiseFloorWarningTitle = "Warning";
extern const char* const kNoiseFloorWarningText;
inline constexpr const char* kNoiseFloorWarningCheck = "Don't Show This Warning Again";
extern const char* const kUnusualNoiseFloorQuestion;

// "Noise floor is: -52 dB"
std::string LNoiseFloorText(int floor);
// "Last Set Noise Floor: -52 dB", or "Last Set Noise Floor: Not set yet".
std::string LLastNoiseFloorText();
// Whether a floor typed by hand needs the user's confirmation (outside -60..12 dB).
bool LIsUnusualNoiseFloor(int floor);
