#include "disc/DiscCheck.h"

#include <cstdio>
#include <unistd.h>

namespace {

int reservations = 0;

// How often a running burn or erase is asked for its state.
constexpr unsigned kPollMs = 100;
// How often the drive is asked whether a disc has arrived.
constexpr unsigned kMediaPollMs = 1000;

// A device report while waiting for a disc: 1 when the drive has gone or the user stopped,
// 0 when a disc is present; otherwise undecided.
bool WaitForMediaCallBack(LBurnCallBack<LProcessInterface>& callback, LDiscDevice& device) {
    if (!device.IsValid() || callback.job->IsToStop()) {
        callback.result = 1;
        return callback.decided = true;
    }
    const LDiscDeviceStatus status = device.CopyStatus();
    if (!status.inTransition && status.mediaPresent) {
        callback.result = 0;
        return callback.decided = true;
    }
    return false;
}

bool CheckIsToStopCallBack(LBurnCallBack<LProcessInterface>& callback) {
    if (!callback.job->IsToStop()) return false;
    callback.result = 1;
    return callback.decided = true;
}

} // namespace

void LAcquireMediaReservation(LDiscDevice& device) {
    ++reservations;
    device.AcquireMediaReservation();
}

void LReleaseMediaReservation(LDiscDevice& device) {
    if (reservations <= 0) return;
    --reservations;
    device.ReleaseMediaReservation();
}

void LReleaseAllMediaReservations(LDiscDevice& device) {
    while (reservations > 0) LReleaseMediaReservation(device);
}

int LMediaReservationCount() {
    return reservations;
}

std::string ProgressStateText(const LDiscOperationStatus& status) {
    char text[64] = {};
    const int track = status.currentTrack;
    switch (status.state) {
    case LDiscOperationState::Preparing:
        if (track) std::snprintf(text, sizeof text, "Preparing track %d ...", track);
        else return "Preparing...";
        break;
    case LDiscOperationState::TrackWrite:
        if (track) std::snprintf(text, sizeof text, "Writing track %d ...", track);
        break;
    case LDiscOperationState::SessionClose:
    case LDiscOperationState::TrackClose: return "Closing... (this might take a while)";
    case LDiscOperationState::Verifying: return track ? "Verifying..." : "";
    case LDiscOperationState::Erasing: return "Erasing...";
    case LDiscOperationState::Finishing: return "Finishing...";
    case LDiscOperationState::SessionOpen: return "Opening Session...";
    default: break;
    }
    return text;
}

bool ProgressCallBack(LBurnCallBack<LProcessInterface>& callback, const LDiscOperationStatus& status) {
    LProcessInterface& job = *callback.job;
    if (job.IsToStop()) {
        callback.result = 1;
        return callback.decided = true;
    }
    if (status.state == LDiscOperationState::Done || status.state == LDiscOperationState::Failed) {
        callback.result = status.state == LDiscOperationState::Done ? 0 : 2;
        return callback.decided = true;
    }
    job.SetStatus(ProgressStateText(status).c_str(), 1);
    if (status.fraction >= 0.0f) {
        job.SetProgressIndeterminateOff();
        job.SetProgress(status.fraction);
    } else {
        job.SetProgressIndeterminateOn();
    }
    return false;
}

int FollowDiscOperation(LProcessInterface& job, LDiscDevice& device) {
    LBurnCallBack<LProcessInterface> callback{&job};
    while (!ProgressCallBack(callback, device.OperationStatus())) job.ProcessWait(kPollMs);
    if (callback.result == 1) {
        // The drive cannot be let go while it writes: cancel and wait for it to give up.
        device.CancelOperation();
        for (LDiscOperationState state = device.OperationStatus().state;
             state != LDiscOperationState::Done && state != LDiscOperationState::Failed &&
             state != LDiscOperationState::Idle;
             state = device.OperationStatus().state)
            usleep(kPollMs * 1000);
    }
    return callback.result;
}

int druProcessEraseDisk(LProcessInterface& job, LDiscDevice& device, bool complete) {
    job.SetStatus("Erasing rewritable disk...", 1);
    if (!device.StartErase(complete)) return 2;
    return FollowDiscOperation(job, device);
}

int ProcessCheckDriveAndDisk(LProcessInterface& job, LDiscDevice& device,
                             const LDiskBurnSettings& settings, int projectType) {
    for (;;) {
        const LDiscDeviceStatus status = device.CopyStatus();
        if (status.mediaPresent && !status.inTransition) {
            if (status.blank && status.appendable) return 0;
            if (status.erasable) break;
            device.EjectMedia();
        }
        job.SetStatus("Please insert a media ...", 1);
        LBurnCallBack<LProcessInterface> callback{&job};
        while (!CheckIsToStopCallBack(callback)) {
            job.ProcessWait(kMediaPollMs);
            if (WaitForMediaCallBack(callback, device)) break;
        }
        if (callback.result == 1) return 1;
    }
    if (settings.eraseCDRW || projectType == kEraseProjectType)
        return druProcessEraseDisk(job, device, settings.fullErase);
    return 2;
}
