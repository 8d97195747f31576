#pragma once

#include "burn/DiskBurnSettings.h"
#include "disc/DiscDrives.h"

#include <functional>
#include <string>
#include <vector>

// The burn settings page without its window: the drive and speed lists, the check boxes and the
// label with their rules, the project size and the disc's capacity, and what OK and the erase
// button do. The window shows these fields and calls the commands.
class LCDVNBurnDlg {
public:
    // Messages to the owner window.
    static constexpr int kEraseDiscMessage = 116;
    static constexpr int kBurnMessage = 2032; // parameter 1: audio CD, 0: data disc

    // `runScan` runs the burner scan behind a progress window with the title given;
    // `sendToOwner` posts a message with its parameter to the owner window.
    LCDVNBurnDlg(std::function<LProcessResult(const char* title, ProcessFindBurners& scan)> runScan,
                 std::function<void(int message, int parameter)> sendToOwner);

    // Fills every control from the settings (the drive list from the service's burners).
    void Init();
    // Stores the chosen drive, refreshes the sizes and rescans the burners: on drive change, on
    // the refresh command and when a disc comes or goes.
    void UpdateCDInfo();
    void SelectDrive(int index);
    void CmEraseNow();
    void CmOk();
    // Whether the page belongs in the setup wizard now.
    static bool IsPageValid();

    // The speed list's fixed entries in whole "x".
    static const std::vector<int>& FixedSpeeds();

    std::vector<std::string> drives;
    int driveSelected = 0;
    std::vector<std::string> speeds;
    int speedSelected = 0;
    bool eraseCDRW = true;
    bool overburn = false;
    bool overburnEnabled = true;
    std::string label;
    bool labelEnabled = true;
    const char* labelCaption = "Disc Label (16 Characters Max.):";
    std::string eraseCaption;
    std::string driveCaption;
    std::string eraseButtonCaption;
    std::string projectSize;
    std::string capacity;

private:
    void SelectStoredSpeed(const std::vector<int>& xs);
    bool AudioCD() const;

    std::function<LProcessResult(const char*, ProcessFindBurners&)> runScan_;
    std::function<void(int, int)> sendToOwner_;
    LCDVNBurnSettings settings_;
    ProcessFindBurners scan_;
};
