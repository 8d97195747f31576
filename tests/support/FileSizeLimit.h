#pragma once

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Runs `work` in a child process that may write no file beyond `bytes` (as on a full disk:
// writes past the limit fail with EFBIG instead of raising SIGXFSZ). Returns what `work`
// returned, or false when the child did not end normally.
inline bool WithFileSizeLimit(rlim_t bytes, const std::function<bool()>& work) {
    const pid_t pid = fork();
    if (pid == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
