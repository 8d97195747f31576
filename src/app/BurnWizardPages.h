#pragma once

#include "app/Wizard.h"
#include "disc/CDVNBurnPage.h"

#include <functional>
#include <memory>
#include <string>

class LDiskEventListener;

// The longest disc label the burn pages accept, in bytes.
inline constexpr std::size_t kDiscLabelMax = 16;
// The label as stored: cut to kDiscLabelMax bytes, never inside a character.
std::string LDiscLabelToStore(const std::string& label);

// The burn settings page as a page of the setup wizard: the page's logic (LCDVNBurnDlg) filled
// from the settings and refreshed (burner scan, sizes) each time the page is shown, and again
// when a disc comes or goes while it is shown.
class LCDVNBurnWizardPage : public LWizardPage {
public:
    using RunScan = std::function<LProcessResult(const char* title, ProcessFindBurners& scan)>;

    // `runScan` runs the burner scan behind a progress window; `sendToOwner` posts a message to
    // the main window; `refreshed` tells the view that the fields changed. `burnOnly`: the page
    // of a burn form, shown whatever the output format.
    LCDVNBurnWizardPage(RunScan runScan, std::function<void(int message, int value)> sendToOwner,
                        std::function<void()> refreshed, bool burnOnly);
    ~LCDVNBurnWizardPage() override;

    void Activate() override;
    void Deactivate() override;
    bool CmOk() override;
    bool IsPageValid() const override;

    LCDVNBurnDlg dlg;

private:
    std::function<void()> refreshed_;
    bool burnOnly_;
    std::unique_ptr<LDiskEventListener> diskEvents_;
};

// What a data disc holds ("DataCDType" of section "OutputFormat").
enum LDataCDType : int { DATA_CD_WAVE = 0, DATA_CD_MP3 = 1, DATA_CD_AS_THEY_ARE = 2 };
// The choices as the page lists them, by LDataCDType.
inline constexpr const char* kDataCDTypeTexts[] = {
    "Wave files (every file converted to .wav)",
    "MP3 files (every file converted to .mp3)",
    "The files as they are (wave and MP3 mixed)",
};

// The data disc options: what the disc holds, whether files already in that format are
// converted again, and the disc's label.
class LDataCDBurnDlg : public LWizardPage {
public:
    void Activate() override;
    bool CmOk() override;

    int dataCDType = DATA_CD_MP3;
    bool reencodeAllFiles = false;
    std::string label;
};
