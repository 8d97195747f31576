#include "cli/CliMainLoop.h"
#include "cli/CliRecordingSession.h"
#include "cli/Commands.h"

#include "app/AppStartup.h"
#include "app/ProcessListThread.h"
#include "codecs/AudioFileSource.h"
#include "devices/SoundDevices.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "platform/UserFolders.h"
#include "record/SampleNoisePage.h"
#include "tags/AudioTagData.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

bool ParseNumber(const std::string& text, double& value) {
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end && *end == '\0' && std::isfinite(value);
}

// Plays `file` (empty: the demo side) as the input at full speed through a session.
int SplitSide(const std::string& file, CliRecordingSession& session) {
    setenv("VINORA_VIRTUAL_TURNTABLE", (file + ",speed=0").c_str(), 1);
    const std::optional<LSoundRecordDevice> turntable = CliVirtualTurntable();
    if (!turntable) {
        std::fprintf(stderr, "vinora-cli: the Virtual Turntable is missing\n");
        return 2;
    }
    return session.Run(turntable, true, 0, false);
}

// Works through the queue file as the program does at start-up.
int RunQueue() {
    CliMainLoop loop;
    thrConvertList.SetListFilePath(LQueueFilePath().c_str(), STOP_KEEP_LIST, true);
    if (loop.Run([] { return !thrConvertList.IsRunning(); })) return 0;
    thrConvertList.StopThreadNow();
    return 1;
}

} // namespace

int CliSplitSide(const CliArgs& args) {
    std::string file;
    std::optional<int> floor;
    for (size_t i = 0; i < args.size(); ++i) {
        double value = 0;
        if (args[i] == "--floor" && i + 1 < args.size() && ParseNumber(args[i + 1], value) &&
            value >= -127 && value <= 12) {
            floor = static_cast<int>(std::lround(value));
            ++i;
        } else if (file.empty() && !args[i].starts_with("--")) {
            file = args[i];
        } else {
            file.clear();
            break;
        }
    }
    if (file.empty()) {
        std::fputs("usage: vinora-cli split-side FILE [--floor DB]\n"
                   "  cuts a whole recorded side (wave or MP3) into tracks as a recording session\n"
                   "  does, and queues them; --floor sets the noise floor (default: the setting)\n",
                   stderr);
        return 2;
    }
    LSoundSource source = LOpenAudioFileSource(file.c_str());
    if (source->GetError() != sndErrNone) {
        std::fprintf(stderr, "vinora-cli split-side: %s: %s\n", file.c_str(),
                     LSoundErrorText(source->GetError()));
        return 2;
    }
    source.Close();
    if (floor) LUserSettingSet<int>("Settings", "dBNoiseFloor", *floor);
    CliRecordingSession session;
    return SplitSide(file, session);
}

int CliRecord(const CliArgs& args) {
    std::optional<LSoundRecordDevice> device;
    double seconds = 0;
    bool untilSilence = false;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--device" && i + 1 < args.size()) {
            device = CliFindSoundInput(args[++i]);
            if (!device) {
                std::fprintf(stderr, "vinora-cli record: there is no sound input \"%s\"\n",
                             args[i].c_str());
                return 2;
            }
        } else if (args[i] == "--seconds" && i + 1 < args.size() &&
                   ParseNumber(args[i + 1], seconds) && seconds > 0) {
            ++i;
        } else if (args[i] == "--until-silence") {
            untilSilence = true;
        } else {
            std::fputs("usage: vinora-cli record [--device NAME] [--seconds N] [--until-silence]\n"
                       "  a recording session on the input: tracks start when audio arrives, end\n"
                       "  at silence and are queued; Ctrl+C ends the session as Stop does\n",
                       stderr);
            return 2;
        }
    }
    CliRecordingSession session;
    const int result = session.Run(device, false, seconds, untilSilence);
    return result == 1 ? 0 : result;
}

int CliNoiseFloor(const CliArgs& args) {
    std::optional<LSoundRecordDevice> device;
    if (args.size() == 2 && args[0] == "--device") {
        device = CliFindSoundInput(args[1]);
        if (!device) {
            std::fprintf(stderr, "vinora-cli noise-floor: there is no sound input \"%s\"\n",
                         args[1].c_str());
            return 2;
        }
    } else if (!args.empty()) {
        std::fputs("usage: vinora-cli noise-floor [--device NAME]\n"
                   "  measures the input's level during 2 s of silence and stores it\n",
                   stderr);
        return 2;
    }
    struct : LSampleNoiseView {
    } view;
    CliMainLoop loop;
    LSampleNoisePage page(view);
    if (device) page.SetDevice(*device);
    if (!page.StartRecorder()) {
        std::fprintf(stderr, "vinora-cli noise-floor: the sound input cannot be opened\n");
        return 2;
    }
    page.CmMeasure();
    const bool finished = loop.Run([&] { return page.IsMeasureEnabled(); });
    page.StopRecorder();
    if (!finished) return 1;
    std::printf("%s\n", page.Status().c_str());
    return 0;
}

int CliDemo(const CliArgs& args) {
    if (!args.empty()) {
        std::fputs("usage: vinora-cli demo\n", stderr);
        return 2;
    }
    char data[kPathBufferSize], folder[kPathBufferSize];
    GetApplicationDataFolder(data);
    _MakeFilePath(folder, data, "Demo");
    CreateFolderTree(folder);
    std::printf("Recording the demo side from the Virtual Turntable into %s\n", folder);
    CliRecordingSession session(folder);
    if (const int result = SplitSide("", session); result != 0) return result;
    std::printf("Restoring and converting %zu tracks...\n", session.Tracks().size());
    std::fflush(stdout);
    if (const int result = RunQueue(); result != 0) return result;
    for (const CliRecordingSession::Track& track : session.Tracks()) {
        LSoundSource source = LOpenAudioFileSource(track.path.c_str());
        const LSoundTime length = LSoundTime::FromSamples(source->GetEndSample(), source->GetSampleRate());
        LAudioTagData tags;
        tags.ReadTags(track.path.c_str(), tagModeAll);
        std::printf("%s  %s  %s\n", track.path.c_str(), CliTimeText(length).c_str(),
                    tags.GetTag("TITLE").c_str());
    }
    return 0;
}
