#include "codecs/PipeOut.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Keeps SIGPIPE from this thread while a write to a pipe whose reader is gone fails with
// EPIPE, and takes back the signal such a write left pending.
class SigPipeBlock {
public:
    SigPipeBlock() {
        sigemptyset(&pipeSignal_);
        sigaddset(&pipeSignal_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipeSignal_, &previous_);
    }
    ~SigPipeBlock() {
        if (raised_ && !wasPending_) {
            const timespec noWait{};
            sigtimedwait(&pipeSignal_, nullptr, &noWait);
        }
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }
    void Raised() { raised_ = true; }

private:
    sigset_t pipeSignal_;
    sigset_t previous_;
    bool wasPending_ = false;
    bool raised_ = false;
};

} // namespace

bool LPipeOut::Open(const char* command) {
    Close();
    stream_ = popen(command, "we");
    if (!stream_) return false;
    fd_ = fileno(stream_);
    return true;
}

bool LPipeOut::Write(const void* data, std::size_t length) {
    if (!stream_) return false;
    SigPipeBlock block;
    const char* next = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t written = write(fd_, next, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            if (errno == EPIPE) block.Raised();
            return false;
        }
        next += written;
        length -= static_cast<std::size_t>(written);
    }
    return true;
}

int LPipeOut::Close() {
    if (!stream_) return -1;
    const int status = pclose(stream_);
    stream_ = nullptr;
    fd_ = -1;
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
