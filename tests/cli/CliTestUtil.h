#pragma once

#include "support/FolderContents.h"
#include "support/TempHome.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Runs vinora-cli with the arguments; `streams` redirects what it prints (by default standard
// output and error together).
inline std::string Cli(const std::string& arguments, int* status = nullptr,
                       const std::string& streams = "2>&1") {
    return RunCommand(std::string(VINORA_CLI) + " " + arguments + " " + streams, status);
}

// The whole file, or nothing for a missing one.
inline std::string FileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
