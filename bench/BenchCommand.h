#pragma once

// What the benchmarks of whole commands share: making a test tree of files, its size, and
// timing one command run as a child with its peak memory.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

// A file of `size` random bytes.
inline void BenchMakeFile(const std::filesystem::path& path, size_t size, std::mt19937& random) {
    std::vector<uint32_t> block(16384);
    std::ofstream out(path, std::ios::binary);
    for (size_t done = 0; done < size; done += block.size() * 4) {
        for (uint32_t& value : block)
            value = random();
        out.write(reinterpret_cast<const char*>(block.data()),
                  static_cast<std::streamsize>(std::min(size - done, block.size() * 4)));
    }
}

// A collection once: `songs` MP3-sized files of about `songBytes` in albums of twelve, and
// `sides` whole recorded sides of `sideBytes` in "Sides"; kept for later runs.
inline void BenchMakeTree(const std::filesystem::path& tree, int songs, size_t songBytes, int sides,
                          size_t sideBytes) {
    if (std::filesystem::exists(tree / "done")) return;
    std::filesystem::remove_all(tree);
    std::mt19937 random(1);
    for (int i = 0; i < songs; ++i) {
        const std::filesystem::path folder = tree / ("Album " + std::to_string(i / 12));
        std::filesystem::create_directories(folder);
        BenchMakeFile(folder / ("Track " + std::to_string(i % 12 + 1) + " - Song " + std::to_string(i) + ".mp3"),
                      songBytes + random() % 65536, random);
    }
    std::filesystem::create_directories(tree / "Sides");
    for (int i = 0; i < sides; ++i)
        BenchMakeFile(tree / "Sides" / ("Side " + std::to_string(i + 1) + ".wav"), sideBytes, random);
    std::ofstream(tree / "done");
}

inline uint64_t BenchTreeBytes(const std::filesystem::path& root) {
    uint64_t total = 0;
    for (const std::filesystem::directory_entry& entry : std::filesystem::recursive_directory_iterator(
             root, std::filesystem::directory_options::follow_directory_symlink))
        if (entry.is_regular_file()) total += entry.file_size();
    return total;
}

struct BenchRun {
    double seconds = 0;
    long peakKiB = 0;
    bool ok = false;
};

// Runs a shell command as a child and measures it alone, after `output` (the previous run's
// result) is gone and written back, so that no run pays for another's write-back.
inline BenchRun BenchMeasureCommand(const std::string& command, const std::string& output) {
    std::filesystem::remove(output);
    sync();
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", (command + " >/dev/null 2>&1").c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    rusage usage {};
    wait4(child, &status, 0, &usage);
    BenchRun run;
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.peakKiB = usage.ru_maxrss;
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

inline void BenchReport(const char* name, const BenchRun& run, uint64_t bytes) {
    if (!run.ok) {
        std::printf("%-34s failed\n", name);
        return;
    }
    std::printf("%-34s %8.0f MB/s  (%.2f s, peak %ld MiB)\n", name, bytes / 1e6 / run.seconds,
                run.seconds, run.peakKiB / 1024);
}
