#include "play/SoundPlayDevice.h"

#include "platform/Settings.h"
#include "devices/SoundDevices.h"

#include <cstring>

namespace {

constexpr std::size_t kMaxNameBytes = 259;

// Cuts a name to the bytes a name buffer holds, without splitting a UTF-8 character.
std::string ListName(const std::string& name) {
    if (name.size() <= kMaxNameBytes) return name;
    std::size_t length = kMaxNameBytes;
    while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
        --length;
    return name.substr(0, length);
}

// Index of the entry with that list name (or, when `serverNames`, sound server name), the entry
// at `preferred` winning when several match; -1 when none does.
int FindEntry(const std::vector<LSoundPlayDeviceListItem>& list, const char* name, int preferred,
              bool serverNames) {
    const auto matches = [&](const LSoundPlayDeviceListItem& item) {
        return item.name == name ||
               (serverNames && !item.serverName.empty() && item.serverName == name);
    };
    if (preferred >= 0 && preferred < static_cast<int>(list.size()) && matches(list[preferred]))
        return preferred;
    for (std::size_t i = 0; i < list.size(); ++i)
        if (matches(list[i])) return static_cast<int>(i);
    return -1;
}

} // namespace

int GetSoundPlayDeviceList(std::vector<LSoundPlayDeviceListItem>& list) {
    list.clear();
    list.push_back({kDefaultSoundOutputId, kDefaultSoundOutName, {}});
    std::vector<LSoundDeviceInfo> devices;
    GetSoundOutputDevices(devices);
    for (const LSoundDeviceInfo& device : devices) {
        if (static_cast<int>(list.size()) == kMaxSoundPlayDevices) break;
        list.push_back({device.id, ListName(device.name), device.serverName});
    }
    return static_cast<int>(list.size());
}

LSoundPlayDevice::LSoundPlayDevice(int index) {
    std::vector<LSoundPlayDeviceListItem> list;
    if (index > 0 && index < GetSoundPlayDeviceList(list)) *this = {index, list[index].name};
}

LSoundPlayDevice LSoundPlayDevice::FromName(const char* name) {
    std::vector<LSoundPlayDeviceListItem> list;
    GetSoundPlayDeviceList(list);
    const int index = FindEntry(list, name, -1, true);
    if (index <= 0) return {};
    return {index, list[index].name};
}

int LSoundPlayDevice::GetListDeviceIndex(const char* name) {
    std::vector<LSoundPlayDeviceListItem> list;
    GetSoundPlayDeviceList(list);
    return FindEntry(list, name, -1, false);
}

bool LSoundPlayDevice::GetListDeviceName(int index, char* name) {
    std::vector<LSoundPlayDeviceListItem> list;
    if (index < 0 || index >= GetSoundPlayDeviceList(list)) return false;
    std::memcpy(name, list[index].name.c_str(), list[index].name.size() + 1);
    return true;
}

uint32_t LSoundPlayDevice::GetSoundComponent() const {
    if (index_ == 0) return kDefaultSoundOutputId;
    std::vector<LSoundPlayDeviceListItem> list;
    GetSoundPlayDeviceList(list);
    const int index = FindEntry(list, name_.c_str(), index_, false);
    return index < 0 ? kDefaultSoundOutputId : list[index].id;
}

LSoundPlayDevice LSettingGetSoundPlayDevice(const char* section, const char* key) {
    const std::string name = LUserSettingGetString(section, key);
    if (name.empty()) return {};
    return LSoundPlayDevice::FromName(name.c_str());
}

bool LSettingSetSoundPlayDevice(const char* section, const char* key,
                                const LSoundPlayDevice& device) {
    return LUserSettingSetString(section, key, device.GetName().c_str());
}
