#include "app/SoundEditor.h"

#include "platform/Components.h"
#include "platform/Log.h"
#include "platform/Settings.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <vector>

extern char** environ;

std::string LSoundEditorCommand() {
    const std::string chosen = LUserSettingGetString("Settings", "SoundEditor");
    if (!chosen.empty()) return chosen;
    for (const char* program : {"audacity", "xdg-open"})
        if (!LFindProgramOnPath(program).empty()) return program;
    return {};
}

bool LStartSoundEditor(const std::string& path, std::function<void()> exited) {
    const std::string command = LSoundEditorCommand();
    if (command.empty()) {
        LOGERROR("No sound editor was found to edit %s", path.c_str());
        return false;
    }
    std::vector<char*> argv{const_cast<char*>(command.c_str())};
    if (!path.empty()) argv.push_back(const_cast<char*>(path.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawnp(&pid, command.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        LOGERROR("The sound editor %s could not be started", command.c_str());
        return false;
    }
    std::thread([pid, exited = std::move(exited)] {
        int status = 0;
        waitpid(pid, &status, 0);
        exited();
    }).detach();
    return true;
}
