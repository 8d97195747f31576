#include "platform/HttpSocket.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kSliceMs = 200;
constexpr std::size_t kSendPiece = 1024;
constexpr std::size_t kMaxLine = 8192;

// The time a call may still take.
class TimeLimit {
public:
    explicit TimeLimit(unsigned int ms)
        : unlimited_(ms == WAIT_FOREVER),
          end_(std::chrono::steady_clock::now() + std::chrono::milliseconds(ms)) {}

    // Milliseconds left (INT_MAX without a limit); 0 or less when used up.
    long long RemainingMs() const {
        if (unlimited_) return INT_MAX;
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   end_ - std::chrono::steady_clock::now())
            .count();
    }

private:
    bool unlimited_;
    std::chrono::steady_clock::time_point end_;
};

// Waits in 200 ms slices until the socket reports one of `events`, an error or a hang-up,
// asking IsToStop() after every slice that passes without.
int WaitReady(LProcessInterface& pi, int fd, short events, const TimeLimit& limit) {
    while (true) {
        const long long remaining = limit.RemainingMs();
        if (remaining <= 0) return PROCESS_FAILED;
        pollfd entry{fd, events, 0};
        const int ready =
            poll(&entry, 1, static_cast<int>(std::min<long long>(remaining, kSliceMs)));
        if (ready > 0) return PROCESS_DONE;
        if (ready < 0 && errno != EINTR) return PROCESS_FAILED;
        if (pi.IsToStop()) return PROCESS_STOPPED;
    }
}

bool WouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

// One read once something is there. `received` 0 with PROCESS_DONE means the peer closed.
int ReadSome(LProcessInterface& pi, int fd, void* buffer, std::size_t length, std::size_t& received,
             const TimeLimit& limit, int flags = 0) {
    received = 0;
    while (true) {
        const int waited = WaitReady(pi, fd, POLLIN, limit);
        if (waited != PROCESS_DONE) return waited;
        const ssize_t got = recv(fd, buffer, length, flags);
        if (got >= 0) {
            received = static_cast<std::size_t>(got);
            return PROCESS_DONE;
        }
        if (!WouldBlock(errno)) return PROCESS_FAILED;
    }
}

struct AddressListDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

} // namespace

void LTcpSocket::Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
}

void LTcpSocket::Reset(int fd) {
    Close();
    fd_ = fd;
}

int ProcessConnect(LProcessInterface& pi, LTcpSocket& socket, const char* host, int port,
                   unsigned int timeout) {
    socket.Close();
    const TimeLimit limit(timeout);
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string service = std::to_string(port);
    if (getaddrinfo(host, service.c_str(), &hints, &found) != 0) return PROCESS_FAILED;
    const std::unique_ptr<addrinfo, AddressListDeleter> addresses(found);

    for (const addrinfo* address = found; address; address = address->ai_next) {
        socket.Reset(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (!socket.IsOpen()) return PROCESS_FAILED;
        if (connect(socket.GetFd(), address->ai_addr, address->ai_addrlen) == 0)
            return PROCESS_DONE;
        if (errno == EINPROGRESS) {
            const int waited = WaitReady(pi, socket.GetFd(), POLLOUT, limit);
            if (waited != PROCESS_DONE) {
                socket.Close();
                return waited;
            }
            int error = 0;
            socklen_t size = sizeof error;
            if (getsockopt(socket.GetFd(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0)
                return PROCESS_DONE;
        }
        socket.Close();
    }
    return PROCESS_FAILED;
}

int ProcessSend(LProcessInterface& pi, LTcpSocket& socket, const void* data, std::size_t length,
                unsigned int timeout) {
    const TimeLimit limit(timeout);
    const char* next = static_cast<const char*>(data);
    std::size_t left = length;
    while (true) {
        if (pi.IsToStop()) return PROCESS_STOPPED;
        if (left == 0) return PROCESS_DONE;
        const std::size_t piece = std::min(left, kSendPiece);
        const ssize_t sent = send(socket.GetFd(), next, piece, MSG_NOSIGNAL);
        if (sent < 0 && !WouldBlock(errno)) return PROCESS_FAILED;
        if (sent > 0) {
            next += sent;
            left -= static_cast<std::size_t>(sent);
        }
        if (left > 0 && (sent < 0 || static_cast<std::size_t>(sent) < piece)) {
            const int waited = WaitReady(pi, socket.GetFd(), POLLOUT, limit);
            if (waited != PROCESS_DONE) return waited;
        }
    }
}

int ProcessSendString(LProcessInterface& pi, LTcpSocket& socket, const char* text,
                      unsigned int timeout) {
    return ProcessSend(pi, socket, text, std::strlen(text), timeout);
}

int ProcessWaitForDataOrClose(LProcessInterface& pi, LTcpSocket& socket, unsigned int timeout) {
    return WaitReady(pi, socket.GetFd(), POLLIN, TimeLimit(timeout));
}

int ProcessRecvReady(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                     std::size_t& received, unsigned int timeout, bool* peerClosed) {
    if (peerClosed) *peerClosed = false;
    const int result = ReadSome(pi, socket.GetFd(), buffer, length, received, TimeLimit(timeout));
    if (result != PROCESS_DONE) return result;
    if (received > 0 || length == 0) return PROCESS_DONE;
    if (peerClosed) *peerClosed = true;
    return PROCESS_FAILED;
}

int ProcessRecvAll(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                   std::size_t& received, unsigned int timeout) {
    const TimeLimit limit(timeout);
    char* bytes = static_cast<char*>(buffer);
    received = 0;
    while (received < length) {
        std::size_t got = 0;
        const int result =
            ReadSome(pi, socket.GetFd(), bytes + received, length - received, got, limit);
        if (result != PROCESS_DONE) return result;
        if (got == 0) break;
        received += got;
    }
    return PROCESS_DONE;
}

int ProcessRecvBytes(LProcessInterface& pi, LTcpSocket& socket, void* buffer, std::size_t length,
                     unsigned int timeout) {
    std::size_t received = 0;
    const int result = ProcessRecvAll(pi, socket, buffer, length, received, timeout);
    if (result != PROCESS_DONE) return result;
    return received == length ? PROCESS_DONE : PROCESS_FAILED;
}

int ProcessRecvLine(LProcessInterface& pi, LTcpSocket& socket, std::string& line,
                    unsigned int timeout) {
    const TimeLimit limit(timeout);
    line.clear();
    char piece[1024];
    while (true) {
        // Look at what has arrived, then take it only up to the line end.
        std::size_t got = 0;
        const int result = ReadSome(pi, socket.GetFd(), piece, sizeof piece, got, limit, MSG_PEEK);
        if (result != PROCESS_DONE) return result;
        if (got == 0) return PROCESS_FAILED;
        const char* end = static_cast<const char*>(std::memchr(piece, '\n', got));
        const std::size_t take = end ? static_cast<std::size_t>(end - piece) + 1 : got;
        if (recv(socket.GetFd(), piece, take, 0) != static_cast<ssize_t>(take))
            return PROCESS_FAILED;
        const std::size_t text = end ? take - 1 : take;
        line.append(piece, std::min(text, kMaxLine - std::min(kMaxLine, line.size())));
        if (end) break;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return PROCESS_DONE;
}
