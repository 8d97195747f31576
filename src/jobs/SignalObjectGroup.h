#pragma once

#include "jobs/SignalObject.h"

#include <array>

// Up to 255 signals waited on together. A wait leaves the members in place; IsReady() then tells
// which of them woke it.
class LSignalObjectGroup {
public:
    static constexpr int kMaxMembers = 255;

    // Ignored once the group holds kMaxMembers signals.
    void Add(LSignalObjectRef signal);
    int Count() const { return count_; }

    // Waits up to ms until at least one member is set; false on time-out or a failed or
    // interrupted wait.
    bool Select(unsigned int ms);
    // The same, also waking for `extra` (a waiter's stop signal) without making it a member.
    bool Select(unsigned int ms, LSignalObjectRef extra);
    // Whether `signal` (a member or the extra signal) was readable at the end of the last wait.
    bool IsReady(LSignalObjectRef signal) const;

private:
    bool SelectFirst(int descriptors, unsigned int ms);

    // One spare slot for the extra signal.
    std::array<pollfd, kMaxMembers + 1> descriptors_{};
    int count_ = 0;
    int polled_ = 0;
};
