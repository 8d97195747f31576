#include "platform/FileLock.h"

#include <cerrno>
#include <chrono>
#include <sys/file.h>
#include <thread>

namespace {

// One flock() call, repeated when a signal interrupts it.
int LockOnce(int fd, int operation) {
    int result;
    do {
        result = flock(fd, operation);
    } while (result != 0 && errno == EINTR);
    return result;
}

} // namespace

bool flocktimed(int fd, int operation, uint32_t waitMs) {
    if (waitMs == kWaitForever) return LockOnce(fd, operation) == 0;

    bool lastTry = false;
    for (uint64_t step = waitMs / 32 + 1;; step *= 2) {
        if (LockOnce(fd, operation | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK || lastTry) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(step));
        lastTry = waitMs <= 2 * step;
    }
}
