#pragma once

#include "jobs/Thread.h"
#include "jobs/ThreadQueuedNotify.h"
#include "record/SoundRecLLQT.h"
#include "record/SoundRecorderNotify.h"
#include "sound/AudioBuffer.h"
#include "sound/ConvertRateChannels.h"
#include "sound/DB.h"
#include "sound/SoundSink.h"
#include "sound/SoundTime.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

// Flags of LSoundRecorderTemplate::Start.
enum LSoundRecorderFlags : unsigned short {
    srfWaitForGo = 1,    // capture only after Go()
    srfRecordAtOnce = 2, // record from the first buffer instead of waiting for audio
    // read the next buffer only once the owner has had the levels of the last one, so that it
    // sees every report of an input that runs faster than real time (a file played as input)
    srfPaced = 4,
};

// Records a sound input into a sink on a worker thread, with sound-activated recording: it can
// wait until the input rises to a threshold (keeping the last half buffer, 50 ms, before the
// buffer that reached it when the audio was already rising in that buffer's first half), pause
// itself after a stretch of silence (rewinding the sink to 450 ms after the last loud buffer), and
// drop trailing silence when stopped (keeping 50 ms). It stops by itself at a maximum length and at
// the end of a finite input. The owner hears about it through LSoundRecorderNotify on its own
// thread, which must run a main-thread queue (LMainThreadQueue) when the recorder is made.
//
// States: 0 stopped, 1 waiting for audio, 2 recording. Start and Stop belong to the owner's
// thread; the worker owns the buffers and the sink until Stop has joined it.
template <typename LowLevel>
class LSoundRecorderTemplate : public LThread, public LThreadQueuedNotify {
public:
    static constexpr int kWorkerPriority = 80;
    static constexpr unsigned int kStartWaitMs = 1500;
    // Audio kept after the last loud buffer when stopped.
    static constexpr int32_t kStopTailMs = 50;
    // Where a pause in silence rewinds to, after the last loud buffer.
    static constexpr int32_t kPauseTailMs = 450;

    explicit LSoundRecorderTemplate(LSoundRecorderNotify* notify = nullptr, long user = 0)
        : notify_(notify), user_(user) {}
    ~LSoundRecorderTemplate() override { StopThreadNow(); }

    LowLevel& GetLowLevel() { return lowLevel_; }
    int GetState() const { return state_; }
    LSoundTime GetLastLoud() const { return LSoundTime(lastLoud_); }

    // Starts recording into `sink`: maxLength 0 is no limit; startThreshold is the level a
    // buffer must reach to start (or resume) the recording, -127 for at once; after more than
    // silenceTime below startThreshold - 4 dB the recorder pauses. False when the sink cannot
    // take audio or the device cannot be opened.
    bool Start(LSoundSink& sink, LSoundTime maxLength, LDB startThreshold, LSoundTime silenceTime,
               unsigned short flags);
    // Lets a recorder started with srfWaitForGo capture.
    void Go() { go_.Signal(); }
    // Stops the worker, drops the silence after the last loud buffer but 50 ms and finishes the
    // sink.
    void Stop();
    // Ends the recording into the current sink as Stop does and goes on into `sink`, waiting for
    // audio, with the input kept open: nothing it delivers in between is lost. False, with
    // nothing changed, when the recorder is stopped or the sink cannot take audio.
    bool SwitchSink(LSoundSink& sink);

protected:
    void EvNotify() override;
    void ThreadFunction() override;

private:
    // The recording's length, from the sink the owner gave (the device's audio may reach it
    // through a format converter, whose own count starts at the converter).
    LSoundTime SinkLength() const {
        return LSoundTime::FromSamples(target_->GetPosition(), target_->GetSampleRate());
    }
    // The level of each sink channel over `frames` frames of a device buffer, and their mono
    // level.
    LDB MeasureLevels(const int* buffer, int frames, LDBMC& levels) const;
    // Cuts the current sink back to 50 ms after the last loud buffer and lets it go.
    void FinishSink();
    // Handles one buffer in the waiting and recording states.
    void Waiting(LDB mono);
    void Recording(LDB mono);
    void Notify(void (LSoundRecorderNotify::*call)(long)) {
        if (notify_) (notify_->*call)(user_);
    }

