#include "play/SplitJob.h"

#include "platform/Log.h"
#include "play/WaveOrMp3Source.h"
#include "restore/Normalize.h"
#include "sound/ConvertRateChannels.h"
#include "sound/PeakLimit.h"
#include "tags/AudioTagData.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr int kBlockFrames = 8192;
constexpr const char* kCannotCreate = "ERROR: Output files could not be created";

LSoundSource OpenSplitSource(const std::string& path) {
    LSoundSource source = OpenWaveOrMp3Source(path);
    // Decoded MP3 may overshoot full scale; the pieces take 16-bit audio.
    if (source->GetMaxAmplitude() > kNormalizeFullScale)
        return LSPPeakLimit(kNormalizeFullScale).OpenSource(source);
    return source;
}

// A piece in the source's format: 16-bit PCM at the source's rate and channels for a wave file,
// the encoder settings of the preferences for an MP3 file.
LSoundSink OpenPiece(const LAudioFileType& type, const std::string& path,
                     const LSoundSource& source) {
    const int rate = source->GetSampleRate();
    const unsigned char channels = source->GetChannels();
    LSoundSink sink = type.openSink(path.c_str(), rate, channels, false);
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

void RemoveFile(const std::string& path) {
    if (!path.empty() && unlink(path.c_str()) != 0 && errno != ENOENT)
        LOGWARN("Could not delete file %s", path.c_str());
}

// The split's state: the pieces written and the one being written, all removed unless the
// split ends as done.
class PieceFiles {
public:
    explicit PieceFiles(std::vector<std::string>& pieces) : pieces_(pieces) {}
    ~PieceFiles() {
        RemoveFile(writing_);
        if (keep_) return;
        for (const std::string& piece : pieces_)
            RemoveFile(piece);
        pieces_.clear();
    }
    PieceFiles(const PieceFiles&) = delete;
    PieceFiles& operator=(const PieceFiles&) = delete;

    // A new hidden file beside the piece's name; "" when none can be made.
    const std::string& Start(const std::string& name) {
        return writing_ = MakeHiddenTemporary(name);
    }
    // Gives the written file its first free piece name; false when it cannot.
    bool Commit(const std::string& source, int index) {
        const std::string piece = CommitToFreeName(
            writing_, [&](int counter) { return SplitPieceName(source, index, counter); });
        if (piece.empty()) {
            LOGERROR("The piece %s could not be named: %s", writing_.c_str(), std::strerror(errno));
            return false;
        }
        writing_.clear();
        pieces_.push_back(piece);
        return true;
    }
    LProcessResult Keep(LProcessResult result) {
        keep_ = true;
        return result;
    }

private:
    std::vector<std::string>& pieces_;
    std::string writing_;
    bool keep_ = false;
};

// Copies frames [start, start + length) of the source into the sink. PROCESS_DONE with `frames`
// the frames copied (fewer when the file ended early), or PROCESS_STOPPED.
LProcessResult CopyPiece(LProcessInterface& progress, LSoundSource& source, LSoundSink& sink,
                         int start, int length, std::vector<int>& buffer, int& copied) {
    source->Seek(start);
    copied = 0;
    for (int remaining = length; remaining > 0;) {
        if (progress.IsToStop()) return PROCESS_STOPPED;
        progress.SetProgress(static_cast<double>(length - remaining) / length);
        const int frames = std::min(remaining, kBlockFrames);
        const int got = ReadFileFrames(*source, buffer.data(), frames);
        sink->Write(buffer.data(), got);
        copied += got;
        if (got < frames) break;
        remaining -= frames;
    }
    return PROCESS_DONE;
}

} // namespace

std::string SplitPieceName(const std::string& path, int index, int counter) {
    const fs::path source(path);
    const std::string stem = source.stem().string();
    const std::string extension = source.extension().string();
    char name[600];
    if (counter == 0)
        std::snprintf(name, sizeof name, "%s_SPLIT_%02d%s", stem.c_str(), index, extension.c_str());
    else
        std::snprintf(name, sizeof name, "%s (%02d)_SPLIT_%02d%s", stem.c_str(), counter, index,
                      extension.c_str());
    return (source.parent_path() / name).string();
}

LProcessResult Process(LProcessInterface& progress, LSplitFileProcessData& job) {
    progress.SetStatus("Splitting File", 0);
    progress.SetProgress(0.0);
    const std::string path = job.path;
    const LAudioFileType* type = SplitJoinFileType(path);
    LSoundSource source = OpenSplitSource(path);
    if (!type || source->GetError() != sndErrNone) {
        progress.SetError("ERROR: The file to split could not be read");
        return PROCESS_FAILED;
    }
    LAudioTagData tags;
    tags.ReadTags(path.c_str(), tagModeAll);

    const int rate = source->GetSampleRate();
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * source->GetChannels());
    PieceFiles files(job.pieces);
    const int count = static_cast<int>(job.positions.size());
    for (int i = 0; i <= count; ++i) {
        const int start = i == 0 ? 0 : job.positions[i - 1];
        const int end = i == count ? source->GetEndSample() : job.positions[i];
        const int length = end - start;
        if (length == 0) continue;
        if (length < 0) return files.Keep(PROCESS_DONE);

        const std::string wanted = SplitPieceName(path, i, 0);
        progress.SetStatus(wanted.c_str(), 1);
        const std::string& writing = files.Start(wanted);
        LSoundSink sink = writing.empty() ? LSoundSink() : OpenPiece(*type, writing, source);
        if (sink->IsFailed()) {
            progress.SetError(kCannotCreate);
            return PROCESS_FAILED;
        }
        int copied = 0;
        if (CopyPiece(progress, source, sink, start, length, buffer, copied) == PROCESS_STOPPED)
            return PROCESS_STOPPED;
        const bool failed = sink->IsFailed();
        sink.Close();
        if (failed || !fs::exists(writing)) {
            progress.SetError(kCannotCreate);
            return PROCESS_FAILED;
        }
        TagPiece(tags, path, writing, i);
        if (!files.Commit(path, i)) {
            progress.SetError(kCannotCreate);
            return PROCESS_FAILED;
        }
        // The file ended early: this piece ends there, and so does the split.
        if (copied < length) {
            LogShortFile(path, start + copied, rate);
            break;
        }
    }
    return files.Keep(PROCESS_DONE);
}
