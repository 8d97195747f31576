#include "codecs/PipeOut.h"

#include "platform/Log.h"

#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <string>

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
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    output_ = memfd_create("command-output", MFD_CLOEXEC);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    if (output_ >= 0) {
        posix_spawn_file_actions_adddup2(&actions, output_, STDOUT_FILENO);
    } else {
        LOGWARN("What the command prints cannot be kept: %s", std::strerror(errno));
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    // The program gives each file it makes its mode; the command only knows the mask, which
    // a caller may have cleared.
    const std::string script = "umask 022; " + std::string(command);
    char* argv[] = {const_cast<char*>("sh"), const_cast<char*>("-c"),
                    const_cast<char*>(script.c_str()), nullptr};
    const int spawned = posix_spawn(&pid_, "/bin/sh", &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    if (spawned != 0) {
        pid_ = -1;
        close(ends[1]);
        if (output_ >= 0) close(output_);
        output_ = -1;
        return false;
    }
    fd_ = ends[1];
    fcntl(fd_, F_SETPIPE_SZ, kPipeBytes);
    fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK);
    const long long pipeBytes = std::max(fcntl(fd_, F_GETPIPE_SZ), 4096);
    fullWaitNs_ = static_cast<long>(pipeBytes * 1000000000LL / 4 / kFastestReaderBytes);
    return true;
}

bool LPipeOut::Write(const void* data, std::size_t length) {
    if (fd_ < 0) return false;
    SigPipeBlock block;
    const char* next = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t written = write(fd_, next, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN) {
                const timespec wait{0, fullWaitNs_};
                nanosleep(&wait, nullptr);
                continue;
            }
            if (errno == EPIPE) block.Raised();
            return false;
        }
        next += written;
        length -= static_cast<std::size_t>(written);
    }
    return true;
}

int LPipeOut::Close() {
    if (pid_ <= 0) return -1;
    close(fd_);
    fd_ = -1;
    int status = 0;
    pid_t waited;
    do {
        waited = waitpid(pid_, &status, 0);
    } while (waited < 0 && errno == EINTR);
    pid_ = -1;
    LogOutput();
    return waited > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void LPipeOut::LogOutput() {
    if (output_ < 0) return;
    std::string text(kMaxLoggedBytes, '\0');
    const ssize_t got = pread(output_, text.data(), text.size(), 0);
    close(output_);
    output_ = -1;
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        if (end > start) LOG("Command output: %s", text.substr(start, end - start).c_str());
        start = end + 1;
    }
}
