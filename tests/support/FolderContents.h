#pragma once

#include "support/TempHome.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

// Every file under `folder`, hidden ones too, by its path relative to the folder, with its
// bytes: equal snapshots mean nothing was added, removed or changed.
inline std::map<std::string, std::string> FolderContents(const std::filesystem::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        files[std::filesystem::relative(entry.path(), folder).string()] =
            std::string(std::istreambuf_iterator<char>(in), {});
    }
    return files;
}

// Runs vinora-cli as on a full disk: no file it (or a program it starts) writes may grow past
// `bytes` (rounded down to 512); writes beyond fail with "File too large". Standard output and
// error together.
inline std::string CliOnFullDisk(const std::string& arguments, long bytes, int* status) {
    const std::string command = "ulimit -f " + std::to_string(bytes / 512) +
                                "; exec " + VINORA_CLI + " " + arguments;
    return RunCommand("sh -c " + ShellQuote(command) + " 2>&1", status);
}
