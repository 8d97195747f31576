#pragma once

#include <cstddef>
#include <cstdio>

// A command run through /bin/sh with its standard input connected to a pipe that this side
// writes. The pipe is closed on exec, so later child processes do not hold it open (the
// command would never see the end of its input).
class LPipeOut {
public:
    LPipeOut() = default;
    ~LPipeOut() { Close(); }
    LPipeOut(const LPipeOut&) = delete;
    LPipeOut& operator=(const LPipeOut&) = delete;

    // Starts the command; false when it cannot be started.
    bool Open(const char* command);
    bool IsOpen() const { return stream_ != nullptr; }
    // Writes all bytes unbuffered, blocking while the pipe is full. False when the command no
    // longer reads its input; that does not raise SIGPIPE.
    bool Write(const void* data, std::size_t length);
    // Closes the pipe and waits for the command to exit; its exit status, or -1 when it did
    // not exit normally (or nothing was open).
    int Close();

private:
    FILE* stream_ = nullptr;
    int fd_ = -1;
};
