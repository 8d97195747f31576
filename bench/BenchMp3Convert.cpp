// MP3 output against the encoder alone. On a 44.1 kHz stereo recording (pink noise made with
// sox, 300 s unless a length in seconds is given), three rounds of: bare `lame -m s -b 128 -h`
// on the wave file, `vinora-cli convert` to WAV with all six steps (the chain's own cost), bare
// LAME on that restored WAV, and `vinora-cli convert` to MP3 with all six restoration steps and
// without restoration. Prints the medians, the median of each round's ratio to bare LAME on the
// recording and to bare LAME on the audio the encoder is actually fed (restoration changes the
// signal, and LAME's own time depends on it: on restored pink noise it is about a quarter
// longer), the processor time beside the wall time, and the peak memory of each conversion (the
// encoder process not included). Runs of one round are next to each other in time, so a busy
// machine skews them alike.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRounds = 3;

struct Run {
    double wall = 0;
    double cpu = 0;    // user + system of the process and what it waited for
    long peakMB = 0;   // the largest resident size of the process or its children
    bool ok = false;
};

// Runs the command with its output discarded, and measures it.
Run Measure(const std::vector<std::string>& command) {
    std::vector<char*> argv;
    for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    Run run;
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const bool spawned =
        posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    if (!spawned) return run;
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid) return run;
    run.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.cpu = usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
              (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    run.peakMB = usage.ru_maxrss / 1024;
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Case {
    const char* name;
    std::vector<std::string> command;
    // The case whose audio LAME encodes alone, for the second ratio.
    size_t sameAudio;
    std::vector<Run> runs;
};

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 300;
    char pattern[] = "/tmp/vinora-bench-mp3-XXXXXX";
    if (seconds <= 0 || !mkdtemp(pattern)) return 2;
    const fs::path folder = pattern;
    setenv("HOME", pattern, 1);
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    const std::string wav = (folder / "m.wav").string();
    const std::string cli = VINORA_CLI;

    if (!Measure({"sox", "-n", "-r", "44100", "-c", "2", "-b", "16", wav, "synth",
                  std::to_string(seconds), "pinknoise", "vol", "0.5"})
             .ok) {
        std::fprintf(stderr, "could not make the recording (needs sox)\n");
        fs::remove_all(folder);
        return 2;
    }

    const std::vector<std::string> allSteps = {"--dc",    "--hpf", "--clickpop",
                                               "--noise", "--riaa", "--normalize"};
    auto convert = [&](const char* output, bool restore) {
        std::vector<std::string> command = {cli, "convert", wav, (folder / output).string()};
        if (restore) command.insert(command.end(), allSteps.begin(), allSteps.end());
        return command;
    };
    auto lameAlone = [&](const std::string& input, const char* output) {
        return std::vector<std::string>{"lame", "--quiet", "-m", "s", "-b", "128", "-h", input,
                                        (folder / output).string()};
    };
    // Each round makes the restored WAV before LAME encodes it.
    std::vector<Case> cases = {
        {"lame -m s -b 128 -h alone", lameAlone(wav, "l.mp3"), 0, {}},
        {"convert to WAV, all six steps", convert("all.wav", true), 1, {}},
        {"lame alone on the restored WAV", lameAlone((folder / "all.wav").string(), "r.mp3"), 2, {}},
        {"convert to MP3, all six steps", convert("all.mp3", true), 2, {}},
        {"convert to MP3, no restoration", convert("none.mp3", false), 0, {}},
    };

    bool ok = true;
    for (int round = 0; round < kRounds; ++round) {
        for (Case& c : cases) {
            // The job never replaces a file: each run writes a new one.
            fs::remove(c.command.back());
            c.runs.push_back(Measure(c.command));
            ok = ok && c.runs.back().ok;
        }
    }
    if (!ok) std::fprintf(stderr, "a run failed: the figures are not meaningful\n");

    std::printf("%d s of 44.1 kHz stereo, medians of %d rounds\n", seconds, kRounds);
    std::printf("%-32s %8s %8s %8s %10s %10s %8s\n", "", "wall s", "cpu s", "x real", "to LAME",
                "same audio", "peak MB");
    const Case& lame = cases.front();
    for (const Case& c : cases) {
        std::vector<double> wall, cpu, ratio, sameRatio;
        long peak = 0;
        for (int round = 0; round < kRounds; ++round) {
            wall.push_back(c.runs[round].wall);
            cpu.push_back(c.runs[round].cpu);
            ratio.push_back(c.runs[round].wall / lame.runs[round].wall);
            sameRatio.push_back(c.runs[round].wall / cases[c.sameAudio].runs[round].wall);
            peak = std::max(peak, c.runs[round].peakMB);
        }
        std::printf("%-32s %8.2f %8.2f %8.1f %10.3f %10.3f %8ld\n", c.name, Median(wall),
                    Median(cpu), seconds / Median(wall), Median(ratio), Median(sameRatio), peak);
    }
    std::printf("rounds (wall s):");
    for (int round = 0; round < kRounds; ++round) {
        std::printf("  [");
        for (const Case& c : cases) std::printf(" %.2f", c.runs[round].wall);
        std::printf(" ]");
    }
    std::printf("\n");
    fs::remove_all(folder);
    return ok ? 0 : 1;
}
