#include "app/BurnWizardPages.h"

#include "disc/BurnFile.h"
#include "disc/DiskEventListener.h"
#include "platform/Settings.h"

std::string LDiscLabelToStore(const std::string& label) {
    return CutUTF8(label, kDiscLabelMax);
}

LCDVNBurnWizardPage::LCDVNBurnWizardPage(RunScan runScan,
                                         std::function<void(int, int)> sendToOwner,
                                         std::function<void()> refreshed, bool burnOnly)
    : dlg(std::move(runScan), std::move(sendToOwner)), refreshed_(std::move(refreshed)),
      burnOnly_(burnOnly) {}

LCDVNBurnWizardPage::~LCDVNBurnWizardPage() = default;

void LCDVNBurnWizardPage::Activate() {
    dlg.Init();
    dlg.UpdateCDInfo();
    diskEvents_ = std::make_unique<LDiskEventListener>(
        [this](int) {
            dlg.UpdateCDInfo();
            if (refreshed_) refreshed_();
        },
        1, 2);
}

void LCDVNBurnWizardPage::Deactivate() {
    diskEvents_.reset();
}

bool LCDVNBurnWizardPage::CmOk() {
    dlg.label = LDiscLabelToStore(dlg.label);
    dlg.CmOk();
    return true;
}

bool LCDVNBurnWizardPage::IsPageValid() const {
    return burnOnly_ || LCDVNBurnDlg::IsPageValid();
}

void LDataCDBurnDlg::Activate() {
    dataCDType = LUserSettingGet<int>("OutputFormat", "DataCDType", DATA_CD_MP3);
    if (dataCDType < DATA_CD_WAVE || dataCDType > DATA_CD_AS_THEY_ARE) dataCDType = DATA_CD_MP3;
    reencodeAllFiles = LUserSettingGet<bool>("OutputFormat", "ReencodeAllFiles", false);
    label = LUserSettingGetString("CDRecorder", "CDLabel", "CDLabel");
}

bool LDataCDBurnDlg::CmOk() {
    LUserSettingSet<int>("OutputFormat", "DataCDType", dataCDType);
    LUserSettingSet<bool>("OutputFormat", "ReencodeAllFiles", reencodeAllFiles);
    label = LDiscLabelToStore(label);
    LUserSettingSetString("CDRecorder", "CDLabel", label.c_str());
    return true;
}
