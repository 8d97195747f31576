#pragma once

#include "burn/DiscService.h"

#include <memory>
#include <mutex>
#include <string>

namespace burn {
struct burn_drive;
struct burn_drive_info;
struct burn_disc;
struct burn_source;
} // namespace burn

// A real drive through libburn, known by its address ("/dev/sr0"). The drive is grabbed only
// while it is used: for a status read (released right after), and from the start of an erase or
// burn until ReleaseExclusiveAccess. libburn keeps one list of drives for the process; every call
// into it holds LibburnLock().
class LLibburnDrive : public LDiscDevice {
public:
    LLibburnDrive(std::string address, LDiscDeviceInfo info);
    ~LLibburnDrive() override;

    const std::string& Address() const { return address_; }

    LDiscDeviceInfo CopyInfo() override { return info_; }
    LDiscDeviceStatus CopyStatus() override;
    bool IsValid() override;
    bool EjectMedia() override;
    bool CloseTray() override;
    bool AcquireMediaReservation() override;
    void ReleaseMediaReservation() override;
    void ReleaseExclusiveAccess() override;
    bool StartErase(bool complete) override;
    bool StartAudioBurn(const std::vector<LDiscAudioTrack>& layout,
                        const LDiscBurnOptions& options) override;
    LDiscOperationStatus OperationStatus() override;
    void CancelOperation() override;

private:
    // The grabbed drive, grabbing it first when needed; null when it cannot be had.
    burn::burn_drive* Grab();
    void Release(bool eject);
    void FreeLayout();

    std::string address_;
    LDiscDeviceInfo info_;
    burn::burn_drive_info* grabbed_ = nullptr;
    bool erasing_ = false;
    int reservations_ = 0;
    burn::burn_disc* disc_ = nullptr;
    std::vector<burn::burn_source*> sources_;
};

// libburn, started once for the process.
std::unique_lock<std::mutex> LibburnLock();

// The drives libburn finds, none of them left grabbed. Empty when libburn cannot start.
std::vector<LDiscDeviceRef> ScanLibburnDrives();
