#pragma once

#include <atomic>
#include <functional>
#include <memory>

// Tells a window when a disc is inserted into or removed from a drive: the disc service reports
// that something changed (on any thread); the listener reads every drive's media state on the
// main thread and sends the window its insertion or removal command for a change between absent
// and present. The first report only records the states; drives in transition are skipped until
// they settle. Burn, erase and scan jobs switch all listeners off while they run.
class LDiskEventListener {
public:
    // Commands go to the window through `send`; a command number of 0 is not sent.
    LDiskEventListener(std::function<void(int command)> send, int insertCommand, int removeCommand);
    ~LDiskEventListener();
    LDiskEventListener(const LDiskEventListener&) = delete;
    LDiskEventListener& operator=(const LDiskEventListener&) = delete;

    // Sends the insertion (true) or removal command.
    void EvDiskEvent(bool inserted);
    // A report from the service, on the main thread: compares the drives' states with the last.
    void DiskNotificationCallBack();

    // Process-wide: false while a long job runs.
    static inline std::atomic<bool> bDiskEventEnabled{true};

private:
    struct State;
    std::shared_ptr<State> state_;
    std::shared_ptr<void> watch_;
};

// Switches every listener off while it exists (a burn, erase or scan job runs).
class LDiskEventsOff {
public:
    LDiskEventsOff() { LDiskEventListener::bDiskEventEnabled = false; }
    ~LDiskEventsOff() { LDiskEventListener::bDiskEventEnabled = true; }
    LDiskEventsOff(const LDiskEventsOff&) = delete;
    LDiskEventsOff& operator=(const LDiskEventsOff&) = delete;
};
