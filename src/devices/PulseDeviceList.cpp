#include "devices/PulseDeviceList.h"

namespace {

struct Listing {
    LPulseWaiter waiter;
    std::vector<LSoundDeviceInfo> devices;
    std::vector<std::vector<std::string>> portNames;
    std::vector<int> channels;
    bool failed = false;
};

struct ServerDefaults {
    LPulseWaiter waiter;
    std::string source, sink;
};

// Sources and sinks describe themselves alike; one function takes either.
template <typename Info> void Add(Listing& listing, const Info* info, int last) {
    if (last) {
        listing.failed = last < 0;
        listing.waiter.Done();
        return;
    }
    LSoundDeviceInfo device;
    device.id = info->index;
    device.name = info->description && *info->description ? info->description : info->name;
    device.serverName = info->name;
    std::vector<std::string> ports;
    for (uint32_t p = 0; p < info->n_ports; ++p) {
        const auto* port = info->ports[p];
        device.inputSources.push_back(port->description ? port->description : port->name);
        ports.push_back(port->name);
    }
    listing.devices.push_back(std::move(device));
    listing.channels.push_back(info->sample_spec.channels);
    listing.portNames.push_back(std::move(ports));
}

void AddSource(pa_context*, const pa_source_info* info, int last, void* user) {
    Add(*static_cast<Listing*>(user), info, last);
}

void AddSink(pa_context*, const pa_sink_info* info, int last, void* user) {
    Add(*static_cast<Listing*>(user), info, last);
}

void KeepDefaults(pa_context*, const pa_server_info* info, void* user) {
    auto* defaults = static_cast<ServerDefaults*>(user);
    if (info) {
        defaults->source = info->default_source_name ? info->default_source_name : "";
        defaults->sink = info->default_sink_name ? info->default_sink_name : "";
    }
    defaults->waiter.Done();
}

bool GetDefaults(const LPulseConnection& connection, ServerDefaults& defaults) {
    return LPulseRun(connection, defaults.waiter, [&](pa_context* context) {
        return pa_context_get_server_info(context, KeepDefaults, &defaults);
    });
}

void MarkDefault(std::vector<LSoundDeviceInfo>& devices, const std::string& name) {
    for (LSoundDeviceInfo& device : devices)
        device.isDefault = device.serverName == name;
}

// Sinks have no input sources.
void DropPorts(std::vector<LSoundDeviceInfo>& devices) {
    for (LSoundDeviceInfo& device : devices)
        device.inputSources.clear();
}

bool Find(Listing& listing, LPulseDeviceDetails& details) {
    if (listing.failed || listing.devices.empty()) return false;
    details.name = listing.devices.front().serverName;
    details.ports = listing.portNames.front();
    details.channels = listing.channels.front();
    return true;
}

} // namespace

bool LPulseListSources(const LPulseConnection& connection, std::vector<LSoundDeviceInfo>& devices) {
    ServerDefaults defaults;
    Listing listing;
    if (!GetDefaults(connection, defaults) ||
        !LPulseRun(connection, listing.waiter,
                   [&](pa_context* context) {
                       return pa_context_get_source_info_list(context, AddSource, &listing);
                   }) ||
        listing.failed)
        return false;
    MarkDefault(listing.devices, defaults.source);
    devices = std::move(listing.devices);
    return true;
}

bool LPulseListSinks(const LPulseConnection& connection, std::vector<LSoundDeviceInfo>& devices) {
    ServerDefaults defaults;
    Listing listing;
    if (!GetDefaults(connection, defaults) ||
        !LPulseRun(connection, listing.waiter,
                   [&](pa_context* context) {
                       return pa_context_get_sink_info_list(context, AddSink, &listing);
                   }) ||
        listing.failed)
        return false;
    MarkDefault(listing.devices, defaults.sink);
    DropPorts(listing.devices);
    devices = std::move(listing.devices);
    return true;
}

bool LPulseFindSource(const LPulseConnection& connection, uint32_t index,
                      LPulseDeviceDetails& details) {
    Listing listing;
    return LPulseRun(connection, listing.waiter,
                     [&](pa_context* context) {
                         return pa_context_get_source_info_by_index(context, index, AddSource,
                                                                    &listing);
                     }) &&
           Find(listing, details);
}

bool LPulseFindSink(const LPulseConnection& connection, uint32_t index,
                    LPulseDeviceDetails& details) {
    Listing listing;
    return LPulseRun(connection, listing.waiter,
                     [&](pa_context* context) {
                         return pa_context_get_sink_info_by_index(context, index, AddSink,
                                                                  &listing);
                     }) &&
           Find(listing, details);
}
