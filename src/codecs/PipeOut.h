#pragma once

#include <sys/types.h>

#include <cstddef>

// A command run through /bin/sh with its standard input connected to a pipe that this side
// writes. The pipe is closed on exec, so later child processes do not hold it open (the
// command would never see the end of its input). What the command prints, on its standard
// output or error, goes to the log, never to the user's terminal. Files it creates get the
// mode 0644 (folders 0755) whatever file-creation mask the program runs with.
//
// The pipe is made as large as the system allows (1 MiB by default), and a writer that finds
// it full sleeps a little instead of blocking in the write: a blocked writer is woken each time
// the command reads a few kilobytes, and those wake-ups take the command's processor away from
// it thousands of times a minute.
class LPipeOut {
public:
    LPipeOut() = default;
    ~LPipeOut() { Close(); }
    LPipeOut(const LPipeOut&) = delete;
    LPipeOut& operator=(const LPipeOut&) = delete;

    // Starts the command; false when it cannot be started.
    bool Open(const char* command);
    bool IsOpen() const { return pid_ > 0; }
    // Writes all bytes unbuffered, waiting while the pipe is full. False when the command no
    // longer reads its input; that does not raise SIGPIPE.
    bool Write(const void* data, std::size_t length);
    // Closes the pipe, waits for the command to exit and logs what it printed; its exit status,
    // or -1 when it did not exit normally (or nothing was open).
    int Close();

private:
    // Logs each line the command printed, at most the first kMaxLoggedBytes.
    void LogOutput();

    static constexpr std::size_t kMaxLoggedBytes = 16384;
    // The pipe size asked for.
    static constexpr int kPipeBytes = 1 << 20;
    // The fastest reader expected, in bytes a second: a full pipe is looked at again after the
    // time such a reader takes to empty a quarter of it, so it never runs dry.
    static constexpr long long kFastestReaderBytes = 64LL << 20;

    pid_t pid_ = -1;
    int fd_ = -1;     // the writing end of the command's standard input
    int output_ = -1; // an anonymous file that takes the command's standard output and error
    long fullWaitNs_ = 0; // how long a writer that found the pipe full sleeps
};
