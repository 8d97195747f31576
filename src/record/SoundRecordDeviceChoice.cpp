#include "record/SoundRecordDeviceChoice.h"

#include "devices/SoundDevices.h"

#include <algorithm>

namespace {

std::vector<LSoundDeviceInfo> InputDevices() {
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    return devices;
}

// Fills the inputs list with the named inputs of the device selected and selects the one at
// raw position `wanted`, else the first.
void FillInputs(LSoundRecordDeviceChoice& choice, const std::vector<LSoundDeviceInfo>& devices,
                int wanted) {
    choice.inputs.clear();
    choice.inputPositions.clear();
    choice.inputSelected = -1;
    const int index = choice.deviceSelected;
    if (index < 0 || index >= static_cast<int>(devices.size())) return;
    const std::vector<std::string>& inputs = devices[index].inputSources;
    for (size_t i = 0; i < inputs.size(); ++i) {
        if (inputs[i].empty()) continue;
        if (static_cast<int>(i) == wanted) choice.inputSelected = int(choice.inputs.size());
        choice.inputs.push_back(inputs[i]);
        choice.inputPositions.push_back(static_cast<int>(i));
    }
    if (choice.inputSelected < 0 && !choice.inputs.empty()) choice.inputSelected = 0;
}

} // namespace

void LSoundRecordDeviceInit(LSoundRecordDeviceChoice& choice, const LSoundRecordDevice& device) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    choice.devices.clear();
    for (const LSoundDeviceInfo& info : devices)
        choice.devices.push_back(info.name);
    const int index = device.GetIndex();
    const bool known = index < int(devices.size()) && devices[index].name == device.GetName();
    choice.deviceSelected = devices.empty() ? -1 : index;
    FillInputs(choice, devices, known ? device.GetInput() : 0);
}

void LSoundRecordDeviceChanged(LSoundRecordDeviceChoice& choice) {
    FillInputs(choice, InputDevices(), -1);
}

LSoundRecordDevice LSoundRecordDeviceApply(const LSoundRecordDeviceChoice& choice) {
    const bool hasInput =
        choice.inputSelected >= 0 && choice.inputSelected < int(choice.inputPositions.size());
    return LSoundRecordDevice(std::max(choice.deviceSelected, 0),
                              hasInput ? choice.inputPositions[choice.inputSelected] : 0);
}
