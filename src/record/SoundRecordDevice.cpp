#include "record/SoundRecordDevice.h"

#include "platform/Settings.h"
#include "devices/SoundDevices.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

void CopyName(char* out, const std::string& name) {
    std::snprintf(out, kSoundDeviceNameSize, "%s", name.c_str());
}

std::vector<LSoundDeviceInfo> InputDevices() {
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    return devices;
}

// The raw position of the device's `named`-th input that has a name; -1 when there is none.
int RawInput(const LSoundDeviceInfo& device, int named) {
    int count = 0;
    for (size_t i = 0; i < device.inputSources.size(); ++i) {
        if (device.inputSources[i].empty()) continue;
        if (count++ == named) return static_cast<int>(i);
    }
    return -1;
}

} // namespace

bool GetSoundRecordDeviceList(std::vector<LSoundRecordDeviceListItem>& devices) {
    std::vector<LSoundDeviceInfo> found;
    const bool asked = GetSoundInputDevices(found);
    devices.clear();
    for (const LSoundDeviceInfo& info : found) {
        LSoundRecordDeviceListItem& item = devices.emplace_back();
        item.id = info.id;
        CopyName(item.name, info.name);
        item.hasInput = true;
    }
    return asked;
}

bool GetSoundRecordDeviceChannelsById(uint32_t id,
                                      std::vector<LSoundRecordDeviceListItem>& inputs) {
    inputs.clear();
    for (const LSoundDeviceInfo& info : InputDevices()) {
        if (info.id != id) continue;
        for (size_t i = 0; i < info.inputSources.size(); ++i) {
            LSoundRecordDeviceListItem& item = inputs.emplace_back();
            item.id = static_cast<uint32_t>(i);
            CopyName(item.name, info.inputSources[i]);
            item.hasInput = true;
        }
        return true;
    }
    return false;
}

bool FindDeviceByIndex(int index, uint32_t& id, char* name) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    if (index < 0 || index >= static_cast<int>(devices.size())) return false;
    id = devices[index].id;
    CopyName(name, devices[index].name);
    return true;
}

bool FindDeviceByName(const char* name, int& index, uint32_t& id) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    for (size_t i = 0; i < devices.size(); ++i) {
        if (devices[i].name != name) continue;
        index = static_cast<int>(i);
        id = devices[i].id;
        return true;
    }
    return false;
}

bool FindDeviceById(uint32_t id, int& index, char* name) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    for (size_t i = 0; i < devices.size(); ++i) {
        if (devices[i].id != id) continue;
        index = static_cast<int>(i);
        CopyName(name, devices[i].name);
        return true;
    }
    return false;
}

bool GetListDeviceName(int index, char* name) {
    uint32_t id = 0;
    return FindDeviceByIndex(index, id, name);
}

bool GetDefaultSoundRecordDevice(int& index, char* name) {
    LSoundDeviceInfo device;
    if (!GetDefaultSoundInputDevice(device)) return false;
    return FindDeviceById(device.id, index, name);
}

namespace {

// The place of the device with that list name or sound server name; -1 when none has it.
int FindByName(const std::vector<LSoundDeviceInfo>& devices, const std::string& name) {
    if (name.empty()) return -1;
    for (size_t i = 0; i < devices.size(); ++i)
        if (devices[i].name == name) return static_cast<int>(i);
    for (size_t i = 0; i < devices.size(); ++i)
        if (devices[i].serverName == name) return static_cast<int>(i);
    return -1;
}

} // namespace

LSoundRecordDevice::LSoundRecordDevice(int deviceIndex, int inputIndex)
    : inputIndex_(std::max(inputIndex, 0)) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    if (deviceIndex >= 0 && deviceIndex < static_cast<int>(devices.size()))
        name_ = devices[deviceIndex].name;
}

LSoundRecordDevice::LSoundRecordDevice(const char* name, int namedInput) {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    const int index = FindByName(devices, name);
    if (index < 0) return;
    name_ = name;
    inputIndex_ = namedInput >= 0 ? std::max(RawInput(devices[index], namedInput), 0) : 0;
}

int LSoundRecordDevice::GetIndex() const {
    return std::max(FindByName(InputDevices(), name_), 0);
}

bool LSoundRecordDevice::GetId(uint32_t& id) const {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    if (devices.empty()) return false;
    id = devices[std::max(FindByName(devices, name_), 0)].id;
    return true;
}

int LSoundRecordDevice::GetNamedInput() const {
    const std::vector<LSoundDeviceInfo> devices = InputDevices();
    const int index = std::max(FindByName(devices, name_), 0);
    if (index >= static_cast<int>(devices.size())) return 0;
    const std::vector<std::string>& inputs = devices[index].inputSources;
    int named = 0;
    for (int i = 0; i < inputIndex_ && i < static_cast<int>(inputs.size()); ++i)
        named += !inputs[i].empty();
    return named;
}

LSoundRecordDevice LSettingGetSoundRecordDevice(const char* section, const char* key) {
    int defaultIndex = 0;
    char defaultName[kSoundDeviceNameSize] = {};
    GetDefaultSoundRecordDevice(defaultIndex, defaultName);
    const std::string name = LUserSettingGetString(section, key, defaultName);
    const std::string channelKey = std::string(key) + "Channel";
    const int input = LUserSettingGet<int>(section, channelKey.c_str(), 0);
    return LSoundRecordDevice(name.c_str(), input);
}

bool LSettingSetSoundRecordDevice(const char* section, const char* key,
                                  const LSoundRecordDevice& device) {
    char name[kSoundDeviceNameSize] = {};
    if (!GetListDeviceName(device.GetIndex(), name)) return false;
    const std::string channelKey = std::string(key) + "Channel";
    const bool stored = LUserSettingSetString(section, key, name);
    return LUserSettingSet<int>(section, channelKey.c_str(), device.GetNamedInput()) && stored;
}
