#include "disc/CDVNBurnPage.h"

#include "burn/DiscService.h"
#include "platform/Settings.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kAudioCDFormat = 4;

std::string SpeedEntry(int x) {
    return std::to_string(x) + "x";
}

} // namespace

LCDVNBurnDlg::LCDVNBurnDlg(
    std::function<LProcessResult(const char*, ProcessFindBurners&)> runScan,
    std::function<void(int, int)> sendToOwner)
    : runScan_(std::move(runScan)), sendToOwner_(std::move(sendToOwner)) {}

const std::vector<int>& LCDVNBurnDlg::FixedSpeeds() {
    static const std::vector<int> speeds{1, 2, 4, 6, 8, 10, 12, 16, 20, 24, 32, 40, 52};
    return speeds;
}

bool LCDVNBurnDlg::AudioCD() const {
    return LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1) == kAudioCDFormat;
}

void LCDVNBurnDlg::SelectStoredSpeed(const std::vector<int>& xs) {
    speeds = {"[MAX]"};
    speedSelected = 0;
    for (int x : xs) {
        if (x == settings_.speed) speedSelected = int(speeds.size());
        speeds.push_back(SpeedEntry(x));
    }
}

void LCDVNBurnDlg::Init() {
    settings_ = LCDVNBurnSettings();
    drives.clear();
    const size_t count = DiscService().CopyDeviceArray().size();
    for (size_t i = 0; i < count && i < ProcessFindBurners::kMaxBurners; ++i)
        drives.push_back(MapDriveNumberToString(unsigned(i)));
    driveSelected = settings_.cdDrive;
    SelectStoredSpeed(FixedSpeeds());
    eraseCDRW = settings_.eraseCDRW;
    overburn = settings_.overburn;
    label = settings_.cdLabel;
    labelEnabled = overburnEnabled = !AudioCD();
    if (!labelEnabled) label.clear();
    const bool audioWording = LUserSettingGet<bool>("OutputFormat", "BurnAudioCD", false);
    eraseCaption = audioWording ? "Erase Rewriteable CDs Prior to Burning"
                                : "Erase Rewriteable Discs Prior to Burning";
    driveCaption = audioWording ? "CD Drive" : "CD/DVD Drive";
    eraseButtonCaption = audioWording ? "Erase CD-RW Now" : "Erase Disc Now";
}

void LCDVNBurnDlg::SelectDrive(int index) {
    driveSelected = index;
    UpdateCDInfo();
}

void LCDVNBurnDlg::UpdateCDInfo() {
    LUserSettingSet<int>("CDRecorder", "CDDrive", driveSelected);
    char text[64];
    if (AudioCD()) {
        projectSize = LUserSettingGetString("RecordingPage", "TotalTime", "0:00:00.00");
    } else {
        const double bytes = LUserSettingGet<int>("RecordingPage", "TotalSize", 0);
        std::snprintf(text, sizeof text, "%5.2f MB", bytes / 1048576.0);
        projectSize = text;
    }
    capacity = GetCDCapacity(true);
    int mediaType = MEDIA_NO_DISK;
    if (LDiscDeviceRef device = CopyDeviceByIndex(unsigned(driveSelected)))
        mediaType = MediaTypeOfKind(device->CopyStatus().kind);
    scan_ = ProcessFindBurners();
    scan_.speedUnit = SpeedUnitForMedia(mediaType);
    runScan_("Locating Burners", scan_);
    std::vector<int> xs;
    if (driveSelected >= 0 && driveSelected < scan_.count)
        for (uint16_t tenths : scan_.burners[driveSelected].speeds) {
            if (tenths == 0) break;
            xs.push_back(tenths / 10);
        }
    // The stored speed is selected only on the stored drive.
    const int stored = settings_.speed;
    if (driveSelected != settings_.cdDrive) settings_.speed = kBurnSpeedMax;
    SelectStoredSpeed(xs);
    settings_.speed = uint16_t(stored);
}

void LCDVNBurnDlg::CmEraseNow() {
    sendToOwner_(kEraseDiscMessage, 0);
}

void LCDVNBurnDlg::CmOk() {
    settings_.cdDrive = uint8_t(driveSelected);
    const std::string& speed = speedSelected > 0 && speedSelected < int(speeds.size())
                                   ? speeds[speedSelected] : std::string();
    settings_.speed = speed.empty() ? kBurnSpeedMax : uint16_t(std::atoi(speed.c_str()));
    settings_.eraseCDRW = eraseCDRW;
    settings_.overburn = overburn;
    settings_.cdLabel = label;
    settings_.SaveAsDefaultSettings();
    if (LUserSettingGet<bool>("OutputFormat", "BurnCDNow", false))
        sendToOwner_(kBurnMessage, LUserSettingGet<bool>("OutputFormat", "BurnAudioCD", false) ? 1 : 0);
}

bool LCDVNBurnDlg::IsPageValid() {
    const int format = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 0);
    return (format == 2 || format == 3 || format == 4) &&
           LUserSettingGet<bool>("Wizard", "SetOutputFormat", true);
}
