#pragma once

#include <poll.h>
#include <span>

// Waits take unsigned 32-bit milliseconds; this value means no limit.
constexpr unsigned int WAIT_FOREVER = 0xFFFFFFFF;

// The read end of a signal object: all that a wait needs.
class LSignalObjectRef {
public:
    explicit LSignalObjectRef(int descriptor) : descriptor_(descriptor) {}

    int Descriptor() const { return descriptor_; }

    // Waits up to ms for the signal to be set. Also true when the wait was interrupted by a
    // process signal (EINTR): every waiter re-checks its own condition after waking.
    bool WaitSignal(unsigned int ms) const;
    // Whether the signal is set now, without waiting.
    bool IsSignaled() const { return WaitSignal(0); }

    // Waits up to ms until one of the descriptors is readable and leaves each one's readiness in
    // its revents. True when at least one is readable or the wait was interrupted (EINTR); false
    // on time-out or failure. Negative descriptors are skipped.
    static bool Select(std::span<pollfd> descriptors, unsigned int ms);
    // Whether a descriptor examined by Select was readable (a closed peer counts as readable).
    static bool IsReadable(const pollfd& descriptor);

private:
    int descriptor_;
};

// A manually reset event made of a non-blocking, close-on-exec pipe. It is set while at least one
// byte is unread: Signal() writes a byte, Reset() drains them all. Safe to use from any thread.
// A failed pipe creation leaves both descriptors at -1; such an object is never set.
class LSignalObject {
public:
    LSignalObject();
    ~LSignalObject();
    LSignalObject(const LSignalObject&) = delete;
    LSignalObject& operator=(const LSignalObject&) = delete;

    void Signal();
    void Reset();

    bool WaitSignal(unsigned int ms) const { return Ref().WaitSignal(ms); }
    bool IsSignaled() const { return Ref().IsSignaled(); }

    LSignalObjectRef Ref() const { return LSignalObjectRef(readDescriptor_); }
    operator LSignalObjectRef() const { return Ref(); }

private:
    int readDescriptor_ = -1;
    int writeDescriptor_ = -1;
};
