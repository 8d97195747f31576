// Burns 74 minutes of audio (20 tracks of a 48 kHz stereo noise source, converted like any
// recording) onto the Virtual Burner in /var/tmp, and prints the time of each phase, how much
// faster than real time it went and the peak memory of the process.
#include "BenchMeasure.h"

#include "disc/CDBurnAudio.h"
#include "drives/SystemDiscService.h"
#include "jobs/ProcessInterfaceVoid.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

using Clock = std::chrono::steady_clock;

// Notes when the conversion starts and when the drive is first asked to write.
class PhaseClock : public LProcessInterfaceVoid {
public:
    Clock::time_point converting{};
    Clock::time_point writing{};
    void SetStatus(const char* text, int line) override {
        if (line == 0 && std::strcmp(text, "Converting") == 0 && converting == Clock::time_point{})
            converting = Clock::now();
        if (line == 1 && writing == Clock::time_point{} &&
            (std::strncmp(text, "Preparing", 9) == 0 || std::strncmp(text, "Writing", 7) == 0))
            writing = Clock::now();
    }
};

double Seconds(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

int main() {
    constexpr int kTracks = 20;
    constexpr int kSeconds = 74 * 60;
    char pattern[] = "/var/tmp/vinora-bench-XXXXXX";
    if (!mkdtemp(pattern)) return 1;
    const std::string folder = pattern;
    SetDiscService(std::make_shared<LSystemDiscService>("cd-r:" + folder + "/disc", false));

    LCDBurnAudio job;
    job.cdDrive = 0;
    for (int i = 0; i < kTracks; ++i)
        job.AddTrack(LSoundSource(new BenchNoiseSource(48000, 2, kSeconds / kTracks)), "noise",
                     "Noise", nullptr, nullptr);
    PhaseClock phases;
    const Clock::time_point start = Clock::now();
    const LProcessResult result = Process(phases, job);
    const Clock::time_point end = Clock::now();
    std::error_code ignored;
    const uintmax_t bytes = std::filesystem::file_size(folder + "/disc.bin", ignored);
    std::filesystem::remove_all(folder, ignored);
    if (result != PROCESS_DONE) {
        std::printf("burn failed: %s\n", job.error.Describe().c_str());
        return 1;
    }
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const double convert = Seconds(phases.converting, phases.writing);
    const double write = Seconds(phases.writing, end);
    std::printf("audio CD of %d minutes, %d tracks\n", kSeconds / 60, kTracks);
    std::printf("%-34s %8.2f s %8.1f x real time\n", "conversion to AIFF", convert, kSeconds / convert);
    std::printf("%-34s %8.2f s %8.1f MB/s\n", "writing to the Virtual Burner", write,
                bytes / 1e6 / write);
    std::printf("%-34s %8.2f s\n", "whole job", Seconds(start, end));
    std::printf("%-34s %8.1f MB\n", "peak memory", usage.ru_maxrss / 1024.0);
    return 0;
}
