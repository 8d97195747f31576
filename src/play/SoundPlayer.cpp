#include "play/SoundPlayer.h"

#include "jobs/ThreadPriority.h"
#include "sound/PeakLimit.h"

#include <algorithm>
#include <cstdint>

namespace {

// The most frames the feeder asks of the source at a time.
constexpr int kMaxFeedFrames = 8192;
// Buffers played without the ring filling up before the priorities are rearranged.
constexpr int kPlayedBeforeRaise = 32;
constexpr unsigned int kFeedWaitMs = 1000;
constexpr int kStreamingWaitMs = 150;

} // namespace

template <typename Generic> LSoundPlayerTemplate<Generic>::LSoundPlayerTemplate() = default;

template <typename Generic> LSoundPlayerTemplate<Generic>::~LSoundPlayerTemplate() {
    // The listener may already be gone: it is not told.
    StopPlaying(false);
    StopThreadNow();
}

template <typename Generic>
void LSoundPlayerTemplate<Generic>::SetListener(LSoundPlayerNotify* listener, long userValue) {
    listener_ = listener ? listener : this;
    userValue_ = userValue;
}

template <typename Generic>
bool LSoundPlayerTemplate<Generic>::Start(LSoundSource& source, unsigned short flags) {
    Stop();
    if (source->GetError() != sndErrNone) return false;
    source_ = source;
    if (source_->GetMaxAmplitude() > kPeakLimit)
        source_ = LSPPeakLimit(kPeakLimit).OpenSource(source_);
    LSoundPlayerLLQT& device = generic_.Device();
    device.SetVolume(volume_);
    if (!device.Init(source_, flags, this)) {
        source_.Close();
        return false;
    }
    // The ring is reset before the feeder touches it.
    device.Start();
    LThread::Start(ThreadPriority::kNormal);
    listener_->spntfPlay(userValue_);
    return true;
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::Stop() {
    StopPlaying(generic_.Device().IsStarted());
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::StopPlaying(bool wasStarted) {
    StopThreadNow();
    generic_.Device().Stop();
    source_.Close();
    finished_ = false;
    bufferDone_ = false;
    if (wasStarted) listener_->spntfStop(userValue_);
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::Seek(int frame) {
    LSoundPlayerLLQT& device = generic_.Device();
    if (!device.IsStarted()) return;
    StopThreadNow();
    device.PrepareSeek();
    // The device layer counts frames of its own source, which may run at a lower rate.
    LSoundSource& layerSource = device.GetSource();
    const int sourceRate = source_->GetSampleRate();
    const int layerFrame =
        static_cast<int>(int64_t{frame} * layerSource->GetSampleRate() / sourceRate);
    layerSource->Seek(layerFrame);
    device.Seek(layerFrame);
    finished_ = false;
    bufferDone_ = false;
    listener_->spntfTime(
        LSoundTime::FromSamples(layerSource->GetPositionSample(), layerSource->GetSampleRate()),
        userValue_);
    if (device.IsCued())
        device.Cue();
    else
        LThread::Start(ThreadPriority::kNormal);
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::Seek(const LSoundTime& time) {
    Seek(time.GetSamples(source_->GetSampleRate()));
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::SetPlayVolume(LDB db) {
    volume_ = db;
    generic_.Device().SetVolume(db);
}

template <typename Generic>
void LSoundPlayerTemplate<Generic>::SetDevice(const LSoundPlayDevice& device) {
    LSoundPlayerLLQT& layer = generic_.Device();
    const bool wasStarted = layer.IsStarted();
    layer.SetDevice(device);
    // The move to the new output failed and left the layer stopped: end as a stop does.
    if (wasStarted && !layer.IsStarted()) StopPlaying(true);
}

// The feeder.
template <typename Generic> void LSoundPlayerTemplate<Generic>::ThreadFunction() {
    LSoundPlayerLLQT& device = generic_.Device();
    LSoundSource& source = device.GetSource();
    {
        std::lock_guard guard(priorityLock_);
        feederRaised_ = false;
        completionRaised_ = false;
    }
    playedSinceFeed_ = 0;
    doneThread_.Start(ThreadPriority::kNormal);
    while (!IsToStop()) {
        const int remaining =
            std::min(source->GetEndSample() - source->GetPositionSample(), kMaxFeedFrames);
        if (remaining < 1 && !source->IsStreaming()) {
            Drain();
            break;
        }
        if (remaining < 1) {
            // The source is still being recorded into: the feeder is what the output waits for.
            RaiseThread(true);
            source->WaitForStreamingData(kStreamingWaitMs);
            continue;
        }
        if (device.IsNextBufferReady()) {
            device.WriteBuffer(remaining);
            continue;
        }
        // All buffers are queued: the completion thread is what frees the next one.
        playedSinceFeed_ = 0;
        RaiseThread(false);
        ProcessWaitSignal(bufferPlayed_, kFeedWaitMs);
        bufferPlayed_.Reset();
    }
    doneThread_.StopThreadNow();
    device.Standby();
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::Drain() {
    LSoundPlayerLLQT& device = generic_.Device();
    while (!IsToStop() && device.PlayRemainingBuffer()) {
        bufferDone_ = true;
        Notify();
        ProcessWaitSignal(bufferPlayed_, kFeedWaitMs);
        bufferPlayed_.Reset();
    }
    // Asked to stop (a stop, a seek or a device change): the end has not been played.
    if (IsToStop()) return;
    finished_ = true;
    Notify();
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::ThreadFunctionDoneHandler() {
    LSoundPlayerLLQT& device = generic_.Device();
    while (!IsToStop() && !doneThread_.IsToStop()) {
        if (!device.WaitForEmptyBuffer()) break;
        bufferPlayed_.Signal();
        bufferDone_ = true;
        Notify();
        // Many buffers played while the ring never filled: the completion side takes the
        // real-time priority from the feeder.
        if (++playedSinceFeed_ > kPlayedBeforeRaise) RaiseThread(false);
    }
}

// Raises the feeder (feeder true) or the completion thread to real-time priority and lowers
// the other one if it was raised. The flags always name the thread that is up, so each change
// undoes exactly the earlier one.
template <typename Generic> void LSoundPlayerTemplate<Generic>::RaiseThread(bool feeder) {
    std::lock_guard guard(priorityLock_);
    LThread& up = feeder ? static_cast<LThread&>(*this) : doneThread_;
    LThread& down = feeder ? doneThread_ : static_cast<LThread&>(*this);
    bool& upRaised = feeder ? feederRaised_ : completionRaised_;
    bool& downRaised = feeder ? completionRaised_ : feederRaised_;
    if (!upRaised) {
        up.SetPriority(ThreadPriority::kRealTime);
        upRaised = true;
    }
    if (downRaised) {
        down.SetPriority(ThreadPriority::kNormal);
        downRaised = false;
    }
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::Notify() {
    if (!notifyPending_.exchange(true)) PostQueueNotify();
}

template <typename Generic> void LSoundPlayerTemplate<Generic>::EvNotify() {
    notifyPending_ = false;
    if (finished_) {
        listener_->spntfTime(source_.GetEnd(), userValue_);
        Stop();
        return;
    }
    if (bufferDone_.exchange(false)) {
        const LSoundPlayerLLQT& device = generic_.Device();
        listener_->spntfTime(LSoundTime::FromSamples(device.GetPosition(), device.GetSampleRate()),
                             userValue_);
        listener_->spntfLevel(GetDB(), userValue_);
    }
}

template class LSoundPlayerTemplate<LSoundPlayerGeneric>;
