#pragma once

#include "burn/DiscService.h"
#include "drives/VirtualDisc.h"

#include <mutex>

class LVirtualBurner;

// The program's drives: those libburn finds, then the Virtual Burner when VINORA_VIRTUAL_BURNER
// is set. The list is made once, on first use, and kept: its order never changes while the
// program runs.
class LSystemDiscService : public LDiscService {
public:
    // `virtualSetting` is VINORA_VIRTUAL_BURNER's text (empty for none); `scanLibburn` false
    // leaves the real drives out.
    LSystemDiscService(std::string virtualSetting, bool scanLibburn);

    std::vector<LDiscDeviceRef> CopyDeviceArray() override;
    std::shared_ptr<void> WatchDeviceChanges(std::function<void()> changed) override;

    // The Virtual Burner; null when it is not set up. `error` says why a setting was refused.
    std::shared_ptr<LVirtualBurner> VirtualBurner();
    const std::string& SettingError() const { return settingError_; }

private:
    void Scan();

    std::string virtualSetting_;
    std::string settingError_;
    bool scanLibburn_;
    std::mutex mutex_;
    bool scanned_ = false;
    std::vector<LDiscDeviceRef> devices_;
    std::shared_ptr<LVirtualBurner> virtual_;
};

// Makes the system's drives the program's disc service (once; later calls do nothing) and
// returns it. A Virtual Burner setting that cannot be read is reported on stderr once.
LSystemDiscService& InstallSystemDiscService();
