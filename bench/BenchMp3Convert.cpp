// MP3 output against the encoder alone, on two 44.1 kHz stereo recordings made with sox (300 s
// unless a length in seconds is given): pink noise, and the same noise cut with the RIAA
// recording curve, as a turntable gives it without a phono preamp (the input the RIAA step is
// for). Three rounds, each of: bare `lame -m s -b 128 -h` on the recording, `vinora-cli convert`
// to WAV with all six steps (the chain's own cost), bare LAME on that restored WAV, and
// `vinora-cli convert` to MP3 with all six restoration steps (and, for the pink noise, without
// restoration). Prints the medians, the median of each round's ratio to bare LAME on the
// recording and to bare LAME on the audio the encoder is actually fed (restoration changes the
// signal, and LAME's own time depends on its spectrum: restored pink noise takes it about a
// quarter longer than the noise, restored cut noise less than the cut noise), the processor time
// beside the wall time, and the peak memory of each conversion (the encoder process not
// included). Runs of one round are next to each other in time, so a busy machine skews them alike.
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
#include <utility>
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
    std::string name;
    std::vector<std::string> command;
    // The bare LAME run on this case's recording, for the first ratio.
    size_t recordingLame;
    // The case whose audio LAME encodes alone, for the second ratio.
    size_t sameAudio;
    std::vector<Run> runs;
};

// sox's biquad coefficients (b0 b1 b2 a0 a1 a2) for the RIAA recording curve at 44.1 kHz: the
// time constants 3180, 318 and 75 µs and the cutter's 3.18 µs limit, by the bilinear transform.
std::vector<std::string> RecordingCurveBiquad() {
    const double k = 2 * 44100.0;
    // 1 + s·t as a first-order term in z⁻¹ (the shared 1 + z⁻¹ denominators cancel).
    auto term = [k](double t) { return std::pair{1 + k * t, 1 - k * t}; };
    auto product = [](std::pair<double, double> x, std::pair<double, double> y) {
        return std::vector<double>{x.first * y.first, x.first * y.second + x.second * y.first,
                                   x.second * y.second};
    };
    std::vector<double> coefficients = product(term(3180e-6), term(75e-6));
    const std::vector<double> poles = product(term(318e-6), term(3.18e-6));
    coefficients.insert(coefficients.end(), poles.begin(), poles.end());
    std::vector<std::string> words;
    for (double c : coefficients) words.push_back(std::to_string(c));
    return words;
}

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 300;
    char pattern[] = "/tmp/vinora-bench-mp3-XXXXXX";
    if (seconds <= 0 || !mkdtemp(pattern)) return 2;
    const fs::path folder = pattern;
    setenv("HOME", pattern, 1);
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    const std::string flat = (folder / "m.wav").string();
    const std::string cut = (folder / "cut.wav").string();
    const std::string cli = VINORA_CLI;

    std::vector<std::string> cutCommand = {"sox", flat, "-b", "16", cut, "vol", "0.05", "biquad"};
    for (const std::string& c : RecordingCurveBiquad()) cutCommand.push_back(c);
    for (const char* word : {"gain", "-n", "-3"}) cutCommand.push_back(word);
    if (!Measure({"sox", "-n", "-r", "44100", "-c", "2", "-b", "16", flat, "synth",
                  std::to_string(seconds), "pinknoise", "vol", "0.5"})
             .ok ||
        !Measure(cutCommand).ok) {
        std::fprintf(stderr, "could not make the recordings (needs sox)\n");
        fs::remove_all(folder);
        return 2;
    }

    const std::vector<std::string> allSteps = {"--dc",    "--hpf", "--clickpop",
                                               "--noise", "--riaa", "--normalize"};
    auto convert = [&](const std::string& input, const std::string& output, bool restore) {
        std::vector<std::string> command = {cli, "convert", input, (folder / output).string()};
        if (restore) command.insert(command.end(), allSteps.begin(), allSteps.end());
        return command;
    };
    auto lameAlone = [&](const std::string& input, const std::string& output) {
        return std::vector<std::string>{"lame", "--quiet", "-m", "s", "-b", "128", "-h", input,
                                        (folder / output).string()};
    };
    // Each round makes the restored WAV before LAME encodes it.
    std::vector<Case> cases;
    auto addRecording = [&](const char* label, const std::string& input, const std::string& tag) {
        const size_t first = cases.size();
        const std::string restored = (folder / (tag + "-all.wav")).string();
        cases.push_back({label + std::string(": lame alone"), lameAlone(input, tag + "-l.mp3"),
                         first, first, {}});
        cases.push_back({"  convert to WAV, all six steps", convert(input, tag + "-all.wav", true),
                         first, first + 1, {}});
        cases.push_back({"  lame alone on the restored WAV", lameAlone(restored, tag + "-r.mp3"),
                         first, first + 2, {}});
        cases.push_back({"  convert to MP3, all six steps", convert(input, tag + "-all.mp3", true),
                         first, first + 2, {}});
    };
    addRecording("pink noise", flat, "flat");
    cases.push_back({"  convert to MP3, no restoration", convert(flat, "none.mp3", false), 0, 0, {}});
    addRecording("cut with the RIAA curve", cut, "cut");

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
    std::printf("%-36s %8s %8s %8s %10s %10s %8s\n", "", "wall s", "cpu s", "x real", "to LAME",
                "same audio", "peak MB");
    for (const Case& c : cases) {
        std::vector<double> wall, cpu, ratio, sameRatio;
        long peak = 0;
        for (int round = 0; round < kRounds; ++round) {
            wall.push_back(c.runs[round].wall);
            cpu.push_back(c.runs[round].cpu);
            ratio.push_back(c.runs[round].wall / cases[c.recordingLame].runs[round].wall);
            sameRatio.push_back(c.runs[round].wall / cases[c.sameAudio].runs[round].wall);
            peak = std::max(peak, c.runs[round].peakMB);
        }
        std::printf("%-36s %8.2f %8.2f %8.1f %10.3f %10.3f %8ld\n", c.name.c_str(), Median(wall),
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
