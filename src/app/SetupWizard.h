#pragma once

#include "app/Wizard.h"
#include "app/WizardPages.h"

#include <functional>

// The recording setup wizard: introduction, source, volume, noise floor, restoration tools,
// output format and the final page, each after the first two shown only when the source page
// asks for it. The disc burning forms come with disc burning; until then only the full
// recording setup (mode "None") is offered.
class LRecordingSetupWizard {
public:
    struct Hooks {
        std::function<void()> startRecording; // the final page's "start recording now"
        std::function<void()> refresh;        // the noise page's texts changed
        std::function<void(const LDBMC&)> levels; // one level report for the page's meter
    };

    static bool IsModeOffered(const char* mode);

    explicit LRecordingSetupWizard(Hooks hooks);

    LWizard& Wizard() { return wizard_; }
    LIntroductionPage introduction;
    LRecordSourcePage source;
    LRecordSettingPage volume;
    LNoiseFloorWizardPage noise;
    LAudioRestorationPage restoration;
    LOutputFormatPage output;
    LFinalPage final;

private:
    LWizard wizard_;
};
