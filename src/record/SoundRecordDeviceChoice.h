#pragma once

#include "record/SoundRecordDevice.h"

#include <string>
#include <vector>

// The two drop-down lists of a dialog that chooses a recording device: the input devices, then
// the chosen device's named inputs. A window shows these lists and writes the user's choice
// into the selections; it calls LSoundRecordDeviceChanged when the device selection changes.
struct LSoundRecordDeviceChoice {
    std::vector<std::string> devices;
    int deviceSelected = -1; // -1: nothing chosen (no devices)
    std::vector<std::string> inputs;
    int inputSelected = -1; // -1: the device has no named inputs
    // For each entry of `inputs`, its position among all of the device's input sources.
    std::vector<int> inputPositions;
};

// Fills both lists and selects `device` (the first entries when it is not there).
void LSoundRecordDeviceInit(LSoundRecordDeviceChoice& choice, const LSoundRecordDevice& device);
// Refills the inputs for the device now selected and selects its first input.
void LSoundRecordDeviceChanged(LSoundRecordDeviceChoice& choice);
// The device and input chosen.
LSoundRecordDevice LSoundRecordDeviceApply(const LSoundRecordDeviceChoice& choice);
