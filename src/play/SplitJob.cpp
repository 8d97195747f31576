#include "play/SplitJob.h"

#include "codecs/Mp3EncodeSettings.h"
#include "codecs/Mp3EncodeSink.h"
#include "codecs/WaveFile.h"
#include "platform/Log.h"
#include "play/WaveOrMp3Source.h"
#include "restore/Normalize.h"
#include "sound/ConvertRateChannels.h"
#include "sound/PeakLimit.h"
#include "tags/AudioTagData.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kBlockFrames = 8192;

bool Exists(const std::string& path) {
    std::error_code error;
    return fs::exists(path, error);
}

LSoundSource OpenSplitSource(const std::string& path) {
    LSoundSource source = OpenWaveOrMp3Source(path);
    if (IsWaveFileName(path)) return source;
    // Decoded MP3 may overshoot full scale; the encoder takes 16-bit audio.
    return LSPPeakLimit(kNormalizeFullScale).OpenSource(source);
}

LSoundSink OpenPiece(const std::string& piece, bool wave, const LSoundSource& source) {
    const int rate = source->GetSampleRate();
    const unsigned char channels = source->GetChannels();
    if (wave) return LWaveFile::OpenSinkPCM(piece.c_str(), rate, channels, 16, 0);
    LSoundSink sink = OpenMp3Sink(piece.c_str(), LMp3EncodeSettings(), rate, channels);
    if (!sink->IsFailed()) LSinkConvertRateChannels(rate, channels, sink);
    return sink;
}

// The source's tags with the title numbered by piece, so a piece never loses what the user typed.
void TagPiece(const LAudioTagData& tags, const std::string& source, const std::string& piece,
              int index) {
    if (tags.GetTag("TITLE").empty() && tags.GetTag("ARTIST").empty() &&
        tags.GetTag("ALBUM").empty())
        return;
    LAudioTagData pieceTags = tags;
    std::string title = tags.GetTag("TITLE");
    if (title.empty()) title = fs::path(source).stem().string();
    pieceTags.SetTag("TITLE", (title + " (" + std::to_string(index + 1) + ")").c_str(), true);
    if (!pieceTags.WriteTags(piece.c_str(), tagModeAll, false))
        LOGWARN("Tag write FAILED: could not write tag to file %s", piece.c_str());
}

void RemovePieces(const std::vector<std::string>& pieces) {
    for (const std::string& piece : pieces) {
        std::error_code error;
        if (!fs::remove(piece, error) && error)
            LOGWARN("Could not delete file %s", piece.c_str());
    }
}

} // namespace

std::string SplitPieceName(const std::string& path, int index) {
    const fs::path source(path);
    const std::string stem = source.stem().string();
    const std::string extension = source.extension().string();
    char name[600];
    std::snprintf(name, sizeof name, "%s_SPLIT_%02d%s", stem.c_str(), index, extension.c_str());
    fs::path piece = source.parent_path() / name;
    for (int counter = 1; Exists(piece.string()); ++counter) {
        std::snprintf(name, sizeof name, "%s (%02d)_SPLIT_%02d%s", stem.c_str(), counter, index,
                      extension.c_str());
        piece = source.parent_path() / name;
    }
    return piece.string();
}

LProcessResult Process(LProcessInterface& progress, LSplitFileProcessData& job) {
    progress.SetStatus("Splitting File", 0);
    progress.SetProgress(0.0);
    const std::string path = job.path;
    const bool wave = IsWaveFileName(path);
    LSoundSource source = OpenSplitSource(path);
    if (source->GetError() != sndErrNone) {
        progress.SetError("ERROR: The file to split could not be read");
        return PROCESS_FAILED;
    }
    LAudioTagData tags;
    tags.ReadTags(path.c_str(), tagModeAll);

    const int channels = source->GetChannels();
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    const int count = static_cast<int>(job.positions.size());
    for (int i = 0; i <= count; ++i) {
        const int start = i == 0 ? 0 : job.positions[i - 1];
        const int end = i == count ? source->GetEndSample() : job.positions[i];
        const int length = end - start;
        if (length == 0) continue;
        if (length < 0) return PROCESS_DONE;

        const std::string piece = SplitPieceName(path, i);
        progress.SetStatus(piece.c_str(), 1);
        LSoundSink sink = OpenPiece(piece, wave, source);
        if (sink->IsFailed()) {
            progress.SetError("ERROR: Output files could not be created");
            return PROCESS_FAILED;
        }
        job.pieces.push_back(piece);
        source->Seek(start);
        for (int remaining = length; remaining > 0;) {
            if (progress.IsToStop()) {
                sink.Close();
                RemovePieces(job.pieces);
                job.pieces.clear();
                return PROCESS_STOPPED;
            }
            progress.SetProgress(static_cast<double>(length - remaining) / length);
            const int frames = std::min(remaining, kBlockFrames);
            source->Read(buffer.data(), frames);
            sink->Write(buffer.data(), frames);
            remaining -= frames;
        }
        const bool failed = sink->IsFailed();
        sink.Close();
        if (failed || !Exists(piece)) {
            progress.SetError("ERROR: Output files could not be created");
            return PROCESS_FAILED;
        }
        TagPiece(tags, path, piece, i);
    }
    return PROCESS_DONE;
}
