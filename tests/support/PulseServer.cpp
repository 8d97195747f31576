#include "support/PulseServer.h"

#include "support/TempHome.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <vector>

extern char** environ;

namespace {

using namespace std::chrono_literals;

constexpr auto kStartTimeout = 15s;
constexpr auto kStopTimeout = 3s;

// The environment of the server: this process's, with its own home and runtime folder and
// nothing that would point it at another server.
std::vector<std::string> ServerEnvironment(const std::filesystem::path& root) {
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        if (name == "HOME" || name == "XDG_RUNTIME_DIR" || name.rfind("PULSE_", 0) == 0) continue;
        variables.push_back(text);
    }
    variables.push_back("HOME=" + root.string());
    variables.push_back("XDG_RUNTIME_DIR=" + root.string());
    return variables;
}

std::string ReadLog(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

PulseServer::PulseServer() {
    Start();
}

PulseServer::~PulseServer() {
    Kill();
    if (!root_.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
}

bool PulseServer::IsInstalled() {
    int status = -1;
    RunCommand("command -v pulseaudio >/dev/null 2>&1", &status);
    return status == 0;
}

void PulseServer::Start() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vinora-pulse-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        error_ = "cannot create the server's runtime folder";
        return;
    }
    root_ = pattern;
    address_ = "unix:" + (root_ / "pulse" / "native").string();
    const std::filesystem::path log = root_ / "pulseaudio.log";

    std::vector<std::string> arguments = {"pulseaudio",
                                          "-n",
                                          "--daemonize=no",
                                          "--exit-idle-time=-1",
                                          "--disallow-exit",
                                          "--use-pid-file=no",
                                          "--system=false",
                                          "-L",
                                          "module-native-protocol-unix",
                                          "-L",
                                          "module-null-sink sink_name=turntable"};
    std::vector<std::string> environment = ServerEnvironment(root_);
    std::vector<char*> argv, envp;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    for (std::string& variable : environment)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int failed =
        posix_spawnp(&pid_, "pulseaudio", &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (failed) {
        pid_ = -1;
        error_ = std::string("cannot start pulseaudio: ") + std::strerror(failed);
        return;
    }

    setenv("PULSE_SERVER", address_.c_str(), 1);
    setenv("PULSE_COOKIE", (root_ / ".config" / "pulse" / "cookie").c_str(), 1);
    setenv("PULSE_RUNTIME_PATH", (root_ / "pulse").c_str(), 1);

    const auto deadline = std::chrono::steady_clock::now() + kStartTimeout;
    while (std::chrono::steady_clock::now() < deadline) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            error_ = "pulseaudio ended at start-up: " + ReadLog(log);
            return;
        }
        int answer = -1;
        RunCommand("pactl info >/dev/null 2>&1", &answer);
        if (answer == 0) {
            running_ = true;
            return;
        }
        std::this_thread::sleep_for(50ms);
    }
    error_ = "pulseaudio did not answer in time: " + ReadLog(log);
}

void PulseServer::Kill() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + kStopTimeout;
    int status = 0;
    while (std::chrono::steady_clock::now() < deadline) {
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(20ms);
    }
    kill(pid_, SIGKILL);
    waitpid(pid_, &status, 0);
    pid_ = -1;
}
