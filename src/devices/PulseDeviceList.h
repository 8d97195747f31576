#pragma once

#include "devices/PulseConnection.h"
#include "devices/SoundDevices.h"

#include <vector>

// The server's sources (monitors of sinks included) or sinks in the server's order, each named
// by its description, with its ports as input sources, the server's default marked. False when
// the server did not answer.
bool LPulseListSources(const LPulseConnection& connection, std::vector<LSoundDeviceInfo>& devices);
bool LPulseListSinks(const LPulseConnection& connection, std::vector<LSoundDeviceInfo>& devices);

// What opening a device needs to know of it: its server name, its own channel count and, for a
// source, the server names of its ports in input-source order.
struct LPulseDeviceDetails {
    std::string name;
    int channels = 0;
    std::vector<std::string> ports;
};
bool LPulseFindSource(const LPulseConnection& connection, uint32_t index,
                      LPulseDeviceDetails& details);
bool LPulseFindSink(const LPulseConnection& connection, uint32_t index,
                    LPulseDeviceDetails& details);
