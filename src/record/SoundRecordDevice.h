#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Which sound input to record from: an input device, counted among the devices that have
// input, and one of its input sources (Line In, Microphone, ...). Devices are remembered in the
// settings by their list name, since their ids and positions change between runs.

inline constexpr std::size_t kSoundDeviceNameSize = 260;

// One entry of a device list (id, name, whether it has input), or of a device's input sources
// (source position, source name).
struct LSoundRecordDeviceListItem {
    uint32_t id = 0;
    char name[kSoundDeviceNameSize] = {};
    bool hasInput = false;
};

// Every input device of the computer, in list order. False when the sound server could not be
// asked; the list then holds the devices that do not need it (the Virtual Turntable).
bool GetSoundRecordDeviceList(std::vector<LSoundRecordDeviceListItem>& devices);
// The input sources of device `id` with their names (ids are their positions); empty when the
// device has none or is gone.
bool GetSoundRecordDeviceChannelsById(uint32_t id, std::vector<LSoundRecordDeviceListItem>& inputs);

// Lookups among the devices that have input; false when there is no such device. `name` takes
// kSoundDeviceNameSize bytes.
bool FindDeviceByIndex(int index, uint32_t& id, char* name);
bool FindDeviceByName(const char* name, int& index, uint32_t& id);
bool FindDeviceById(uint32_t id, int& index, char* name);
bool GetListDeviceName(int index, char* name);

// The sound server's default input device; false when it cannot be told.
bool GetDefaultSoundRecordDevice(int& index, char* name);

// A chosen input device travels by its list name (the sound server's own name of a device is
// understood too), not by its place in the list: devices come and go, and the list's order
// with them. The name is looked up each time the device is opened; a device that is no longer
// listed gives the first input device.
class LSoundRecordDevice {
public:
    // The first input device, its first input.
    LSoundRecordDevice() = default;
    // The device now at `deviceIndex` among the input devices (the first when out of range) and
    // its input source at raw position `inputIndex`.
    LSoundRecordDevice(int deviceIndex, int inputIndex);
    // The device of that list name or sound server name and its input `namedInput`, counting
    // only inputs that have a name (an input past them gives input 0).
    LSoundRecordDevice(const char* name, int namedInput);

    // The list name; empty for the first input device.
    const std::string& GetName() const { return name_; }
    // The device's place in the input list now: 0 when it is not listed.
    int GetIndex() const;
    // The device id to open: the listed device of this name, else the first input device.
    // False when there is no input device at all.
    bool GetId(uint32_t& id) const;
    // The input's position among all of the device's input sources.
    int GetInput() const { return inputIndex_; }
    // The input's position among the device's named inputs (what the settings store).
    int GetNamedInput() const;

    friend bool operator==(const LSoundRecordDevice&, const LSoundRecordDevice&) = default;

private:
    std::string name_;
    int inputIndex_ = 0;
};

// The recording device stored under `key` (its list name) and key + "Channel" (its named input);
// by default the default input device with input 0.
LSoundRecordDevice LSettingGetSoundRecordDevice(const char* section, const char* key);
bool LSettingSetSoundRecordDevice(const char* section, const char* key,
                                  const LSoundRecordDevice& device);
