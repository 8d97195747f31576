#include "disc/DiskEventListener.h"

#include "burn/DiscService.h"
#include "jobs/MainThreadQueue.h"

#include <vector>

// -1 absent, 0 unknown, 1 present, per drive of the list.
struct LDiskEventListener::State {
    LDiskEventListener* owner;
    std::vector<int> mediaStates;
    bool first = true;
    std::function<void(int)> send;
    int insertCommand;
    int removeCommand;
};

LDiskEventListener::LDiskEventListener(std::function<void(int)> send, int insertCommand,
                                       int removeCommand)
    : state_(std::make_shared<State>(State{this, {}, true, std::move(send), insertCommand,
                                           removeCommand})) {
    std::weak_ptr<State> weak = state_;
    watch_ = DiscService().WatchDeviceChanges([weak] {
        LMainThreadQueue* queue = LMainThreadQueue::Current();
        if (!queue) return;
        queue->Post([weak] {
            if (std::shared_ptr<State> state = weak.lock()) state->owner->DiskNotificationCallBack();
        });
    });
}

LDiskEventListener::~LDiskEventListener() {
    watch_.reset();
    state_->owner = nullptr;
}

void LDiskEventListener::EvDiskEvent(bool inserted) {
    const int command = inserted ? state_->insertCommand : state_->removeCommand;
    if (command != 0 && state_->send) state_->send(command);
}

void LDiskEventListener::DiskNotificationCallBack() {
    if (!bDiskEventEnabled) return;
    const std::vector<LDiscDeviceRef> devices = DiscService().CopyDeviceArray();
    state_->mediaStates.resize(devices.size(), 0);
    for (size_t i = 0; i < devices.size(); ++i) {
        const LDiscDeviceStatus status = devices[i]->CopyStatus();
        if (status.inTransition) continue;
        const int now = status.mediaPresent ? 1 : -1;
        const int before = state_->mediaStates[i];
        state_->mediaStates[i] = now;
        if (state_->first || before == now) continue;
        if (before == -1 && now == 1) EvDiskEvent(true);
        if (before == 1 && now == -1) EvDiskEvent(false);
    }
    state_->first = false;
}
