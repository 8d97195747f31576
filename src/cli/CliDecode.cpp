#include "cli/CliAudioFiles.h"
#include "cli/CliJobProgress.h"
#include "cli/Commands.h"

#include "codecs/AiffFile.h"
#include "codecs/WaveFile.h"
#include "platform/FileOps.h"
#include "play/WaveOrMp3Source.h"
#include "sound/ConvertRateChannels.h"
#include "sound/SourceToSink.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* kUsage = "usage: vinora-cli decode IN OUT [--rate R] [--channels C]\n";

// A whole positive number from the command line, at most `most`; 0 when it is not one.
int ParseCount(const std::string& text, long most) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    return !text.empty() && *end == '\0' && value > 0 && value <= most ? int(value) : 0;
}

struct DecodeOptions {
    std::string in;
    std::string out;
    int rate = 0;     // 0: the source's own
    int channels = 0; // 0: the source's own
};

bool ParseOptions(const CliArgs& args, DecodeOptions& options) {
    std::vector<std::string> paths;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--rate" || args[i] == "--channels") {
            if (i + 1 == args.size()) return false;
            const bool isRate = args[i] == "--rate";
            const int value = ParseCount(args[++i], isRate ? kWaveMaxSampleRate : 2);
            if (value == 0) return false;
            (isRate ? options.rate : options.channels) = value;
        } else {
            paths.push_back(args[i]);
        }
    }
    if (paths.size() != 2) return false;
    options.in = paths[0];
    options.out = paths[1];
    return true;
}

} // namespace

int CliDecode(const CliArgs& args) {
    DecodeOptions options;
    if (!ParseOptions(args, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    LSoundSource source = CliOpenAudioSource(options.in);
    if (source->GetError() != sndErrNone) {
        std::fprintf(stderr, "vinora-cli decode: %s: %s\n", options.in.c_str(),
                     CliSoundErrorText(source->GetError()));
        return 2;
    }
    const int rate = options.rate ? options.rate : source->GetSampleRate();
    const auto channels =
        static_cast<unsigned char>(options.channels ? options.channels : source->GetChannels());
    LSPConvertSourceRateChannels(rate, channels, source);
    if (source->GetError() != sndErrNone || source->GetSampleRate() != rate ||
        source->GetChannels() != channels) {
        std::fprintf(stderr, "vinora-cli decode: %s: cannot convert to %d Hz with %d channels\n",
                     options.in.c_str(), rate, channels);
        return 2;
    }

    // Something already there, even a dangling link, is never replaced.
    if (IsNameTaken(options.out.c_str())) {
        std::fprintf(stderr, "vinora-cli decode: %s: the file exists already and is not replaced\n",
                     options.out.c_str());
        return 2;
    }
    // The audio goes into a hidden file beside OUT, which takes OUT's name only when complete.
    const std::string writing = MakeHiddenTemporary(options.out);
    LPRSourceToSink job;
    job.source = source;
    if (!writing.empty())
        job.sink = CliHasExtension(options.out, ".aif") || CliHasExtension(options.out, ".aiff")
                       ? LAifFile::OpenSinkPCM16(writing.c_str(), rate, channels)
                       : LWaveFile::OpenSinkPCM(writing.c_str(), rate, channels, 16, 0);
    if (job.sink->IsFailed()) {
        if (!writing.empty()) unlink(writing.c_str());
        std::fprintf(stderr, "vinora-cli decode: %s: the file could not be written\n",
                     options.out.c_str());
        return 2;
    }
    CliJobProgress progress;
    LProcessResult result = Process(progress, job);
    // A sink that could not take everything (a full disk) did not write a whole file.
    const bool whole = !job.sink->IsFailed();
    job.sink.Close();
    if (result == PROCESS_DONE &&
        (!whole || !SyncFile(writing.c_str()) ||
         !RenameNoReplace(writing.c_str(), options.out.c_str()))) {
        std::fprintf(stderr, "vinora-cli decode: %s: the file could not be written\n",
                     options.out.c_str());
        result = PROCESS_FAILED;
    }
    if (result != PROCESS_DONE) unlink(writing.c_str());
    if (result == PROCESS_STOPPED) std::fprintf(stderr, "vinora-cli decode: stopped\n");
    return result;
}
