#pragma once

#include <sys/types.h>

// Thread priorities on a 0..127 scale, mapped onto the Linux scheduler:
//   91            real-time SCHED_FIFO where the user may use it (CAP_SYS_NICE or
//                 RLIMIT_RTPRIO), otherwise the highest time-sharing level the user may set
//   64..127       SCHED_OTHER, nice -10 where permitted, else nice 0
//   31..63        SCHED_OTHER, nice 0 (normal threads, the player's threads)
//   1..30         SCHED_OTHER, nice 10 (background work such as the processing queue)
//   0             SCHED_OTHER, nice 19 (lowest: the disc image builder)
// An unprivileged thread can raise its nice value but not lower it again, so a lowered thread
// stays low; refused changes are silently skipped.
namespace ThreadPriority {

constexpr int kRealTime = 91;
constexpr int kNormal = 31;

// Applies `priority` to the kernel thread `thread` (a gettid() value).
void Apply(pid_t thread, int priority);
// The priority the kernel thread runs at, on the same scale; kNormal when it cannot be read.
int Read(pid_t thread);

} // namespace ThreadPriority
