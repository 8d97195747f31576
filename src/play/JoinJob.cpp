#include "play/JoinJob.h"

#include "codecs/WaveFile.h"
#include "platform/Log.h"
#include "play/WaveOrMp3Source.h"
#include "restore/Normalize.h"
#include "sound/ConvertRateChannels.h"
#include "sound/SourceToSink.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kBlockFrames = 8192;
constexpr int kJoinedRate = 44100;
constexpr unsigned char kJoinedChannels = 2;
constexpr int kJoinedPercent = 80;
constexpr size_t kNameCut = 40;
constexpr const char* kCannotCreate = "ERROR: Output file could not be created";

// The job's hidden files, removed when the job ends whatever its result.
class Temporaries {
public:
    Temporaries() = default;
    ~Temporaries() {
        for (const std::string& path : paths_)
            if (unlink(path.c_str()) != 0 && errno != ENOENT)
                LOGWARN("Could not delete file %s", path.c_str());
    }
    Temporaries(const Temporaries&) = delete;
    Temporaries& operator=(const Temporaries&) = delete;

    // A new hidden file beside `target`, removed at the end; "" when none can be made.
    std::string Make(const std::string& target) {
        std::string path = MakeHiddenTemporary(target);
        if (!path.empty()) paths_.push_back(path);
        return path;
    }

private:
    std::vector<std::string> paths_;
};

// Appends one input to the output; PROCESS_DONE, or why the job ends.
LProcessResult AppendInput(LProcessInterface& progress, const std::string& path, LSoundSink& out,
                           std::vector<int>& buffer) {
    LSoundSource source = OpenWaveOrMp3Source(path);
    if (source->GetError() != sndErrNone || source->GetEndSample() == 0) return PROCESS_FAILED;
    LSPConvertSourceRateChannels(kJoinedRate, kJoinedChannels, source);
    if (source->GetError() != sndErrNone || source->GetChannels() != kJoinedChannels)
        return PROCESS_FAILED;
    const int told = source->GetEndSample();
    if (const LProcessResult result = ProcessNormalize(progress, source, kJoinedPercent);
        result != PROCESS_DONE)
        return result;
    // Measuring the level read the whole file: a file shorter than its header knows it now.
    const int end = source->GetEndSample();
    if (end < told) LogShortFile(path, end, kJoinedRate);
    for (int remaining = end - source->GetPositionSample(); remaining > 0;) {
        if (progress.IsToStop()) return PROCESS_FAILED;
        progress.SetProgress(static_cast<double>(end - remaining) / end);
        const int frames = std::min(remaining, kBlockFrames);
        const int got = ReadFileFrames(*source, buffer.data(), frames);
        out->Write(buffer.data(), got);
        if (got < frames) {
            LogShortFile(path, end - remaining + got, kJoinedRate);
            break;
        }
        remaining -= frames;
    }
    return out->IsFailed() ? PROCESS_FAILED : PROCESS_DONE;
}

// Joins every input that still exists into the wave file `wave`.
LProcessResult WriteJoinedWave(LProcessInterface& progress, const LJoinFiles& job,
                               const std::string& wave) {
    LSoundSink out = LWaveFile::OpenSinkPCM(wave.c_str(), kJoinedRate, kJoinedChannels, 16, 0);
    if (out->IsFailed()) {
        progress.SetError(kCannotCreate);
        return PROCESS_FAILED;
    }
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * kJoinedChannels);
    for (const std::string& path : job.paths) {
        progress.SetStatus(path.c_str(), 0);
        std::error_code error;
        if (!fs::exists(path, error)) continue;
        if (const LProcessResult result = AppendInput(progress, path, out, buffer);
            result != PROCESS_DONE)
            return result;
    }
    const bool failed = out->IsFailed();
    out.Close();
    if (failed) progress.SetError(kCannotCreate);
    return failed ? PROCESS_FAILED : PROCESS_DONE;
}

// Encodes the joined wave file into `encoded`, a file of `type`.
LProcessResult EncodeJoined(LProcessInterface& progress, const std::string& wave,
                            const std::string& encoded, const LAudioFileType& type) {
    LPRSourceToSink pump;
    pump.title = "Joining";
    pump.source = LWaveFile::OpenSource(wave.c_str());
    pump.sink = type.openSink(encoded.c_str(), kJoinedRate, kJoinedChannels, false);
    const LProcessResult result = Process(progress, pump);
    const bool failed = pump.sink->IsFailed();
    pump.sink.Close();
    std::error_code error;
    const bool empty = fs::file_size(encoded, error) == 0 || error;
    return result == PROCESS_DONE && (failed || empty) ? PROCESS_FAILED : result;
}

} // namespace

std::string JoinedName(const std::vector<std::string>& paths) {
    std::string name;
    for (const std::string& path : paths)
        name += fs::path(path).stem().string().substr(0, kNameCut) + "_";
    return name + "JOINED";
}

LProcessResult Process(LProcessInterface& progress, LJoinFiles& job) {
    progress.SetStatus("Joining", 0);
    job.output.clear();
    if (job.paths.empty()) return PROCESS_FAILED;
    const LAudioFileType* outputType = SplitJoinFileType(job.paths.front());
    if (!outputType) return PROCESS_FAILED;
    const std::string base = (fs::path(job.outputFolder) / JoinedName(job.paths)).string();

    Temporaries temporaries;
    const std::string wave = temporaries.Make(base + ".wav");
    if (wave.empty()) {
        progress.SetError(kCannotCreate);
        return PROCESS_FAILED;
    }
    if (WriteJoinedWave(progress, job, wave) != PROCESS_DONE) return PROCESS_FAILED;

    std::string joined = wave;
    if (SplitJoinFileType(wave) != outputType) {
        const std::string wanted = base + outputType->extension;
        const std::string encoded = temporaries.Make(wanted);
        const LProcessResult result =
            encoded.empty() ? PROCESS_FAILED : EncodeJoined(progress, wave, encoded, *outputType);
        if (result == PROCESS_STOPPED) return PROCESS_FAILED;
        if (result == PROCESS_DONE)
            joined = encoded;
        else // the joined audio stays as the wave file rather than being lost
            LOGERROR("Conversion to MP3 joined file %s has failed", wanted.c_str());
    }
    const std::string wanted = base + fs::path(joined).extension().string();
    job.output =
        CommitToFreeName(joined, [&](int counter) { return NumberedName(wanted, counter); });
    if (job.output.empty()) {
        LOGERROR("The joined file %s could not be named: %s", base.c_str(), std::strerror(errno));
        progress.SetError(kCannotCreate);
        return PROCESS_FAILED;
    }
    return PROCESS_DONE;
}
