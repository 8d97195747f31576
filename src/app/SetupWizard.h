#pragma once

#include "app/BurnWizardPages.h"
#include "app/Wizard.h"
#include "app/WizardPages.h"

#include <functional>

// The recording setup wizard. Mode "None" is the full recording setup: introduction, source,
// volume, noise floor, restoration tools, output format, burn settings and the final page, the
// middle ones shown only when the source page (and, for the burn settings, the output format)
// asks for them. Mode "Audio" is the burn settings page alone, set up for an audio CD; any other
// mode is the data disc options followed by the burn settings page. Modes compare without
// regard to case.
class LRecordingSetupWizard {
public:
    struct Hooks {
        std::function<void()> startRecording{};     // the final page's "start recording now"
        std::function<void()> refresh{};            // the noise page's texts changed
        std::function<void(const LDBMC&)> levels{}; // one level report for the page's meter
        // The burner scan behind a progress window; without it the scan runs unseen.
        LCDVNBurnWizardPage::RunScan runScan{};
        // Posts a message to the main window (the burn and erase requests); dropped without it.
        std::function<void(int message, int value)> sendToMain{};
        // The burn settings page's fields changed while it was shown (a disc came or went).
        std::function<void()> burnPageRefreshed{};
    };

    explicit LRecordingSetupWizard(Hooks hooks, const char* mode = "None");

    LWizard& Wizard() { return wizard_; }
    LIntroductionPage introduction;
    LRecordSourcePage source;
    LRecordSettingPage volume;
    LNoiseFloorWizardPage noise;
    LAudioRestorationPage restoration;
    LOutputFormatPage output;
    LDataCDBurnDlg dataBurn;
    LCDVNBurnWizardPage burn;
    LFinalPage final;

private:
    LWizard wizard_;
};
