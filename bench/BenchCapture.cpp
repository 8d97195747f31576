// The recorder engine capturing the Virtual Turntable's demo side (three minutes, 44.1 kHz
// stereo) as fast as it reads, into a 16-bit wave file, as a multiple of real time; beside it
// the demo side's own generation, which the capture includes.
#include "BenchMeasure.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "devices/DemoSide.h"
#include "devices/SoundDevices.h"
#include "record/SoundRecorder.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class StopNotify : public LSoundRecorderNotify {
public:
    bool stopped = false;
    void srntfStop(long) override { stopped = true; }
};

} // namespace

int main() {
    setenv("VINORA_VIRTUAL_TURNTABLE", ",speed=0", 1);
    LPlainMainQueue queue;
    LMainThreadQueue::SetCurrent(&queue);

    int index = 0;
    char name[kSoundDeviceNameSize];
    if (!FindDeviceById(kVirtualTurntableId, index, name)) {
        std::fprintf(stderr, "the Virtual Turntable is not listed\n");
        return 1;
    }
    const std::string path =
        (std::filesystem::temp_directory_path() / "vinora-bench-capture.wav").string();
    const double seconds = LDemoSide().GetEndSample() / double(LDemoSide::kSampleRate);

    StopNotify notify;
    {
        LSoundRecorder recorder(&notify);
        recorder.GetLowLevel().SetDevice(LSoundRecordDevice(index, 0));
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 0);
        const auto start = std::chrono::steady_clock::now();
        if (!recorder.Start(sink, LSoundTime(0), LDB::kSilence, LSoundTime(0), 0)) {
            std::fprintf(stderr, "the capture did not start: %s\n",
                         recorder.GetLowLevel().GetError().c_str());
            return 1;
        }
        sink.Close();
        queue.RunUntil([&] { return notify.stopped; }, 600000);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        std::printf("%-34s %8.1f x real time\n", "capture demo side to WAV",
                    seconds / elapsed.count());
    }
    LMainThreadQueue::SetCurrent(nullptr);
    std::filesystem::remove(path);

    BenchMeasure("demo side generation alone", LSoundSource(new LDemoSide),
                 static_cast<int>(seconds));
    return 0;
}
