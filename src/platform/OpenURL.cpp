#include "platform/OpenURL.h"

#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

bool LOpenURL(const char* url) {
    char program[] = "xdg-open";
    char* argv[] = {program, const_cast<char*>(url), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, program, nullptr, nullptr, argv, environ) != 0) return false;
    // xdg-open may run as long as the browser it starts; collect it in the background.
    std::thread([child] {
        int status = 0;
        waitpid(child, &status, 0);
    }).detach();
    return true;
}
