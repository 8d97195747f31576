#include "cli/Commands.h"

#include "devices/SoundDevices.h"

#include <cstdio>

namespace {

// One device a line: its name, the sound server's name in brackets, and the default marked;
// an input device's input sources follow it, indented.
void PrintDevices(const char* heading, const std::vector<LSoundDeviceInfo>& devices) {
    std::printf("%s\n", heading);
    for (const LSoundDeviceInfo& device : devices) {
        std::printf("  %s [%s]%s\n", device.name.c_str(), device.serverName.c_str(),
                    device.isDefault ? " (default)" : "");
        for (const std::string& source : device.inputSources)
            std::printf("      %s\n", source.c_str());
    }
}

} // namespace

int CliDevices(const CliArgs& args) {
    if (!args.empty()) {
        std::fprintf(stderr, "vinora-cli: devices takes no arguments\n");
        return 2;
    }
    std::vector<LSoundDeviceInfo> inputs, outputs;
    const bool inputsListed = GetSoundInputDevices(inputs);
    const bool outputsListed = GetSoundOutputDevices(outputs);
    if (!inputsListed || !outputsListed)
        std::fprintf(stderr, "vinora-cli: no sound server answered; only the virtual devices "
                             "are listed\n");
    PrintDevices("Input devices:", inputs);
    PrintDevices("Output devices:", outputs);
    return 0;
}
