// A recording session's own cost. First `vinora-cli split-side` of a 21-minute side (the demo
// side seven times) up to the queue, as a multiple of real time. Then the processor time of a
// live session on the Virtual Turntable playing in real time, beside a plain capture of the same
// input for the same time: the difference is what the session (levels, track detection, naming,
// queuing) costs, as a share of one core.
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

bool Run(const std::string& command) {
    return std::system(command.c_str()) == 0;
}

double ChildrenCpuSeconds() {
    rusage usage {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main() {
    const fs::path home = fs::temp_directory_path() / "vinora-bench-session";
    fs::remove_all(home);
    fs::create_directories(home);
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    const std::string cli = VINORA_CLI;
    const fs::path demo = home / "demo.wav", side = home / "side.wav";
    if (!Run("VINORA_VIRTUAL_TURNTABLE=,speed=0 " + cli + " capture " + Quote(demo) +
             " --device 'Virtual Turntable' 2>/dev/null") ||
        !Run("sox " + Quote(demo) + " " + Quote(demo) + " " + Quote(demo) + " " + Quote(demo) +
             " " + Quote(demo) + " " + Quote(demo) + " " + Quote(demo) + " " + Quote(side))) {
        std::fprintf(stderr, "could not make the side (needs sox)\n");
        return 1;
    }
    const double sideSeconds = 7 * 180.0;

    const auto start = std::chrono::steady_clock::now();
    if (!Run(cli + " split-side " + Quote(side) + " >/dev/null 2>&1")) {
        std::fprintf(stderr, "split-side failed\n");
        return 1;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%-40s %8.1f x real time\n", "split-side, 21-minute side", sideSeconds / elapsed.count());

    constexpr int kSeconds = 30;
    const std::string input = "VINORA_VIRTUAL_TURNTABLE=" + Quote(demo.string() + ",speed=1") + " ";
    double before = ChildrenCpuSeconds();
    Run(input + cli + " capture " + Quote(home / "plain.wav") + " --device 'Virtual Turntable' " +
        "--seconds " + std::to_string(kSeconds) + " 2>/dev/null");
    const double capture = ChildrenCpuSeconds() - before;
    before = ChildrenCpuSeconds();
    Run(input + cli + " record --device 'Virtual Turntable' --seconds " + std::to_string(kSeconds) +
        " >/dev/null 2>&1");
    const double session = ChildrenCpuSeconds() - before;
    std::printf("%-40s %8.2f %% of a core\n", "capture alone, real time", 100 * capture / kSeconds);
    std::printf("%-40s %8.2f %% of a core\n", "recording session, real time", 100 * session / kSeconds);
    std::printf("%-40s %8.2f %% of a core\n", "session beside the capture",
                100 * (session - capture) / kSeconds);
    fs::remove_all(home);
    return 0;
}
