#pragma once

#include "support/ScopedEnv.h"

#include <filesystem>
#include <string>

// A private home folder for one test: creates a fresh temporary folder and points HOME,
// XDG_CONFIG_HOME and XDG_DATA_HOME into it; restores the old values and removes the folder
// when destroyed.
class TempHome {
public:
    TempHome();
    ~TempHome();
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    const std::filesystem::path& Path() const { return root_; }
    std::filesystem::path ConfigHome() const { return root_ / ".config"; }
    std::filesystem::path DataHome() const { return root_ / ".local/share"; }
    // Whether a recorder here logged audio it lost because it fell behind a live input (a
    // busy machine); the logs are removed, so the next run starts without them.
    bool TakeLostAudioLogged() const;

private:
    std::filesystem::path root_;
    ScopedEnv home_, config_, data_;
};

// Runs a shell command and returns its standard output; the exit status goes to *status.
std::string RunCommand(const std::string& command, int* status = nullptr);

// Quotes a string for /bin/sh.
std::string ShellQuote(const std::string& text);
