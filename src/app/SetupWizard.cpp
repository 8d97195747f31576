#include "app/SetupWizard.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "platform/Settings.h"

#include <strings.h>

namespace {

constexpr const char* kTitle = "Vinora Records Wizard";

bool IsMode(const char* mode, const char* name) {
    return strcasecmp(mode, name) == 0;
}

LCDVNBurnWizardPage::RunScan ScanRunner(LCDVNBurnWizardPage::RunScan given) {
    if (given) return given;
    return [](const char*, ProcessFindBurners& scan) {
        LProcessInterfaceVoid unseen;
        return Process(unseen, scan);
    };
}

std::function<void(int, int)> Sender(std::function<void(int, int)> given) {
    if (given) return given;
    return [](int, int) {};
}

} // namespace

LRecordingSetupWizard::LRecordingSetupWizard(Hooks hooks, const char* mode)
    : volume(hooks.levels), noise(hooks.refresh, hooks.levels),
      burn(ScanRunner(hooks.runScan), Sender(hooks.sendToMain), hooks.burnPageRefreshed,
           !IsMode(mode, "None")),
      final(hooks.startRecording) {
    if (IsMode(mode, "Audio")) {
        wizard_.AddPage(burn, "burn", kTitle, "CD Burn Settings",
                        "Configure the settings for CD burning.", true);
    } else if (!IsMode(mode, "None")) {
        wizard_.AddPage(dataBurn, "data", "Data CD/DVD Burn Options", "Data CD/DVD Options",
                        "Select options for Data CD/DVD Burning.", true);
        wizard_.AddPage(burn, "burn", kTitle, "CD/DVD Burn Settings",
                        "Configure the settings for CD/DVD burning.", true);
    }
    if (!IsMode(mode, "None")) {
        LUserSettingSet<bool>("OutputFormat", "BurnAudioCD", IsMode(mode, "Audio"));
        LUserSettingSet<bool>("OutputFormat", "BurnCDNow", true);
        return;
    }
    wizard_.AddPage(introduction, "introduction", kTitle,
                    "Welcome to the Vinora Records Recording Setup Wizard!", "", false);
    wizard_.AddPage(source, "source", kTitle, "Recording Source", "Select All", true);
    wizard_.AddPage(volume, "volume", kTitle, "Recording Volume Calibration",
                    "Calibrate your recording volume to ensure you record the audio at an "
                    "appropriate level.",
                    true);
    wizard_.AddPage(noise, "noise", kTitle, "Background Noise Measure",
                    "Measure noise during the transitions between tracks. This is used by the "
                    "auto file splitter later on when splitting your recordings.",
                    true);
    wizard_.AddPage(restoration, "restoration", "Select Audio Restoration Tools",
                    "Audio Restoration Tools",
                    "Select tools for enhancing or repairing the audio. Note that not all tools "
                    "are needed depending on the quality of the original music.",
                    true);
    wizard_.AddPage(output, "output", "Recording Output Format", "Output Format",
                    "Select the output format of your audio recordings.", true);
    wizard_.AddPage(burn, "burn", kTitle, "CD/DVD Burn Settings",
                    "Configure the settings for CD/DVD burning.", true);
    wizard_.AddPage(final, "final", kTitle, "The Wizard Setup is now complete.", "", false);
    LUserSettingSet<bool>("OutputFormat", "BurnCDNow", false);
}
