// The whole conversion job on a 10-minute 44.1 kHz stereo recording with every restoration step
// on, to WAV and to MP3, as multiples of real time, plus the peak memory of the process; and
// bare `lame -b 128 -h` on the same file for comparison. Runs in a private temporary home.
#include "BenchMeasure.h"

#include "codecs/WaveFile.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "platform/Settings.h"
#include "restore/ConvertJob.h"
#include "sound/SourceToSink.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>

namespace {

constexpr int kSeconds = 600;

double Seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

long PeakMemoryMB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

void Convert(const std::filesystem::path& folder, const std::string& source, const char* ext)
{
    LProcessConvert job;
    std::snprintf(job.sourcePath, sizeof job.sourcePath, "%s", source.c_str());
    std::snprintf(job.outputFolder, sizeof job.outputFolder, "%s", (folder / "out").c_str());
    std::snprintf(job.outputExtension, sizeof job.outputExtension, "%s", ext);
    job.addToList = 0;
    LProcessInterfaceVoid progress;
    const auto start = std::chrono::steady_clock::now();
    const LProcessResult result = Process(progress, job);
    std::printf("convert to %s, all steps on      %8.1f x real time (result %d)\n", ext,
                kSeconds / Seconds(start), result);
}

} // namespace

int main()
{
    char pattern[] = "/tmp/vinora-bench-convert-XXXXXX";
    if (!mkdtemp(pattern))
        return 2;
    const std::filesystem::path folder = pattern;
    setenv("HOME", pattern, 1);
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    for (const char* key : {"DCOffset", "HPF", "ClickPop", "NoiseReduce", "Equalization",
                            "Normalization"})
        LUserSettingSet<int>("AudioRestoration", key, 1);

    const std::string source = (folder / "side.wav").string();
    {
        LProcessInterfaceVoid progress;
        LPRSourceToSink job;
        job.source = LSoundSource(new BenchNoiseSource(44100, 2, kSeconds));
        job.sink = LWaveFile::OpenSinkPCM(source.c_str(), 44100, 2, 16, 0);
        Process(progress, job);
    }
    Convert(folder, source, ".wav");
    Convert(folder, source, ".mp3");
    std::printf("peak memory                        %8ld MB\n", PeakMemoryMB());

    const auto start = std::chrono::steady_clock::now();
    const std::string lame =
        "lame --quiet -b 128 -h '" + source + "' '" + (folder / "lame.mp3").string() + "'";
    if (std::system(lame.c_str()) == 0)
        std::printf("lame -b 128 -h alone               %8.1f x real time\n",
                    kSeconds / Seconds(start));
    std::filesystem::remove_all(folder);
    return 0;
}
