#pragma once

#include "burn/DiscService.h"

#include <deque>
#include <memory>
#include <vector>

// A drive whose answers a test sets: its status (or a queue of them, the last repeated), what it
// does with an erase or a burn, and a record of what it was asked.
class ScriptedDisc : public LDiscDevice {
public:
    std::deque<LDiscDeviceStatus> statuses{LDiscDeviceStatus{}};
    LDiscDeviceInfo info{"Maker", "Writer", true, true, false, false, false};
    bool valid = true;
    bool burnFails = false;
    // What a burn received: every byte the producers gave, per track.
    std::vector<std::vector<uint8_t>> burnt;
    std::vector<LDiscAudioTrack> layout;
    int ejects = 0;
    int erases = 0;
    int reservations = 0;
    int cancels = 0;
    LDiscOperationState finalState = LDiscOperationState::Done;

    LDiscDeviceInfo CopyInfo() override { return info; }
    LDiscDeviceStatus CopyStatus() override {
        LDiscDeviceStatus status = statuses.front();
        if (statuses.size() > 1) statuses.pop_front();
        return status;
    }
    bool IsValid() override { return valid; }
    bool EjectMedia() override { return ++ejects > 0; }
    bool CloseTray() override { return true; }
    bool AcquireMediaReservation() override { return ++reservations > 0; }
    void ReleaseMediaReservation() override { --reservations; }
    void ReleaseExclusiveAccess() override {}
    bool StartErase(bool) override {
        ++erases;
        statuses = {Blank()};
        return true;
    }
    // The burn runs at once, on the caller's thread, reading each producer to its track's end.
    bool StartAudioBurn(const std::vector<LDiscAudioTrack>& tracks, const LDiscBurnOptions&) override {
        layout = tracks;
        for (const LDiscAudioTrack& track : tracks) {
            std::vector<uint8_t> data(size_t(track.lengthBlocks) * kAudioBlockBytes);
            if (track.producer->PreBurn() != 0) return false;
            for (size_t done = 0; done < data.size();) {
                uint32_t produced = 0;
                const uint32_t ask = uint32_t(std::min<size_t>(data.size() - done, 16 * kAudioBlockBytes));
                if (track.producer->Produce(data.data() + done, ask, produced) != 0 || !produced) break;
                done += produced;
            }
            track.producer->PostBurn();
            burnt.push_back(std::move(data));
        }
        return !burnFails;
    }
    LDiscOperationStatus OperationStatus() override { return {finalState, 1.0f, 0}; }
    void CancelOperation() override { ++cancels; }

    static LDiscDeviceStatus Blank(LDiscMediaKind kind = LDiscMediaKind::CDR) {
        LDiscDeviceStatus status;
        status.mediaPresent = status.blank = status.appendable = true;
        status.erasable = kind == LDiscMediaKind::CDRW;
        status.kind = kind;
        status.freeBlocks = 359847;
        return status;
    }
    static LDiscDeviceStatus Used(LDiscMediaKind kind) {
        LDiscDeviceStatus status = Blank(kind);
        status.blank = status.appendable = false;
        status.freeBlocks = 0;
        status.usedBlocks = 1;
        return status;
    }
};

class ScriptedDiscService : public LDiscService {
public:
    std::vector<LDiscDeviceRef> devices;
    std::vector<LDiscDeviceRef> CopyDeviceArray() override { return devices; }
    std::shared_ptr<void> WatchDeviceChanges(std::function<void()> changed) override {
        watcher = std::move(changed);
        return std::make_shared<int>(0);
    }
    std::function<void()> watcher;
};

// Installs a scripted service with one drive for a test's lifetime.
struct ScriptedServiceScope {
    std::shared_ptr<ScriptedDiscService> service = std::make_shared<ScriptedDiscService>();
    std::shared_ptr<ScriptedDisc> disc = std::make_shared<ScriptedDisc>();
    ScriptedServiceScope() {
        service->devices.push_back(disc);
        SetDiscService(service);
    }
    ~ScriptedServiceScope() { SetDiscService(nullptr); }
};
