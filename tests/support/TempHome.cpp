#include "support/TempHome.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>

namespace {

std::filesystem::path MakeTempFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vinora-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot create a temporary home");
    return pattern;
}

} // namespace

TempHome::TempHome()
    : root_(MakeTempFolder()), home_("HOME", root_.string()),
      config_("XDG_CONFIG_HOME", ConfigHome().string()), data_("XDG_DATA_HOME", DataHome().string())
{
    std::filesystem::create_directories(ConfigHome());
    std::filesystem::create_directories(DataHome());
}

TempHome::~TempHome()
{
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string RunCommand(const std::string& command, int* status)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) {
        if (status)
            *status = -1;
        return output;
    }
    std::array<char, 4096> buffer;
    size_t got;
    while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        output.append(buffer.data(), got);
    const int raw = pclose(pipe);
    if (status)
        *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return output;
}

std::string ShellQuote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

bool TempHome::TakeLostAudioLogged() const {
    bool lost = false;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
        if (!entry.is_regular_file() || !entry.path().filename().string().ends_with("Log.txt"))
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        lost = lost || text.find("fell behind the sound input") != std::string::npos;
        std::filesystem::remove(entry.path());
    }
    return lost;
}
