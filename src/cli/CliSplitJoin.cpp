#include "cli/CliJobProgress.h"
#include "cli/Commands.h"

#include "codecs/AudioFileSource.h"
#include "platform/OutputFolders.h"
#include "play/JoinJob.h"
#include "play/SplitJob.h"
#include "sound/SoundTime.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>

namespace {

constexpr const char* kSplitUsage =
    "usage: vinora-cli split FILE --at TIME [--at TIME]...\n"
    "  cuts a wave or MP3 file into pieces beside it; TIME is H:MM:SS.mmm, M:SS or seconds\n";
constexpr const char* kJoinUsage =
    "usage: vinora-cli join FILE FILE [FILE] [--folder DIR]\n"
    "  joins two or three files into NAME1_NAME2_JOINED.wav (.mp3 when the first is MP3) at\n"
    "  44,100 Hz stereo, in DIR or else the recordings folder\n";

// A time as the user types it: digits with ":" and "." between them.
bool ParseTime(const std::string& text, LSoundTime& time) {
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text.back()))) return false;
    if (!std::all_of(text.begin(), text.end(),
                     [](char c) { return std::isdigit(static_cast<unsigned char>(c)) || c == ':' || c == '.'; }))
        return false;
    time.SetText(text.c_str());
    return true;
}

int Report(const char* command, LProcessResult result) {
    if (result == PROCESS_FAILED)
        std::fprintf(stderr, "vinora-cli %s: the job failed (see the log)\n", command);
    else if (result == PROCESS_STOPPED)
        std::fprintf(stderr, "vinora-cli %s: stopped\n", command);
    return result;
}

} // namespace

int CliSplit(const CliArgs& args) {
    std::string path;
    std::vector<LSoundTime> times;
    for (size_t i = 0; i < args.size(); ++i) {
        LSoundTime time;
        if (args[i] == "--at" && i + 1 < args.size() && ParseTime(args[i + 1], time)) {
            times.push_back(time);
            ++i;
        } else if (path.empty() && !args[i].starts_with("--")) {
            path = args[i];
        } else {
            std::fputs(kSplitUsage, stderr);
            return 2;
        }
    }
    if (path.empty() || times.empty()) {
        std::fputs(kSplitUsage, stderr);
        return 2;
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        std::fprintf(stderr, "vinora-cli split: %s: no such file\n", path.c_str());
        return 2;
    }
    const LSoundSource source = LOpenAudioFileSource(path.c_str());
    if (source->GetError() != sndErrNone) {
        std::fprintf(stderr, "vinora-cli split: %s: %s\n", path.c_str(),
                     LSoundErrorText(source->GetError()));
        return 2;
    }
    std::vector<int> positions;
    for (const LSoundTime& time : times)
        positions.push_back(time.GetSamples(source->GetSampleRate()));
    std::sort(positions.begin(), positions.end());

    CliJobProgress progress;
    LSplitFileProcessData job{path.c_str(), positions, {}};
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_DONE)
        for (const std::string& piece : job.pieces)
            std::printf("%s\n", piece.c_str());
    return Report("split", result);
}

int CliJoin(const CliArgs& args) {
    LJoinFiles job;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--folder" && i + 1 < args.size()) {
            job.outputFolder = args[++i];
        } else if (!args[i].starts_with("--")) {
            job.paths.push_back(args[i]);
        } else {
            std::fputs(kJoinUsage, stderr);
            return 2;
        }
    }
    if (job.paths.size() < 2 || job.paths.size() > 3) {
        std::fputs(kJoinUsage, stderr);
        return 2;
    }
    for (const std::string& path : job.paths) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error)) {
            std::fprintf(stderr, "vinora-cli join: %s: no such file\n", path.c_str());
            return 2;
        }
    }
    if (job.outputFolder.empty()) job.outputFolder = GetVNOutputFolder();
    CliJobProgress progress;
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_DONE) std::printf("%s\n", job.output.c_str());
    return Report("join", result);
}
