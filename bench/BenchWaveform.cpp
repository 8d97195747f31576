// The play-and-split window's waveform on a 20-minute side (16-bit stereo 44.1 kHz wave file,
// page cache warm): how long the scan thread takes to fill the columns after a view change at
// full width (1,920 columns) for a jump, a move while playing and the whole side in view; and
// the GUI thread's cost per frame while the position scrolls during playback (the worst frame is
// the first, whose full paint fills the font and glyph caches).
#include "platform/Settings.h"
#include "play/WaveControl.h"
#include "ui/PlayAndSplitWindow.h"
#include "ui/WaveWidget.h"

#include <QApplication>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kWidth = 1920;
constexpr int kRate = 44100;
constexpr int kSideSeconds = 20 * 60;

double Ms(Clock::duration elapsed) {
    return std::chrono::duration<double, std::milli>(elapsed).count();
}

// Moves the view and waits until the scan thread has handed over the new columns.
double FillTime(LWaveControl& wave, std::atomic<int>& passes, int first, int length) {
    const int before = passes.load();
    const auto start = Clock::now();
    wave.SetFrame(first, length);
    while (passes.load() == before)
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    return Ms(Clock::now() - start);
}

} // namespace

int main(int argc, char** argv) {
    const fs::path root = fs::temp_directory_path() / "vinora-bench-waveform";
    fs::create_directories(root);
    setenv("HOME", root.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root / ".config").c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + (root / "no-server").string()).c_str(), 1);
    const fs::path side = root / "side.wav";
    if (!fs::exists(side))
        std::system(("sox -n -r 44100 -c 2 -b 16 " + side.string() + " synth " +
                     std::to_string(kSideSeconds) + " pinknoise vol 0.5 2>/dev/null").c_str());
    std::system(("cat " + side.string() + " > /dev/null").c_str());

    LWaveControl wave;
    std::atomic<int> passes = 0;
    wave.SetInvalidate([&passes](int, int) { ++passes; });
    wave.SetWidth(kWidth);
    wave.SetSource(LVinoraPlayerInfo(side.string()).OpenSource());
    FillTime(wave, passes, kRate, 2 * kRate);

    double jump = 0;
    for (int i = 1; i <= 10; ++i)
        jump = std::max(jump, FillTime(wave, passes, i * 100 * kRate, 2 * kRate));
    // While playing the view moves by a player buffer (about 93 ms) at a time.
    double move = 0;
    for (int i = 1; i <= 50; ++i)
        move = std::max(move, FillTime(wave, passes, 1100 * kRate + i * 4096, 2 * kRate));
    const double whole = FillTime(wave, passes, 0, kSideSeconds * kRate);
    wave.StopScan();
    std::printf("waveform fill, 2 s view, jump        %8.2f ms (worst of 10)\n", jump);
    std::printf("waveform fill, 2 s view, playing move %7.2f ms (worst of 50)\n", move);
    std::printf("waveform fill, whole 20-minute side   %8.1f ms (goal < 150 ms)\n", whole);

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    LPlayAndSplitWindow window(side.string(), {}, {}, nullptr);
    window.resize(kWidth + 24, 480);
    window.show();
    window.Start();
    std::vector<double> times;
    constexpr int kFrames = 600;
    for (int frame = 0; frame < kFrames; ++frame) {
        const auto start = Clock::now();
        // The position report and everything it makes the GUI thread do, repaints included.
        window.Logic().spntfTime(LSoundTime(600000 + frame * 93), 0);
        QApplication::processEvents();
        times.push_back(Ms(Clock::now() - start));
    }
    std::sort(times.begin(), times.end());
    double total = 0;
    for (double ms : times)
        total += ms;
    std::printf("GUI thread per frame while scrolling  %8.2f ms average, %.2f ms at the 99th "
                "percentile, %.2f ms worst (goal < 5 ms)\n",
                total / kFrames, times[kFrames * 99 / 100], times.back());
    return 0;
}
