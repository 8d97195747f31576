#include "platform/devices/SoundDevices.h"

#include "platform/devices/VirtualSpeaker.h"
#include "platform/devices/VirtualTurntable.h"

namespace {

LSoundDeviceInfo VirtualTurntableInfo(bool isDefault) {
    return {kVirtualTurntableId, "Virtual Turntable", "virtual-turntable", {}, isDefault};
}

LSoundDeviceInfo VirtualSpeakerInfo(bool isDefault) {
    return {kVirtualSpeakerId, "Virtual Speaker", "virtual-speaker", {}, isDefault};
}

} // namespace

bool GetSoundInputDevices(std::vector<LSoundDeviceInfo>& devices) {
    devices.clear();
    devices.push_back(VirtualTurntableInfo(true));
    return false;
}

bool GetSoundOutputDevices(std::vector<LSoundDeviceInfo>& devices) {
    devices.clear();
    devices.push_back(VirtualSpeakerInfo(true));
    return false;
}

bool GetDefaultSoundInputDevice(LSoundDeviceInfo& device) {
    device = VirtualTurntableInfo(true);
    return true;
}

std::unique_ptr<LSoundInputStream> OpenSoundInput(uint32_t id, int, int, std::string& error) {
    if (id == kVirtualTurntableId) return LVirtualTurntable::Open(error);
    error = "There is no sound input device " + std::to_string(id) + ".";
    return nullptr;
}

std::unique_ptr<LSoundOutputStream> OpenSoundOutput(uint32_t id, int sampleRate, int channels,
                                                    LSoundOutputStream::Completion completion,
                                                    void* user, std::string& error) {
    if (id == kVirtualSpeakerId || id == kDefaultSoundOutputId)
        return LVirtualSpeaker::Open(sampleRate, channels, completion, user, error);
    error = "There is no sound output device " + std::to_string(id) + ".";
    return nullptr;
}
