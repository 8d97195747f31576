#pragma once

// What the end-to-end tests share: running vinora-cli and sox, reading back what they made,
// the queue file, a private sound server, and the parec recording of its sink's monitor.
#include "app/ProcessListThread.h"
#include "support/DiscTreeFiles.h"
#include "support/PulseServer.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

// Runs vinora-cli with `arguments`. `prefix` goes before it (environment assignments, or a
// "cd FOLDER && "); `streams` says where its output goes: by default standard error joins
// standard output, which is returned.
inline std::string Cli(const std::string& arguments, int* status = nullptr,
                       const std::string& prefix = "", const std::string& streams = "2>&1") {
    return RunCommand(prefix + VINORA_CLI + " " + arguments + " " + streams, status);
}

// An environment assignment for Cli's prefix.
inline std::string Env(const std::string& name, const std::string& value) {
    return name + "=" + ShellQuote(value) + " ";
}

// Records the Virtual Turntable's demo side, read as fast as the recorder takes it, into a
// wave file.
inline std::string CaptureDemoSide(const std::filesystem::path& out, int* status) {
    return Cli("capture " + ShellQuote(out) + " --device 'Virtual Turntable'", status,
               "VINORA_VIRTUAL_TURNTABLE=,speed=0 ");
}

// Makes a 16-bit wave file with sox from what follows "synth": a length and a tone; parts
// joined with " : synth " follow one another in the file.
[[nodiscard]] inline bool SoxSynth(const std::filesystem::path& path, int rate, int channels,
                                   const std::string& synth) {
    int status = -1;
    RunCommand("sox -R -n -r " + std::to_string(rate) + " -c " + std::to_string(channels) +
                   " -b 16 " + ShellQuote(path) + " synth " + synth + " 2>/dev/null",
               &status);
    return status == 0;
}

// The length of a sound file as soxi reads it from its header, in seconds (0 when it cannot).
inline double SoxiSeconds(const std::filesystem::path& path) {
    return std::atof(RunCommand("soxi -D " + ShellQuote(path) + " 2>/dev/null").c_str());
}

// The number that a sox report gives after `label`.
inline double SoxValue(const std::string& report, const std::string& label) {
    const size_t at = report.find(label);
    if (at == std::string::npos) {
        ADD_FAILURE() << "no \"" << label << "\" in:\n" << report;
        return 0;
    }
    return std::strtod(report.c_str() + at + label.size(), nullptr);
}

// The whole file, or nothing for a missing one.
inline std::string FileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The names in a folder, hidden ones too.
inline std::set<std::string> Names(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

// The program's folder in the private home and its queue file.
inline std::filesystem::path AppData(const TempHome& home) {
    return home.DataHome() / "Brakwater Software/Vinora";
}
inline std::filesystem::path QueueFile(const TempHome& home) {
    return AppData(home) / "vnprocesses.list";
}

// Appends a conversion request without restoration to the queue file, as a recording session
// queues its tracks; an empty `destination` lets the queue choose the name.
[[nodiscard]] inline bool QueueRequest(const TempHome& home, const std::filesystem::path& source,
                                       const std::filesystem::path& folder,
                                       const std::filesystem::path& destination,
                                       const std::string& extension, bool deleteSource) {
    LProcessConvert request;
    std::snprintf(request.sourcePath, sizeof request.sourcePath, "%s", source.c_str());
    std::snprintf(request.destinationPath, sizeof request.destinationPath, "%s",
                  destination.c_str());
    std::snprintf(request.outputFolder, sizeof request.outputFolder, "%s", folder.c_str());
    std::snprintf(request.outputExtension, sizeof request.outputExtension, "%s", extension.c_str());
    request.restore = 0;
    request.deleteSource = deleteSource;
    std::filesystem::create_directories(AppData(home));
    return ProcessListFile::Append(QueueFile(home).c_str(), &request, sizeof request);
}

// The files every disc tree of these tests holds: a deep long name of accented letters, two
// names alike in 8.3 form, an empty file and one of exactly one sector.
inline void WriteNamesTree(const std::filesystem::path& tree) {
    const std::string longName = "Ünïcödé " + std::string(40, 'x') + " ßßßß tune.mp3";
    WriteTreeFile(tree / "Side A" / "Deeper" / "Deepest" / longName, RandomBytes(5000, 1));
    WriteTreeFile(tree / "Side A" / "Report 1.doc", "with a space");
    WriteTreeFile(tree / "Side A" / "Report1.doc", "without");
    WriteTreeFile(tree / "empty.wav", "");
    WriteTreeFile(tree / "exact.bin", RandomBytes(2048, 2));
}

// A private home and a private sound server with its "turntable" null sink; the test is
// skipped where pulseaudio is not installed.
class PulseE2E : public testing::Test {
protected:
    void SetUp() override {
        if (!PulseServer::IsInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
        server_.emplace();
        ASSERT_TRUE(server_->IsRunning()) << server_->Error();
    }

    TempHome home_;
    std::optional<PulseServer> server_;
};

// Records `seconds` of the null sink's monitor with parec, 44.1 kHz stereo 16-bit, on a
// thread of its own; Listen() returns once parec is connected and has heard half a second.
class MonitorRecording {
public:
    MonitorRecording(std::filesystem::path raw, double seconds)
        : raw_(std::move(raw)), bytes_(static_cast<size_t>(seconds * 44100) * 4) {}
    ~MonitorRecording() {
        if (thread_.joinable()) thread_.join();
    }

    void Listen() {
        thread_ = std::thread([this] {
            RunCommand("parec --device=turntable.monitor --format=s16le --rate=44100 "
                       "--channels=2 --raw 2>/dev/null | head -c " +
                       std::to_string(bytes_) + " > " + ShellQuote(raw_));
        });
        RunCommand("for i in $(seq 500); do [ -n \"$(pactl list short source-outputs)\" ] && "
                   "break; sleep 0.01; done; sleep 0.5");
    }

    // Everything heard, once the time is up: interleaved stereo.
    std::vector<int16_t> Heard() {
        thread_.join();
        const std::string bytes = FileText(raw_);
        EXPECT_EQ(bytes.size(), bytes_);
        std::vector<int16_t> samples(bytes.size() / 2);
        std::copy_n(bytes.data(), samples.size() * 2, reinterpret_cast<char*>(samples.data()));
        return samples;
    }

private:
    std::filesystem::path raw_;
    size_t bytes_;
    std::thread thread_;
};

// One channel of interleaved 16-bit stereo, frames [first, first + count) as far as it goes.
inline std::vector<double> Channel16(const std::vector<int16_t>& samples, int channel, size_t first,
                                     size_t count) {
    std::vector<double> values;
    for (size_t f = first; f < first + count && 2 * f + 1 < samples.size(); ++f)
        values.push_back(samples[2 * f + channel]);
    return values;
}
