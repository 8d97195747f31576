#include "jobs/ThreadPriority.h"

#include <algorithm>
#include <cerrno>
#include <sched.h>
#include <sys/resource.h>

namespace ThreadPriority {

namespace {

// SCHED_FIFO level for real-time threads: above ordinary real-time helpers, below the
// sound server's own threads.
constexpr int kFifoLevel = 20;

int NiceFor(int priority) {
    if (priority <= 0) return 19;
    if (priority < kNormal) return 10;
    if (priority < 64) return 0;
    return -10;
}

bool SetFifo(pid_t thread, int level) {
    sched_param param{};
    param.sched_priority =
        std::clamp(level, sched_get_priority_min(SCHED_FIFO), sched_get_priority_max(SCHED_FIFO));
    // Child processes started from a real-time thread (the encoder) run as normal processes.
    return sched_setscheduler(thread, SCHED_FIFO | SCHED_RESET_ON_FORK, &param) == 0;
}

bool TrySetFifo(pid_t thread) {
    if (SetFifo(thread, kFifoLevel)) return true;
    // A user allowed a lower real-time level (RLIMIT_RTPRIO) gets that level.
    rlimit limit{};
    if (getrlimit(RLIMIT_RTPRIO, &limit) != 0 || limit.rlim_cur < 1) return false;
    return SetFifo(thread, static_cast<int>(std::min<rlim_t>(limit.rlim_cur, kFifoLevel)));
}

} // namespace

void Apply(pid_t thread, int priority) {
    if (priority == kRealTime && TrySetFifo(thread)) return;
    sched_param param{};
    sched_setscheduler(thread, SCHED_OTHER, &param);
    const int nice = NiceFor(priority);
    if (setpriority(PRIO_PROCESS, thread, nice) != 0 && nice < 0)
        setpriority(PRIO_PROCESS, thread, 0);
}

int Read(pid_t thread) {
    const int policy = sched_getscheduler(thread);
    if (policy < 0) return kNormal;
    if ((policy & ~SCHED_RESET_ON_FORK) == SCHED_FIFO ||
        (policy & ~SCHED_RESET_ON_FORK) == SCHED_RR)
        return kRealTime;
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, thread);
    if (nice == -1 && errno != 0) return kNormal;
    if (nice >= 15) return 0;
    if (nice >= 5) return 1;
    if (nice > -5) return kNormal;
    return 64;
}

} // namespace ThreadPriority
