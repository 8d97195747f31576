#include "cli/CliAudioFiles.h"
#include "cli/CliMainLoop.h"
#include "cli/Commands.h"

#include "play/SoundPlayDevice.h"
#include "play/SoundPlayer.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli play FILE [--device NAME]\n"
    "  NAME is an output device's name or its sound server name; without it the output chosen\n"
    "  in the player is used, else the default output\n";
constexpr const char* kCannotPlay = "Cannot play the selected file.";
// Shows the position on stderr when it is a terminal, and notes the end.
class CliPlayListener : public LSoundPlayerNotify {
public:
    explicit CliPlayListener(LSoundTime length) : terminal_(isatty(STDERR_FILENO) == 1) {
        length._GetText2(length_);
    }
    ~CliPlayListener() override {
        if (shown_) std::fputc('\n', stderr);
    }
    CliPlayListener(const CliPlayListener&) = delete;
    CliPlayListener& operator=(const CliPlayListener&) = delete;

    void spntfTime(LSoundTime time, long) override {
        if (!terminal_) return;
        char text[32];
        time._GetText2(text);
        std::fprintf(stderr, "\r%s / %s", text, length_);
        std::fflush(stderr);
        shown_ = true;
    }
    void spntfStop(long) override { stopped = true; }

    bool stopped = false;

private:
    bool terminal_;
    bool shown_ = false;
    char length_[32];
};

bool ParseOptions(const CliArgs& args, std::string& path, std::string& device) {
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--device") {
            if (i + 1 == args.size()) return false;
            device = args[++i];
        } else if (path.empty() && !args[i].starts_with("--")) {
            path = args[i];
        } else {
            return false;
        }
    }
    return !path.empty();
}

} // namespace

int CliPlay(const CliArgs& args) {
    std::string path;
    std::string deviceName;
    if (!ParseOptions(args, path, deviceName)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    LSoundSource source = CliOpenAudioSource(path);
    if (source->GetError() != sndErrNone) {
        std::fprintf(stderr, "vinora-cli play: %s: %s (%s)\n", path.c_str(), kCannotPlay,
                     CliSoundErrorText(source->GetError()));
        return 2;
    }
    LSoundPlayDevice device = LSettingGetSoundPlayDevice("Player", "Device");
    if (!deviceName.empty()) {
        device = LSoundPlayDevice::FromName(deviceName.c_str());
        if (device.GetIndex() == 0 && deviceName != kDefaultSoundOutName) {
            std::fprintf(stderr, "vinora-cli play: there is no output device \"%s\"\n",
                         deviceName.c_str());
            return 2;
        }
    }

    CliMainLoop loop;
    CliPlayListener listener(source.GetEnd());
    LSoundPlayer player;
    player.SetListener(&listener, 0);
    player.SetDevice(device);
    if (!player.Start(source)) {
        std::fprintf(stderr, "vinora-cli play: %s: %s (no sound output could be opened)\n",
                     path.c_str(), kCannotPlay);
        return 2;
    }
    if (!loop.Run([&] { return listener.stopped; })) {
        player.Stop();
        std::fprintf(stderr, "vinora-cli play: stopped\n");
        return 1;
    }
    return 0;
}
