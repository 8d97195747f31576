#pragma once

#include "sound/SoundTime.h"

#include <cstdint>
#include <string>

// The room a recording session leaves on the disc the user means to burn, kept in section
// "RecordingPage": "TotalSize" (bytes of the recordings saved in the session) and "CurrentSize"
// (bytes of the recording under way); the disc's capacity is "Capacity" in section "CD" ("700 MB",
// or a time such as "79:57" for an audio CD).

// Bytes of a 44.1 kHz 16-bit stereo recording of `time` (whole seconds).
int64_t LRecordingBytes(LSoundTime time);
// Stores "CurrentSize" for `time` and returns "TotalSize" + "CurrentSize".
int64_t GetTotalSizeBytes(LSoundTime time);
// Adds "CurrentSize" into "TotalSize".
void UpdateTotalSizeBytes();

// The remaining space as the recording window shows it, for output format `outputFormat`:
// "N/A" unless the recordings are for a disc; megabytes for data discs, a time for audio CDs,
// with " (Disc Capacity Exceeded)" or " (Disc Already Used)" when so. `sessionTime` and
// `pausedTime` are the session's saved and paused lengths (audio CDs), `time` the current
// recording's.
std::string GetRemainingCDSpace(int outputFormat, LSoundTime time, bool addCurrent,
                                LSoundTime sessionTime, LSoundTime pausedTime);
