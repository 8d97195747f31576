#include "devices/SoundDevices.h"

#include "devices/PulseDeviceList.h"
#include "devices/PulseInputStream.h"
#include "devices/PulseOutputStream.h"
#include "devices/VirtualSpeaker.h"
#include "devices/VirtualTurntable.h"

#include <algorithm>

namespace {

LSoundDeviceInfo VirtualTurntableInfo(bool isDefault) {
    return {kVirtualTurntableId, "Virtual Turntable", "virtual-turntable", {}, isDefault};
}

LSoundDeviceInfo VirtualSpeakerInfo(bool isDefault) {
    return {kVirtualSpeakerId, "Virtual Speaker", "virtual-speaker", {}, isDefault};
}

using ListFunction = bool (*)(const LPulseConnection&, std::vector<LSoundDeviceInfo>&);

// The server's devices then the virtual one, which is the default when the server lists none.
bool ListDevices(ListFunction list, LSoundDeviceInfo (*virtualDevice)(bool),
                 std::vector<LSoundDeviceInfo>& devices) {
    devices.clear();
    std::string error;
    const std::shared_ptr<LPulseConnection> connection = LPulseConnection::Get(error);
    const bool asked = connection && list(*connection, devices);
    if (!asked) devices.clear();
    const bool hasDefault = std::any_of(devices.begin(), devices.end(),
                                        [](const LSoundDeviceInfo& d) { return d.isDefault; });
    devices.push_back(virtualDevice(!hasDefault));
    return asked;
}

} // namespace

bool GetSoundInputDevices(std::vector<LSoundDeviceInfo>& devices) {
    return ListDevices(LPulseListSources, VirtualTurntableInfo, devices);
}

bool GetSoundOutputDevices(std::vector<LSoundDeviceInfo>& devices) {
    return ListDevices(LPulseListSinks, VirtualSpeakerInfo, devices);
}

bool GetDefaultSoundInputDevice(LSoundDeviceInfo& device) {
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    device = *std::find_if(devices.begin(), devices.end(),
                           [](const LSoundDeviceInfo& d) { return d.isDefault; });
    return true;
}

std::unique_ptr<LSoundInputStream> OpenSoundInput(uint32_t id, int sampleRate, int channels,
                                                  std::string& error) {
    if (id == kVirtualTurntableId) return LVirtualTurntable::Open(error);
    std::shared_ptr<LPulseConnection> connection = LPulseConnection::Get(error);
    if (!connection) return nullptr;
    return LPulseInputStream::Open(std::move(connection), id, sampleRate, channels, error);
}

std::unique_ptr<LSoundOutputStream> OpenSoundOutput(uint32_t id, int sampleRate, int channels,
                                                    LSoundOutputStream::Completion completion,
                                                    void* user, std::string& error) {
    if (id == kVirtualSpeakerId)
        return LVirtualSpeaker::Open(sampleRate, channels, completion, user, error);
    std::shared_ptr<LPulseConnection> connection = LPulseConnection::Get(error);
    if (!connection) {
        if (id == kDefaultSoundOutputId)
            return LVirtualSpeaker::Open(sampleRate, channels, completion, user, error);
        return nullptr;
    }
    return LPulseOutputStream::Open(std::move(connection), id, sampleRate, channels, completion,
                                    user, error);
}
