#pragma once

#include "jobs/SignalObject.h"
#include "jobs/Thread.h"
#include "jobs/ThreadQueuedNotify.h"
#include "play/SoundPlayDevice.h"
#include "play/SoundPlayerGeneric.h"
#include "play/SoundPlayerNotify.h"
#include "sound/DB.h"
#include "sound/SoundSource.h"
#include "sound/SoundTime.h"

#include <atomic>
#include <mutex>

// The thread that takes played buffers back from the output for a player.
template <typename Player> class LSoundPlayerDoneHandlerThread : public LThread {
public:
    explicit LSoundPlayerDoneHandlerThread(Player& player) : player_(player) {}
    ~LSoundPlayerDoneHandlerThread() override { StopThreadNow(); }

protected:
    void ThreadFunction() override { player_.ThreadFunctionDoneHandler(); }

private:
    Player& player_;
};

// Plays a source on the chosen output device. The player's own thread (the feeder) reads the
// source into the device layer's ring; a second thread waits for played buffers. Play, stop,
// position and level reach the listener on the main thread, through EvNotify. The player must
// be made, used and destroyed on the main thread, after the main-thread queue has been set.
// Destroying it stops it without telling the listener.
template <typename Generic>
class LSoundPlayerTemplate : public LThread, public LThreadQueuedNotify, public LSoundPlayerNotify {
public:
    // Full scale of 16-bit audio in internal samples: louder sources are limited to it.
    static constexpr int kPeakLimit = 524272;

    LSoundPlayerTemplate();
    ~LSoundPlayerTemplate() override;

    // Stops what is playing and plays `source` from its position. Flags as for the device
    // layer's Init (kStartPaused). False when the source has an error or no output opens.
    bool Start(LSoundSource& source, unsigned short flags = 0);
    // Stops playing; the listener hears spntfStop when something was playing.
    void Stop();
    // Goes on from a frame of the source (at the source's own rate), or from a time.
    void Seek(int frame);
    void Seek(const LSoundTime& time);
    void SetPlayVolume(LDB db);
    void SetDevice(const LSoundPlayDevice& device);
    // The level of the last played buffer, one channel.
    LDBMC GetDB() const { return generic_.GetDB(); }

    // The listener and the value passed back with each call; nullptr makes the player its own
    // (silent) listener again.
    void SetListener(LSoundPlayerNotify* listener, long userValue);
    bool IsPlaying() const { return generic_.Device().IsStarted(); }
    Generic& GetGeneric() { return generic_; }

protected:
    void ThreadFunction() override;
    void EvNotify() override;

private:
    friend class LSoundPlayerDoneHandlerThread<LSoundPlayerTemplate>;

    void ThreadFunctionDoneHandler();
    // Waits for the output to play what is still queued, then reports the end.
    void Drain();
    void RaiseThread(bool feeder);
    void Notify();
    void StopPlaying(bool wasStarted);

    Generic generic_;
    LDB volume_ = 0;
    LSoundPlayerNotify* listener_ = this;
    long userValue_ = 0;
    LSoundSource source_;
    // Which of the two threads runs at real-time priority: at most one flag is set, and it is
    // set exactly while that thread is raised. The feeder is raised while it waits for a
    // streaming source; the completion thread while the ring is full, and also when it has
    // played more than 32 buffers without the ring filling up, which it records in its own
    // flag. RaiseThread changes both flags together under priorityLock_, so a change lowers
    // only the thread that is really up.
    bool feederRaised_ = false;
    bool completionRaised_ = false;
    std::mutex priorityLock_;
    std::atomic<int> playedSinceFeed_ = 0;
    LSignalObject bufferPlayed_;
    std::atomic<bool> finished_ = false;
    std::atomic<bool> bufferDone_ = false;
    // A notification is posted and EvNotify has not yet run: later news waits for it.
    std::atomic<bool> notifyPending_ = false;
    LSoundPlayerDoneHandlerThread<LSoundPlayerTemplate> doneThread_{*this};
};

using LSoundPlayer = LSoundPlayerTemplate<LSoundPlayerGeneric>;
extern template class LSoundPlayerTemplate<LSoundPlayerGeneric>;
