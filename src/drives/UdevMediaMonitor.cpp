#include "drives/UdevMediaMonitor.h"

#include <libudev.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

LUdevMediaMonitor::LUdevMediaMonitor(std::function<void()> changed) : changed_(std::move(changed)) {
    udev_ = udev_new();
    if (!udev_) return;
    monitor_ = udev_monitor_new_from_netlink(udev_, "udev");
    if (!monitor_ || udev_monitor_filter_add_match_subsystem_devtype(monitor_, "block", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor_) < 0 || pipe(stopPipe_) != 0)
        return;
    thread_ = std::thread(&LUdevMediaMonitor::Run, this);
}

LUdevMediaMonitor::~LUdevMediaMonitor() {
    if (thread_.joinable()) {
        const char stop = 1;
        (void)!write(stopPipe_[1], &stop, 1);
        thread_.join();
    }
    for (int fd : stopPipe_)
        if (fd >= 0) close(fd);
    if (monitor_) udev_monitor_unref(monitor_);
    if (udev_) udev_unref(udev_);
}

void LUdevMediaMonitor::Run() {
    pollfd fds[2] = {{udev_monitor_get_fd(monitor_), POLLIN, 0}, {stopPipe_[0], POLLIN, 0}};
    while (poll(fds, 2, -1) >= 0 || errno == EINTR) {
        if (fds[1].revents) return;
        if (!(fds[0].revents & POLLIN)) continue;
        udev_device* device = udev_monitor_receive_device(monitor_);
        if (!device) continue;
        const char* action = udev_device_get_action(device);
        const char* media = udev_device_get_property_value(device, "DISK_MEDIA_CHANGE");
        const char* eject = udev_device_get_property_value(device, "DISK_EJECT_REQUEST");
        const bool isChange = action && std::strcmp(action, "change") == 0 && (media || eject);
        udev_device_unref(device);
        if (isChange) changed_();
    }
}
