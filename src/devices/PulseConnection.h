#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

// The process's one connection to the PulseAudio server (or PipeWire's PulseAudio server): a
// threaded main loop and a context, connected on first use without starting a server. Every
// wait for the server is bounded, so a machine without a sound server answers quickly.
class LPulseConnection {
public:
    // How long any single exchange with the server may take.
    static constexpr std::chrono::milliseconds kTimeout{2000};

    // The connection, made first when there is none or the last one broke; null with `error`
    // set when no server answers. Thread-safe; never from the main loop's thread.
    static std::shared_ptr<LPulseConnection> Get(std::string& error);

    LPulseConnection(const LPulseConnection&) = delete;
    LPulseConnection& operator=(const LPulseConnection&) = delete;
    ~LPulseConnection();

    pa_threaded_mainloop* Loop() const { return loop_; }
    pa_context* Context() const { return context_; }
    bool IsReady() const;
    // The server's last error as text.
    std::string LastError() const;

private:
    LPulseConnection() = default;
    bool Connect(std::string& error);

    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
};

// Holds the main loop's lock for a scope; in the main loop's own thread (a callback) the lock
// is held already and nothing is done.
class LPulseLock {
public:
    explicit LPulseLock(pa_threaded_mainloop* loop)
        : loop_(pa_threaded_mainloop_in_thread(loop) ? nullptr : loop) {
        if (loop_) pa_threaded_mainloop_lock(loop_);
    }
    ~LPulseLock() {
        if (loop_) pa_threaded_mainloop_unlock(loop_);
    }
    LPulseLock(const LPulseLock&) = delete;
    LPulseLock& operator=(const LPulseLock&) = delete;

private:
    pa_threaded_mainloop* loop_;
};

// Lets a thread wait, without the main loop's lock, for a callback to say it is done.
class LPulseWaiter {
public:
    void Done() {
        const std::lock_guard lock(mutex_);
        done_ = true;
        changed_.notify_all();
    }
    bool Wait(std::chrono::milliseconds timeout) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, timeout, [this] { return done_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
};

// Starts an operation with `start(context)` under the main loop's lock and waits up to the
// time limit for its callbacks to call waiter.Done(); an operation that does not finish in
// time is cancelled, so its callbacks never run afterwards. Not from the main loop's thread.
template <typename Start>
bool LPulseRun(const LPulseConnection& connection, LPulseWaiter& waiter, Start start) {
    if (pa_threaded_mainloop_in_thread(connection.Loop())) return false;
    pa_operation* operation;
    {
        const LPulseLock lock(connection.Loop());
        operation = start(connection.Context());
    }
    if (!operation) return false;
    const bool done = waiter.Wait(LPulseConnection::kTimeout);
    const LPulseLock lock(connection.Loop());
    if (!done) pa_operation_cancel(operation);
    pa_operation_unref(operation);
    return done;
}

// Runs an operation that reports success or failure (a pa_context_success_cb_t taking the
// LPulseSuccess as its user data); from the main loop's own thread it is started and assumed to
// succeed, as nothing may wait there.
struct LPulseSuccess {
    LPulseWaiter waiter;
    bool success = false;
    static void Report(pa_context*, int success, void* user) {
        auto* self = static_cast<LPulseSuccess*>(user);
        self->success = success != 0;
        self->waiter.Done();
    }
};
template <typename Start>
bool LPulseRunForSuccess(const LPulseConnection& connection, Start start) {
    if (pa_threaded_mainloop_in_thread(connection.Loop())) {
        pa_operation* operation = start(connection.Context(), nullptr, nullptr);
        if (operation) pa_operation_unref(operation);
        return operation != nullptr;
    }
    LPulseSuccess result;
    return LPulseRun(connection, result.waiter,
                     [&](pa_context* context) {
                         return start(context, LPulseSuccess::Report, &result);
                     }) &&
           result.success;
}

// Starts an operation whose outcome nobody waits for.
inline void LPulseForget(pa_operation* operation) {
    if (operation) pa_operation_unref(operation);
}
