#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One entry of the output device list.
struct LSoundPlayDeviceListItem {
    // The id OpenSoundOutput takes.
    uint32_t id = 0;
    // The name shown to the user and stored in the settings (at most 259 bytes).
    std::string name;
    // The sound server's own name of the device ("turntable"); empty for the default entry.
    std::string serverName;
};

// The output devices as the user chooses among them: "[Default Sound Out]" first, then the
// sound server's sinks and the Virtual Speaker; at most kMaxSoundPlayDevices entries. Returns
// the count.
constexpr int kMaxSoundPlayDevices = 32;
constexpr const char* kDefaultSoundOutName = "[Default Sound Out]";
int GetSoundPlayDeviceList(std::vector<LSoundPlayDeviceListItem>& list);

// A chosen output device: its index in the device list (0, the default output, when nothing
// else was chosen) and the list name it had. Devices come and go, so the name decides which
// device is opened; a device no longer listed plays on the default output.
class LSoundPlayDevice {
public:
    LSoundPlayDevice() = default;
    // The entry at `index` of the list as it is now; the default output when out of range.
    explicit LSoundPlayDevice(int index);
    // The entry with that list name or sound server name; the default output when none has it.
    static LSoundPlayDevice FromName(const char* name);

    int GetIndex() const { return index_; }
    const std::string& GetName() const { return name_; }

    // The list index of the device with that list name; "[Default Sound Out]" is 0. -1 when no
    // device of that name is listed.
    static int GetListDeviceIndex(const char* name);
    // The list name of entry `index` into `name` (260 bytes); false when out of range.
    static bool GetListDeviceName(int index, char* name);

    // The device id to open: the listed device of this name (preferring the entry at this
    // index when names repeat), else kDefaultSoundOutputId.
    uint32_t GetSoundComponent() const;

    friend bool operator==(const LSoundPlayDevice&, const LSoundPlayDevice&) = default;

private:
    LSoundPlayDevice(int index, std::string name) : index_(index), name_(std::move(name)) {}

    int index_ = 0;
    std::string name_ = kDefaultSoundOutName;
};

// The output device stored by list name under section/key: a missing or empty value, or a
// device that is no longer listed, gives the default output.
LSoundPlayDevice LSettingGetSoundPlayDevice(const char* section, const char* key);
// Stores the device's list name; returns whether the store was written.
bool LSettingSetSoundPlayDevice(const char* section, const char* key,
                                const LSoundPlayDevice& device);
