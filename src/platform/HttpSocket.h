#pragma once

#include "jobs/ProcessInterface.h"

#include <cstddef>
#include <string>

// Plain TCP for the HTTP client, written as parts of long jobs: every wait is cut into slices
// of 200 ms, between which the job's IsToStop() is asked, so that a progress window's Cancel
// works while connecting or transferring. Each call returns an LProcessResult: 0 done,
// 1 stopped, 2 failed (error, time-out used up, connection closed). Time-outs are in
// milliseconds for the whole call; WAIT_FOREVER means no limit.

// An IPv4 stream socket, closed when destroyed.
class LTcpSocket {
public:
    LTcpSocket() = default;
    ~LTcpSocket() { Close(); }
    LTcpSocket(const LTcpSocket&) = delete;
    LTcpSocket& operator=(const LTcpSocket&) = delete;

    bool IsOpen() const { return fd_ >= 0; }
    int GetFd() const { return fd_; }
    void Close();
    // Takes over a descriptor, closing the one held before.
    void Reset(int fd);

private:
    int fd_ = -1;
};

// Closes the socket if it was open and connects it, non-blocking and closed on exec, to the
// first address the host name resolves to that accepts the connection.
int ProcessConnect(LProcessInterface& pi, LTcpSocket& socket, const char* host, int port,
                   unsigned int timeout);

// Sends all `length` bytes, at most 1,024 at a time.
int ProcessSend(LProcessInterface& pi, LTcpSocket& socket, const void* data, std::size_t length,
                unsigned int timeout);
int ProcessSendString(LProcessInterface& pi, LTcpSocket& socket, const char* text,
                      unsigned int timeout);

// Waits until there is something to read or the peer has closed.
int ProcessWaitForDataOrClose(LProcessInterface& pi, LTcpSocket& socket, unsigned int timeout);
// One read of what has arrived, at most `length` bytes (at least one when the result is 0).
// A peer that has closed fails; `peerClosed`, when given, tells that case from the others.
int ProcessRecvReady(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                     std::size_t& received, unsigned int timeout, bool* peerClosed = nullptr);
// Reads until the buffer is full or the peer closes (both are done).
int ProcessRecvAll(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                   std::size_t& received, unsigned int timeout);
// Reads exactly `length` bytes; a peer that closes before fails.
int ProcessRecvBytes(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                     unsigned int timeout);
// Reads one line and hands it back without its "\n" or "\r\n", reading nothing past it. Lines
// longer than 8,192 bytes are cut (the rest up to the line end is read and dropped). A peer
// that closes before the line end fails.
int ProcessRecvLine(LProcessInterface& pi, LTcpSocket& socket, std::string& line,
                    unsigned int timeout);
