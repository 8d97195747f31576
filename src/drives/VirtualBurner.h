#pragma once

#include "burn/DiscService.h"
#include "drives/VirtualDisc.h"
#include "platform/File.h"

#include <atomic>
#include <mutex>
#include <thread>

// The Virtual Burner as a drive of the disc service: "Vinora" "Virtual Burner". An audio burn
// writes PATH.bin (raw CD-DA, 2352-byte blocks, 16-bit little-endian stereo, tracks back to
// back) and PATH.cue (one FILE line, TRACK nn AUDIO and INDEX 01 at each track's first block,
// TITLE and PERFORMER with CD-TEXT), both put in place only when the whole burn succeeded.
// An erase makes a rewritable disc blank again and removes the two files.
class LVirtualBurner : public LDiscDevice {
public:
    explicit LVirtualBurner(std::shared_ptr<LVirtualDisc> disc);
    ~LVirtualBurner() override;

    LVirtualDisc& Disc() { return *disc_; }
    // The same disc for the Virtual Burner's MMC drive.
    std::shared_ptr<LVirtualDisc> SharedDisc() const { return disc_; }

    LDiscDeviceInfo CopyInfo() override;
    LDiscDeviceStatus CopyStatus() override;
    bool IsValid() override { return true; }
    bool EjectMedia() override;
    bool CloseTray() override;
    bool AcquireMediaReservation() override;
    void ReleaseMediaReservation() override;
    void ReleaseExclusiveAccess() override {}
    bool StartErase(bool complete) override;
    bool StartAudioBurn(const std::vector<LDiscAudioTrack>& layout,
                        const LDiscBurnOptions& options) override;
    LDiscOperationStatus OperationStatus() override;
    void CancelOperation() override;

private:
    bool Start(void (LVirtualBurner::*work)());
    void EraseWork();
    void BurnWork();
    uint32_t LayoutBlocks() const;
    bool WriteTracks(LFile& bin);
    std::string CueSheet() const;
    void SetStatus(LDiscOperationState state, float fraction, int track);
    // Waits the "slow" delay of one write; false when cancelled meanwhile.
    bool SlowWrite();

    std::shared_ptr<LVirtualDisc> disc_;
    std::mutex mutex_;
    LDiscOperationStatus status_;
    std::thread worker_;
    std::atomic<bool> cancel_{false};
    int reservations_ = 0;
    std::vector<LDiscAudioTrack> layout_;
    LDiscBurnOptions options_;
};
