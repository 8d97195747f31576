#include "record/DiscSpace.h"

#include "platform/Settings.h"

#include <strings.h>

#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <string>

namespace {

constexpr const char* kSection = "RecordingPage";
constexpr int64_t kBytesPerSecond = 176400;

std::string Printf(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

} // namespace

int64_t LRecordingBytes(LSoundTime time) {
    return int64_t{time.GetMS() / 1000} * kBytesPerSecond;
}

int64_t GetTotalSizeBytes(LSoundTime time) {
    const int64_t current = LRecordingBytes(time);
    LUserSettingSet<int64_t>(kSection, "CurrentSize", current);
    return LUserSettingGet<int64_t>(kSection, "TotalSize", 0) + current;
}

void UpdateTotalSizeBytes() {
    LUserSettingSet<int64_t>(kSection, "TotalSize",
                             LUserSettingGet<int64_t>(kSection, "TotalSize", 0) +
                                 LUserSettingGet<int64_t>(kSection, "CurrentSize", 0));
}

std::string GetRemainingCDSpace(int outputFormat, LSoundTime time, bool addCurrent,
                                LSoundTime sessionTime, LSoundTime pausedTime) {
    const std::string capacityText = LUserSettingGetString("CD", "Capacity");
    if (outputFormat == 2 || outputFormat == 3) {
        if (addCurrent) UpdateTotalSizeBytes();
        const double used = static_cast<double>(GetTotalSizeBytes(time)) / 1048576.0;
        const double capacity = std::atof(capacityText.substr(0, capacityText.find(" MB")).c_str());
        const double left = capacity - used;
        if (left >= 0) return Printf("%5.3f MB", left);
        if (capacity == 0) return Printf("%5.3f MB (Disc Already Used)", 0.0);
        return Printf("%5.3f MB (Disc Capacity Exceeded)", left);
    }
    if (outputFormat != 4) return "N/A";
    if (strcasecmp(capacityText.c_str(), "No Disc in Drive") == 0) return capacityText;
    LSoundTime capacity;
    capacity.SetText(capacityText.c_str());
    const int32_t used = sessionTime.GetMS() + pausedTime.GetMS() + time.GetMS();
    char left[32];
    LSoundTime(std::max(capacity.GetMS() - used, 0))._GetText2(left);
    if (capacity.GetMS() == 0) return std::string(left) + " (Disc Already Used)";
    if (capacity.GetMS() < used) return std::string(left) + " (Disc Capacity Exceeded)";
    return left;
}
