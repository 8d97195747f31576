#include "cli/CliMainLoop.h"
#include "cli/CliRecordingSession.h"
#include "cli/Commands.h"

#include "codecs/WaveFile.h"
#include "devices/SoundDevices.h"
#include "platform/FileOps.h"
#include "record/SoundRecordDevice.h"
#include "record/SoundRecorder.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli capture OUT.wav [--device NAME] [--seconds N] [--threshold DB]\n"
    "  records the sound input into a 44.1 kHz stereo 16-bit wave file until N seconds are\n"
    "  recorded, the input ends (Virtual Turntable) or Ctrl+C; --device takes a device's name\n"
    "  or its sound server name (default: the recording device of the settings); --threshold\n"
    "  waits for the input to reach DB (-127 to 12) and pauses after 4 s below it\n";

constexpr int kSampleRate = 44100;
constexpr unsigned char kChannels = 2;
constexpr int kSilenceTimeMs = 4000;

struct CaptureOptions {
    std::string path;
    std::optional<std::string> device;
    int32_t maxLengthMs = 0;
    int threshold = LDB::kSilence;
    bool soundActivated = false;
};

bool ParseNumber(const std::string& text, double& value) {
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end && *end == '\0' && errno == 0 && std::isfinite(value);
}

bool ParseOptions(const CliArgs& args, CaptureOptions& options) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        double number = 0;
        if (arg == "--device" && hasValue) {
            options.device = args[++i];
        } else if (arg == "--seconds" && hasValue) {
            if (!ParseNumber(args[++i], number) || number <= 0 || number > 86400) return false;
            // The recorder stops at the first buffer that ends after maxLength, so one
            // millisecond less makes it stop as soon as N seconds are there.
            options.maxLengthMs = std::max(static_cast<int32_t>(std::lround(number * 1000)) - 1, 1);
        } else if (arg == "--threshold" && hasValue) {
            if (!ParseNumber(args[++i], number) || number < LDB::kSilence || number > 12)
                return false;
            options.threshold = static_cast<int>(std::lround(number));
            options.soundActivated = true;
        } else if (!arg.empty() && arg[0] != '-' && options.path.empty()) {
            options.path = arg;
        } else {
            return false;
        }
    }
    return !options.path.empty();
}

// Follows the recorder: whether it has stopped, and the recorded time on a terminal.
class CaptureNotify : public LSoundRecorderNotify {
public:
    bool stopped = false;

    ~CaptureNotify() {
        if (shown_) std::fputc('\n', stderr);
    }

    void srntfWait(long) override { waiting_ = true; }
    void srntfRecord(long) override { waiting_ = false; }
    void srntfStop(long) override { stopped = true; }
    void srntfTime(LSoundTime time, long) override { Show(time, waiting_); }
    // The length of the finished file.
    void ShowLength(LSoundTime length) { Show(length, false); }

private:
    void Show(LSoundTime time, bool waiting) {
        if (!terminal_) return;
        char text[32];
        time._GetText2(text);
        std::fprintf(stderr, "\rRecorded %s%s", text, waiting ? " (waiting for audio)" : "    ");
        std::fflush(stderr);
        shown_ = true;
    }

    bool terminal_ = isatty(STDERR_FILENO) == 1;
    bool shown_ = false;
    bool waiting_ = false;
};

} // namespace

int CliCapture(const CliArgs& args) {
    CaptureOptions options;
    if (!ParseOptions(args, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }

    LSoundRecordDevice device;
    if (options.device) {
        const std::optional<LSoundRecordDevice> found = CliFindSoundInput(*options.device);
        if (!found) {
            std::fprintf(stderr,
                         "vinora-cli capture: there is no sound input \"%s\" (see vinora-cli "
                         "devices)\n",
                         options.device->c_str());
            return 2;
        }
        device = *found;
    } else {
        device = LSettingGetSoundRecordDevice("Settings", "SoundInDevice");
    }

    // The recording goes straight into OUT, so that it can be watched as it grows and a
    // capture that is killed still leaves what it recorded. OUT must therefore be new: a file
    // (or a link) already there is never cut short, nor removed when nothing is recorded.
    if (IsNameTaken(options.path.c_str())) {
        std::fprintf(stderr,
                     "vinora-cli capture: %s: the file exists already and is not replaced\n",
                     options.path.c_str());
        return 2;
    }
    LSoundSink sink = LWaveFile::OpenSinkPCM(options.path.c_str(), kSampleRate, kChannels, 16, 0);
    if (sink->IsFailed()) {
        std::fprintf(stderr, "vinora-cli capture: %s: the file cannot be written\n",
                     options.path.c_str());
        return 2;
    }

    CliMainLoop loop;
    int result = 0;
    {
        CaptureNotify notify;
        LSoundRecorder recorder(&notify);
        recorder.GetLowLevel().SetDevice(device);
        const bool started = recorder.Start(
            sink, LSoundTime(options.maxLengthMs), static_cast<int8_t>(options.threshold),
            LSoundTime(options.soundActivated ? kSilenceTimeMs : 0), 0);
        if (!started) {
            const std::string& error = recorder.GetLowLevel().GetError();
            std::fprintf(stderr, "vinora-cli capture: the sound input cannot be opened: %s\n",
                         error.empty() ? "it did not answer" : error.c_str());
            result = 2;
        } else {
            if (!loop.Run([&] { return notify.stopped; })) {
                recorder.Stop();
                result = 1;
            }
            notify.ShowLength(LSoundTime::FromSamples(sink->GetPosition(), kSampleRate));
        }
        // The last handle: the file gets its final header.
        sink.Close();
    }
    if (result == 2) {
        // Nothing was recorded: leave no empty file behind.
        std::remove(options.path.c_str());
    } else if (result == 1) {
        std::fprintf(stderr, "vinora-cli capture: stopped\n");
    }
    return result;
}