    LowLevel lowLevel_;
    LSoundRecorderNotify* notify_;
    long user_;
    std::atomic<int> state_ = 0;
    // What the worker writes into (the owner's sink or a converter to it) and the owner's sink;
    // a switch of sinks takes the lock the worker holds while it handles a buffer.
    std::mutex sinkLock_;
    LSoundSink sink_;
    LSoundSink target_;
    std::atomic<int32_t> lastLoud_ = 0;
    LSignalObject started_;
    LSignalObject go_;
    std::mutex levelsLock_;
    LDBMC levels_;
    LSoundTime maxLength_;
    LDB startThreshold_ = LDB::kSilence;
    LDB silenceThreshold_ = LDB::kSilence;
    LSoundTime silenceTime_;
    std::atomic<bool> autoStop_ = false;
    std::atomic<bool> levelPending_ = false;
    std::atomic<bool> statePending_ = false;
    bool paced_ = false;
    LSignalObject levelsTaken_;
    int generation_ = 0; // counts starts, so that a report of an old run releases nothing

    // The worker's buffers: the one just read and the one before it (for the pre-roll).
    std::vector<int> cur_;
    std::vector<int> prev_;
    bool prevValid_ = false;
};

using LSoundRecorder = LSoundRecorderTemplate<LSoundRecLLQT>;

