#pragma once

#include "burn/DiscService.h"
#include "disc/SCSI.h"
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

// Opens drives for the SCSI layer by their index in the drive list `devices` gives: the Virtual
// Burner's entry as its MMC drive on the same disc, every other one through SG_IO among the
// drive nodes of `folder`, matched by the vendor and product the list names it with. An index
// the list does not have, or a drive that cannot be opened, gives null and the reason.
LSCSI::Opener MakeSCSIDriveOpener(std::function<std::vector<LDiscDeviceRef>()> devices,
                                  std::shared_ptr<LVirtualBurner> virtualBurner,
                                  std::string folder = "/dev");

// Makes the system's drives the program's disc service and the SCSI layer's way of opening
// them (once; later calls do nothing) and returns the service. A Virtual Burner setting that
// cannot be read is reported on stderr once.
LSystemDiscService& InstallSystemDiscService();
