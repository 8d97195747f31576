#include "record/NoiseFloor.h"

#include "platform/Settings.h"

#include <algorithm>
#include <cstdio>

const char* const kNoiseFloorWarningText =
    " An audio signal was detected during the 2 second long noise measurement! \n  Please "
    "ensure no music is playing during the noise measurement. \n  The best time to make the 2 "
    "second long measurement is during the silence between songs. \n Please perform one of the "
    "following: \n  1. Click Measure Noise Floor again to repeat the measurement during "
    "silence.  \n  2.  Select the check box to Manually Specify Noise Floor, and enter a noise "
    "floor estimate in dB. \n  3.  Click Next to ignore this warning if no audio was playing "
    "during the measurement.";

const char* const kUnusualNoiseFloorQuestion =
    "You have specified an unusual noise floor value, typical values range from -36dB to "
    "+12dB. Are you sure you want to use the specified value?\r\n\r\nClick 'OK' to "
    "continue.\r\nClick 'Cancel' if you wish to specify a different value.\r\n\r\nAn incorrect "
    "noise floor may cause Vinora Records to experience issues with recordings.";

void LNoiseFloorMeasure::Start(int position) {
    measuring_ = true;
    count_ = 0;
    measureStart_ = position;
}

LNoiseFloorMeasure::State LNoiseFloorMeasure::OnLevel(const LDBMC& levels, int position, int rate) {
    if (!measuring_) return State::Idle;
    const int capacity = static_cast<int>(history_.size());
    const int mono = levels.GetMonoDB();
    count_ = std::min(count_ + 1, capacity);
    if (position < measureStart_ + 2 * rate) {
        history_[static_cast<std::size_t>(count_ - 1)] = mono;
        return State::Sampling;
    }
    count_ = std::clamp(count_ - 1, 1, capacity);
    const auto stored = history_.begin() + count_;
    const int hi = std::max(*std::max_element(history_.begin(), stored), -100);
    const int lo = std::min(*std::min_element(history_.begin(), stored), 12);
    const double limit = hi - (hi - lo) * 0.1;
    int sum = 0, n = 0;
    for (auto value = history_.begin(); value != stored; ++value) {
        if (*value < limit) continue;
        sum += *value;
        ++n;
    }
    floor_ = n > 0 ? static_cast<int>(static_cast<float>(sum) / static_cast<float>(n)) : hi;
    LUserSettingSet<int>("Settings", "dBNoiseFloor", floor_);
    spread_ = 0;
    for (int i = 0; i < n; ++i) {
        const double difference = history_[static_cast<std::size_t>(i)] - floor_;
        spread_ += difference * difference;
    }
    measuring_ = false;
    return State::Done;
}

std::string LNoiseFloorText(int floor) {
    char text[64];
    std::snprintf(text, sizeof text, "Noise floor is: %d dB", floor);
    return text;
}

std::string LLastNoiseFloorText() {
    const int floor = LUserSettingGet<int>("Settings", "dBNoiseFloor", 999);
    if (floor == 999) return "Last Set Noise Floor: Not set yet";
    char text[64];
    std::snprintf(text, sizeof text, "Last Set Noise Floor: %d dB", floor);
    return text;
}

bool LIsUnusualNoiseFloor(int floor) {
    return floor < -60 || floor > 12;
}
