#include "app/SetupWizard.h"

#include "platform/Settings.h"

#include <strings.h>

namespace {

constexpr const char* kTitle = "Vinora Records Wizard";

} // namespace

bool LRecordingSetupWizard::IsModeOffered(const char* mode) {
    return strcasecmp(mode, "None") == 0;
}

LRecordingSetupWizard::LRecordingSetupWizard(Hooks hooks)
    : volume(hooks.levels), noise(hooks.refresh, hooks.levels), final(hooks.startRecording) {
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
    wizard_.AddPage(final, "final", kTitle, "The Wizard Setup is now complete.", "", false);
    LUserSettingSet<bool>("OutputFormat", "BurnCDNow", false);
}