template <typename LowLevel>
bool LSoundRecorderTemplate<LowLevel>::Start(LSoundSink& sink, LSoundTime maxLength,
                                             LDB startThreshold, LSoundTime silenceTime,
                                             unsigned short flags) {
    Stop();
    if (sink->IsFailed()) return false;
    sink_ = sink;
    target_ = sink;
    levels_.count = sink_->GetChannels();
    maxLength_ = maxLength;
    startThreshold_ = startThreshold;
    silenceThreshold_ = static_cast<int8_t>(std::max(startThreshold - 4, int(LDB::kSilence)));
    silenceTime_ = silenceTime;
    lastLoud_ = SinkLength().GetMS();
    autoStop_ = false;
    levelPending_ = false;
    statePending_ = false;
    state_ = flags & srfRecordAtOnce ? 2 : 1;
    paced_ = (flags & srfPaced) != 0;
    levelsTaken_.Reset();
    ++generation_;
    started_.Reset();
    if (flags & srfWaitForGo)
        go_.Reset();
    else
        go_.Signal();
    StartSame();
    if (!started_.WaitSignal(kStartWaitMs) || state_ == 0) {
        StopThreadNow();
        sink_.Close();
        target_.Close();
        lastLoud_ = 0;
        state_ = 0;
        return false;
    }
    Notify(state_ == 2 ? &LSoundRecorderNotify::srntfRecord : &LSoundRecorderNotify::srntfWait);
    if (notify_) notify_->srntfTime(GetLastLoud(), user_);
    return true;
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::FinishSink() {
    // A converter hands on what it still holds before the end is cut.
    sink_.Close();
    const int keep = LSoundTime(lastLoud_ + kStopTailMs).GetSamples(target_->GetSampleRate());
    if (target_->GetPosition() > keep) target_->Seek(keep);
    target_.Close();
    lastLoud_ = 0;
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::Stop() {
    if (state_ == 0) return;
    StopThreadNow();
    FinishSink();
    state_ = 0;
    Notify(&LSoundRecorderNotify::srntfStop);
}

template <typename LowLevel> bool LSoundRecorderTemplate<LowLevel>::SwitchSink(LSoundSink& sink) {
    if (state_ == 0 || !IsRunning() || sink->IsFailed()) return false;
    LSoundSink converted = sink;
    LSinkConvertRateChannels(lowLevel_.GetSampleRate(),
                             static_cast<unsigned char>(lowLevel_.GetChannels()), converted);
    if (converted->IsFailed()) return false;
    {
        std::lock_guard hold(sinkLock_);
        FinishSink();
        sink_ = converted;
        target_ = sink;
        state_ = 1;
    }
    Notify(&LSoundRecorderNotify::srntfWait);
    return true;
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::EvNotify() {
    if (autoStop_) {
        Stop();
        return;
    }
    if (levelPending_.exchange(false) && notify_) {
        LDBMC levels;
        {
            std::lock_guard guard(levelsLock_);
            levels = levels_;
        }
        const int generation = generation_;
        notify_->srntfTime(GetLastLoud(), user_);
        notify_->srntfLevel(levels, user_);
        // The owner may have stopped and started the recorder meanwhile.
        if (paced_ && generation == generation_) levelsTaken_.Signal();
    }
    if (statePending_.exchange(false) && state_ != 0)
        Notify(state_ == 1 ? &LSoundRecorderNotify::srntfWait : &LSoundRecorderNotify::srntfRecord);
}

template <typename LowLevel>
LDB LSoundRecorderTemplate<LowLevel>::MeasureLevels(const int* buffer, int frames,
                                                    LDBMC& levels) const {
    const int channels = lowLevel_.GetChannels();
    levels.count = levels_.count;
    for (int c = 0; c < levels.count; ++c) {
        const auto channel = static_cast<unsigned char>(std::min(c, channels - 1));
        levels.values[c] =
            GetBufferPeakDBChan(channel, buffer, frames, static_cast<unsigned char>(channels));
    }
    return levels.GetMonoDB();
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::Waiting(LDB mono) {
    if (mono < startThreshold_) {
        std::swap(cur_, prev_);
        prevValid_ = true;
        return;
    }
    const int frames = lowLevel_.GetFrames();
    const int half = frames / 2;
    LDBMC firstHalf;
    if (MeasureLevels(cur_.data(), half, firstHalf) >= startThreshold_ && prevValid_)
        sink_->Write(prev_.data() + static_cast<size_t>(half) * lowLevel_.GetChannels(),
                     frames - half);
    sink_->Write(cur_.data(), frames);
    state_ = 2;
    statePending_ = true;
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::Recording(LDB mono) {
    sink_->Write(cur_.data(), lowLevel_.GetFrames());
    const LSoundTime length = SinkLength();
    if (mono >= silenceThreshold_) {
        lastLoud_ = length.GetMS();
    } else if (length.GetMS() - lastLoud_ > silenceTime_.GetMS()) {
        const int32_t resume = std::min(lastLoud_ + kPauseTailMs, length.GetMS());
        target_->Seek(LSoundTime(resume));
        state_ = 1;
        std::swap(cur_, prev_);
        prevValid_ = true;
        statePending_ = true;
    }
    if (maxLength_.GetMS() > 0 && length > maxLength_) autoStop_ = true;
}

template <typename LowLevel> void LSoundRecorderTemplate<LowLevel>::ThreadFunction() {
    if (!lowLevel_.Open(sink_)) {
        state_ = 0;
        started_.Signal();
        return;
    }
    cur_.assign(static_cast<size_t>(lowLevel_.GetSamples()), 0);
    prev_.assign(static_cast<size_t>(lowLevel_.GetSamples()), 0);
    prevValid_ = false;
    started_.Signal();

    if (ProcessWaitSignal(go_, WAIT_FOREVER) == WAIT_SIGNALED) {
        SetPriority(kWorkerPriority);
        lowLevel_.Start();
        while (lowLevel_.WaitForDataAndRead(*this, cur_.data())) {
            LDBMC levels;
            const LDB mono = MeasureLevels(cur_.data(), lowLevel_.GetFrames(), levels);
            {
                std::lock_guard guard(levelsLock_);
                levels_ = levels;
            }
            {
                std::lock_guard hold(sinkLock_);
                if (state_ == 1)
                    Waiting(mono);
                else
                    Recording(mono);
            }
            // After the end of a finite input only silence would follow: stop there.
            if (lowLevel_.HasEnded()) autoStop_ = true;
            levelPending_ = true;
            PostQueueNotify();
            if (paced_ && !autoStop_) {
                if (ProcessWaitSignal(levelsTaken_, WAIT_FOREVER) != WAIT_SIGNALED) break;
                levelsTaken_.Reset();
            }
            // Once the recorder is to stop, nothing more is written; the owner's Stop, run by
            // the notification, ends the thread.
            if (autoStop_) {
                ProcessWait(WAIT_FOREVER);
                break;
            }
        }
    }
    lowLevel_.SetStopping();
    lowLevel_.Close();
    autoStop_ = false;
    levelPending_ = false;
    state_ = 0;
    statePending_ = true;
}
