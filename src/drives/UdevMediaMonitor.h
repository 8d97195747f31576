#pragma once

#include <functional>
#include <thread>

// Watches the kernel's block devices for media changes (a disc inserted, removed or the tray
// moved: "change" events with DISK_MEDIA_CHANGE) and calls `changed` on its own thread for each.
// Without udev (a container, no /run/udev) it watches nothing.
class LUdevMediaMonitor {
public:
    explicit LUdevMediaMonitor(std::function<void()> changed);
    ~LUdevMediaMonitor();
    LUdevMediaMonitor(const LUdevMediaMonitor&) = delete;
    LUdevMediaMonitor& operator=(const LUdevMediaMonitor&) = delete;

private:
    void Run();

    std::function<void()> changed_;
    struct udev* udev_ = nullptr;
    struct udev_monitor* monitor_ = nullptr;
    int stopPipe_[2] = {-1, -1};
    std::thread thread_;
};
