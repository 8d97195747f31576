// Time from start-up to a shown main window listing 500 files of the output folder (400 wave
// files of four minutes, 100 MP3 files): lengths come from the file headers.
#include "platform/Settings.h"
#include "ui/MainWindow.h"

#include <QApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

// A 16-bit stereo 44.1 kHz wave file of `seconds`, its audio left sparse.
void MakeWave(const fs::path& path, int seconds) {
    const uint32_t data = static_cast<uint32_t>(seconds) * 44100 * 4;
    auto le32 = [](std::ofstream& out, uint32_t v) { out.write(reinterpret_cast<char*>(&v), 4); };
    auto le16 = [](std::ofstream& out, uint16_t v) { out.write(reinterpret_cast<char*>(&v), 2); };
    std::ofstream out(path, std::ios::binary);
    out.write("RIFF", 4);
    le32(out, 36 + data);
    out.write("WAVEfmt ", 8);
    le32(out, 16);
    le16(out, 1);
    le16(out, 2);
    le32(out, 44100);
    le32(out, 44100 * 4);
    le16(out, 4);
    le16(out, 16);
    out.write("data", 4);
    le32(out, data);
    out.close();
    fs::resize_file(path, 44 + data);
}

} // namespace

int main(int argc, char** argv) {
    const fs::path root = fs::temp_directory_path() / "vinora-bench-startup";
    fs::remove_all(root);
    const fs::path output = root / "Recordings";
    fs::create_directories(output);
    setenv("HOME", root.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root / ".config").c_str(), 1);
    setenv("XDG_DATA_HOME", (root / ".local/share").c_str(), 1);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());

    for (int i = 0; i < 400; ++i)
        MakeWave(output / ("Side " + std::to_string(i) + ".wav"), 240);
    const fs::path mp3 = root / "tone.mp3";
    std::system(("sox -n -r 44100 -c 2 " + mp3.string() + " synth 30 sine 440 2>/dev/null").c_str());
    for (int i = 0; i < 100; ++i)
        fs::copy_file(mp3, output / ("Track " + std::to_string(i) + ".mp3"));

    const auto start = std::chrono::steady_clock::now();
    QApplication app(argc, argv);
    LMainWindow window{LMainDialogWindows{}};
    window.Dialog().LoadSavedAudioFiles();
    window.show();
    QApplication::processEvents();
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("start-up to a shown window with %d files: %.0f ms (goal: under 1000 ms)\n",
                window.Dialog().List().Count(), elapsed.count());
    fs::remove_all(root);
    return 0;
}
