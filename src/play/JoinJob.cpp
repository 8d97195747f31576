#include "play/JoinJob.h"

#include "codecs/Mp3EncodeSettings.h"
#include "codecs/Mp3EncodeSink.h"
#include "codecs/WaveFile.h"
#include "platform/Log.h"
#include "play/WaveOrMp3Source.h"
#include "restore/Normalize.h"
#include "sound/ConvertRateChannels.h"
#include "sound/SourceToSink.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kBlockFrames = 8192;
constexpr int kJoinedRate = 44100;
constexpr unsigned char kJoinedChannels = 2;
constexpr int kJoinedPercent = 80;
constexpr size_t kNameCut = 40;

// Appends one input to the output; PROCESS_DONE, or why the job ends.
LProcessResult AppendInput(LProcessInterface& progress, const std::string& path, LSoundSink& out,
                           std::vector<int>& buffer) {
    LSoundSource source = OpenWaveOrMp3Source(path);
    if (source->GetError() != sndErrNone || source->GetEndSample() == 0) return PROCESS_FAILED;
    LSPConvertSourceRateChannels(kJoinedRate, kJoinedChannels, source);
    if (source->GetError() != sndErrNone || source->GetChannels() != kJoinedChannels)
        return PROCESS_FAILED;
    if (const LProcessResult result = ProcessNormalize(progress, source, kJoinedPercent);
        result != PROCESS_DONE)
        return result;
    const int end = source->GetEndSample();
    for (int remaining = end - source->GetPositionSample(); remaining > 0;) {
        if (progress.IsToStop()) return PROCESS_FAILED;
        progress.SetProgress(static_cast<double>(end - remaining) / end);
        const int frames = std::min(remaining, kBlockFrames);
        source->Read(buffer.data(), frames);
        out->Write(buffer.data(), frames);
        remaining -= frames;
    }
    return out->IsFailed() ? PROCESS_FAILED : PROCESS_DONE;
}

// Encodes the joined wave file into `mp3`; false when no MP3 file came of it.
bool EncodeJoined(LProcessInterface& progress, const std::string& wave, const std::string& mp3) {
    LPRSourceToSink pump;
    pump.title = "Joining";
    pump.source = LWaveFile::OpenSource(wave.c_str());
    pump.sink = OpenMp3Sink(mp3.c_str(), LMp3EncodeSettings(), kJoinedRate, kJoinedChannels);
    const LProcessResult result = Process(progress, pump);
    pump.sink.Close();
    std::error_code error;
    return result == PROCESS_DONE && fs::exists(mp3, error);
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
    if (job.paths.empty()) return PROCESS_FAILED;
    const fs::path base = fs::path(job.outputFolder) / JoinedName(job.paths);
    const std::string wave = base.string() + ".wav";
    job.output = wave;
    {
        LSoundSink out = LWaveFile::OpenSinkPCM(wave.c_str(), kJoinedRate, kJoinedChannels, 16, 0);
        if (out->IsFailed()) {
            progress.SetError("ERROR: Output file could not be created");
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
    }
    if (IsWaveFileName(job.paths.front())) return PROCESS_DONE;

    const std::string mp3 = base.string() + ".mp3";
    if (!EncodeJoined(progress, wave, mp3)) {
        // The joined audio stays as the wave file rather than being lost.
        LOGERROR("Conversion to MP3 joined file %s has failed", mp3.c_str());
        return PROCESS_DONE;
    }
    job.output = mp3;
    std::error_code error;
    if (!fs::remove(wave, error)) LOGWARN("Could not delete file %s", wave.c_str());
    return PROCESS_DONE;
}
