#pragma once

#include "support/ScopedEnv.h"

#include <filesystem>
#include <string>
#include <sys/types.h>

// A private PulseAudio server for one test: a fresh runtime folder, one null sink named
// "turntable" (recorded from "turntable.monitor"), and PULSE_SERVER, PULSE_COOKIE and
// PULSE_RUNTIME_PATH pointing this process and the tools it starts (paplay, parec, pactl) at it.
// The destructor stops the server, restores the environment and removes the folder.
class PulseServer {
public:
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    // True once the server answers `pactl info`; otherwise Error() says why.
    bool IsRunning() const { return running_; }
    const std::string& Error() const { return error_; }
    // The server's address as PULSE_SERVER holds it: "unix:<folder>/pulse/native".
    const std::string& Address() const { return address_; }
    // Whether a pulseaudio program is on PATH at all.
    static bool IsInstalled();

private:
    void Start();
    void Kill();

    std::filesystem::path root_;
    std::string address_;
    std::string error_;
    pid_t pid_ = -1;
    bool running_ = false;
    ScopedEnv server_{"PULSE_SERVER"}, cookie_{"PULSE_COOKIE"}, runtime_{"PULSE_RUNTIME_PATH"};
};
