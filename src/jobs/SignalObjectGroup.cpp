#include "jobs/SignalObjectGroup.h"

#include <algorithm>

void LSignalObjectGroup::Add(LSignalObjectRef signal) {
    if (count_ >= kMaxMembers) return;
    descriptors_[count_++] = pollfd{signal.Descriptor(), POLLIN, 0};
}

bool LSignalObjectGroup::Select(unsigned int ms) {
    return SelectFirst(count_, ms);
}

bool LSignalObjectGroup::Select(unsigned int ms, LSignalObjectRef extra) {
    descriptors_[count_] = pollfd{extra.Descriptor(), POLLIN, 0};
    return SelectFirst(count_ + 1, ms);
}

bool LSignalObjectGroup::IsReady(LSignalObjectRef signal) const {
    return std::any_of(descriptors_.begin(), descriptors_.begin() + polled_, [&](const pollfd& d) {
        return d.fd == signal.Descriptor() && LSignalObjectRef::IsReadable(d);
    });
}

bool LSignalObjectGroup::SelectFirst(int descriptors, unsigned int ms) {
    polled_ = descriptors;
    const std::span polled(descriptors_.data(), descriptors);
    // An interrupted wait wakes Select with nothing readable: that counts as a failed wait.
    return LSignalObjectRef::Select(polled, ms) &&
           std::ranges::any_of(polled, LSignalObjectRef::IsReadable);
}
