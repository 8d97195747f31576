#include "devices/PulseConnection.h"

namespace {

std::mutex gConnectionMutex;
// Kept for the life of the process once made; replaced when the server went away.
std::shared_ptr<LPulseConnection>* gConnection = nullptr;

// Wakes the connecting thread once the context is connected or has failed.
void SignalSettled(pa_context* context, void* user) {
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state))
        static_cast<LPulseWaiter*>(user)->Done();
}

} // namespace

std::shared_ptr<LPulseConnection> LPulseConnection::Get(std::string& error) {
    const std::lock_guard lock(gConnectionMutex);
    if (!gConnection) gConnection = new std::shared_ptr<LPulseConnection>;
    if (*gConnection && (*gConnection)->IsReady()) return *gConnection;
    gConnection->reset();
    std::shared_ptr<LPulseConnection> connection(new LPulseConnection);
    if (!connection->Connect(error)) return nullptr;
    *gConnection = connection;
    return connection;
}

LPulseConnection::~LPulseConnection() {
    if (!loop_) return;
    pa_threaded_mainloop_stop(loop_);
    if (context_) {
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
    }
    pa_threaded_mainloop_free(loop_);
}

bool LPulseConnection::IsReady() const {
    const LPulseLock lock(loop_);
    return pa_context_get_state(context_) == PA_CONTEXT_READY;
}

std::string LPulseConnection::LastError() const {
    const LPulseLock lock(loop_);
    return pa_strerror(pa_context_errno(context_));
}

bool LPulseConnection::Connect(std::string& error) {
    loop_ = pa_threaded_mainloop_new();
    if (!loop_) {
        error = "The sound server's event loop could not be made.";
        return false;
    }
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Vinora Records");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "vinora");
    context_ = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop_), "Vinora Records",
                                            properties);
    pa_proplist_free(properties);
    if (!context_ || pa_threaded_mainloop_start(loop_) < 0) {
        error = "The sound server's event loop could not be started.";
        return false;
    }

    LPulseWaiter waiter;
    {
        const LPulseLock lock(loop_);
        pa_context_set_state_callback(context_, SignalSettled, &waiter);
        if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            waiter.Done();
    }
    const bool settled = waiter.Wait(kTimeout);
    const LPulseLock lock(loop_);
    pa_context_set_state_callback(context_, nullptr, nullptr);
    if (pa_context_get_state(context_) == PA_CONTEXT_READY) return true;
    error = settled ? std::string("No sound server answered: ") +
                          pa_strerror(pa_context_errno(context_)) + "."
                    : std::string("The sound server did not answer in time.");
    return false;
}
