#include "jobs/SignalObject.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

bool LSignalObjectRef::WaitSignal(unsigned int ms) const {
    pollfd descriptor{descriptor_, POLLIN, 0};
    return Select(std::span(&descriptor, 1), ms);
}

bool LSignalObjectRef::IsReadable(const pollfd& descriptor) {
    return (descriptor.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
}

bool LSignalObjectRef::Select(std::span<pollfd> descriptors, unsigned int ms) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
    for (pollfd& descriptor : descriptors)
        descriptor.revents = 0;
    for (;;) {
        // poll takes an int time-out; longer limited waits run in several rounds.
        int timeout = -1;
        if (ms != WAIT_FOREVER) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            timeout = static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
        }
        const int ready = poll(descriptors.data(), descriptors.size(), timeout);
        if (ready < 0) return errno == EINTR;
        if (ready > 0)
            return std::ranges::any_of(descriptors, IsReadable); // only invalid descriptors: failed
        if (ms != WAIT_FOREVER && Clock::now() >= deadline) return false;
    }
}

LSignalObject::LSignalObject() {
    int descriptors[2];
    if (pipe2(descriptors, O_NONBLOCK | O_CLOEXEC) == 0) {
        readDescriptor_ = descriptors[0];
        writeDescriptor_ = descriptors[1];
    }
}

LSignalObject::~LSignalObject() {
    if (readDescriptor_ >= 0) close(readDescriptor_);
    if (writeDescriptor_ >= 0) close(writeDescriptor_);
}

void LSignalObject::Signal() {
    const char byte = 1;
    // A full pipe (EAGAIN) means the object is set already.
    while (write(writeDescriptor_, &byte, 1) < 0 && errno == EINTR) {
    }
}

void LSignalObject::Reset() {
    char bytes[64];
    for (;;) {
        const ssize_t got = read(readDescriptor_, bytes, sizeof bytes);
        if (got > 0) continue;
        if (got < 0 && errno == EINTR) continue;
        return;
    }
}
