#pragma once

#include <cstdint>

// A wait of this many milliseconds never gives up.
inline constexpr uint32_t kWaitForever = 0xFFFFFFFF;

// Takes an advisory flock() lock (LOCK_SH or LOCK_EX) on an open file, waiting at most about
// `waitMs` milliseconds while another open file holds a conflicting lock. The waits between
// tries start at waitMs / 32 + 1 and double each time, until the next wait would reach half of
// the limit: for 5000 ms they are 157, 314, 628, 1256 and 2512 ms. Returns whether the lock
// was taken; any error other than a conflicting lock ends the attempt at once.
bool flocktimed(int fd, int operation, uint32_t waitMs);
