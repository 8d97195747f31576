#include "drives/SystemDiscService.h"

#include "drives/LibburnDrive.h"
#include "drives/SgIoTransport.h"
#include "drives/UdevMediaMonitor.h"
#include "drives/VirtualBurner.h"
#include "drives/VirtualMMCDrive.h"

#include <cstdio>
#include <cstdlib>

LSystemDiscService::LSystemDiscService(std::string virtualSetting, bool scanLibburn)
    : virtualSetting_(std::move(virtualSetting)), scanLibburn_(scanLibburn) {
    if (virtualSetting_.empty()) return;
    LVirtualBurnerOptions options;
    if (LVirtualBurnerOptions::Parse(virtualSetting_, options, settingError_))
        virtual_ = std::make_shared<LVirtualBurner>(std::make_shared<LVirtualDisc>(options));
}

void LSystemDiscService::Scan() {
    if (scanned_) return;
    scanned_ = true;
    if (scanLibburn_) devices_ = ScanLibburnDrives();
    if (virtual_) devices_.push_back(virtual_);
}

std::vector<LDiscDeviceRef> LSystemDiscService::CopyDeviceArray() {
    std::lock_guard lock(mutex_);
    Scan();
    return devices_;
}

std::shared_ptr<LVirtualBurner> LSystemDiscService::VirtualBurner() {
    return virtual_;
}

std::shared_ptr<void> LSystemDiscService::WatchDeviceChanges(std::function<void()> changed) {
    struct Watch {
        std::shared_ptr<void> virtualWatch;
        std::unique_ptr<LUdevMediaMonitor> udev;
    };
    auto watch = std::make_shared<Watch>();
    if (virtual_) watch->virtualWatch = virtual_->Disc().Watch(changed);
    if (scanLibburn_) watch->udev = std::make_unique<LUdevMediaMonitor>(changed);
    return watch;
}

LSCSI::Opener MakeSCSIDriveOpener(std::function<std::vector<LDiscDeviceRef>()> devices,
                                  std::shared_ptr<LVirtualBurner> virtualBurner,
                                  std::string folder) {
    return [devices = std::move(devices), virtualBurner = std::move(virtualBurner),
            folder = std::move(folder)](int index, std::string& error) -> std::unique_ptr<LSCSITransport> {
        const std::vector<LDiscDeviceRef> list = devices();
        const bool listed = index >= 0 && size_t(index) < list.size();
        if (listed && virtualBurner && list[size_t(index)] == virtualBurner)
            return std::make_unique<LVirtualMMCDrive>(virtualBurner->SharedDisc());
        std::vector<LDriveIdentity> identities;
        for (const LDiscDeviceRef& device : list) {
            const LDiscDeviceInfo info = device->CopyInfo();
            identities.push_back({info.vendor, info.product});
        }
        return OpenSgIoDrive(index, identities, error, folder);
    };
}

LSystemDiscService& InstallSystemDiscService() {
    static const std::shared_ptr<LSystemDiscService> service = [] {
        const char* setting = std::getenv("VINORA_VIRTUAL_BURNER");
        auto made = std::make_shared<LSystemDiscService>(setting ? setting : "", true);
        if (!made->SettingError().empty())
            std::fprintf(stderr, "VINORA_VIRTUAL_BURNER: %s\n", made->SettingError().c_str());
        SetDiscService(made);
        SetSCSIDriveOpener(MakeSCSIDriveOpener([made] { return made->CopyDeviceArray(); },
                                               made->VirtualBurner()));
        return made;
    }();
    return *service;
}
