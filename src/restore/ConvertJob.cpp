#include "restore/ConvertJob.h"

#include "codecs/AudioFileSource.h"
#include "codecs/AudioFileTypes.h"
#include "codecs/WaveFile.h"
#include "jobs/UserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"
#include "restore/ConvertNotify.h"
#include "restore/RecoveredRecordings.h"
#include "restore/RestoreChain.h"
#include "sound/SourceToSink.h"
#include "tags/AudioTagData.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>
#include <thread>

namespace {

// A regular file that holds something.
bool IsWrittenFile(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

LSoundSink OpenSinkByExtension(const char* path, const char* extension, int rate,
                               unsigned char channels, bool useSavedFormat) {
    // The request names the output's type by its extension alone.
    const LAudioFileType* type = LFindAudioFileType((std::string("output") + extension).c_str());
    if (!type) return LSoundSink();
    return type->openSink(path, rate, channels, useSavedFormat);
}

// Opens the output's sink on a thread of its own while the job goes on (finding and starting
// an encoder then overlaps restoration's measuring pass); Take waits for it. Without a thread
// to be had, Take opens the sink itself.
class OutputOpening {
public:
    OutputOpening(const LProcessConvert& job, const LSoundSource& source, const char* writePath)
        : writePath_(writePath), extension_(job.outputExtension),
          rate_(source->GetSampleRate()), channels_(source->GetChannels()),
          useSavedFormat_(job.convert != 0) {
        try {
            opener_ = std::thread([this] { sink_ = Open(); });
        } catch (const std::system_error&) {
        }
    }
    ~OutputOpening() {
        if (opener_.joinable()) opener_.join();
    }
    OutputOpening(const OutputOpening&) = delete;
    OutputOpening& operator=(const OutputOpening&) = delete;

    // The sink; called once.
    LSoundSink Take() {
        if (opener_.joinable())
            opener_.join();
        else
            sink_ = Open();
        return sink_;
    }

private:
    LSoundSink Open() const {
        return OpenSinkByExtension(writePath_.c_str(), extension_.c_str(), rate_, channels_,
                                   useSavedFormat_);
    }

    std::string writePath_;
    std::string extension_;
    int rate_;
    unsigned char channels_;
    bool useSavedFormat_;
    LSoundSink sink_; // written by the thread until it is joined
    std::thread opener_;
};

// Copies `file` into `folder` (created when missing) under its own name, or "name - n" with
// the first n from 0 that is free.
void CopyIntoFolder(const char* file, const char* folder) {
    CreateFolderTree(folder);
    char fileName[kPathBufferSize], name[kPathBufferSize], ext[kPathBufferSize];
    _GetFileFromPath(fileName, file);
    _GetFileNameFromPath(name, file);
    _GetFileExtensionFromPath(ext, file);
    char target[kPathBufferSize];
    _MakeFilePath(target, folder, fileName);
    for (int n = 0; IsNameTaken(target); ++n) {
        const std::string numbered = std::string(name) + " - " + std::to_string(n);
        _MakeFilePath(target, folder, numbered.c_str(), ext);
    }
    if (!CopyFile(file, target))
        LOGERROR("File copy FAILED: could not copy %s to %s", file, target);
}

void CopyText(char (&field)[260], const char* text) {
    std::snprintf(field, sizeof field, "%s", text);
}

void SetSaveError(LProcessInterface& progress, const LProcessConvert& job) {
    progress.SetError(("Save File Error: \"" + std::string(job.destinationPath) + "\"").c_str());
}

// Writes the opened source into the sink and the tags into the written file.
LProcessResult WriteOutput(LProcessInterface& progress, LProcessConvert& job, LSoundSource& source,
                           LSoundSink& sink, const char* writePath) {
    LAudioTagData tags;
    const bool haveTags = tags.ReadTags(job.sourcePath, tagModeAll);
    ConvertNotify().SetStatusText("Converting...");

    LProcessResult result;
    {
        LPRSourceToSink pump;
        pump.title = "Converting";
        pump.source = source;
        pump.sink = sink;
        result = Process(progress, pump);
    }
    // A sink that could not take everything (a full disk) did not write a whole file.
    if (result == PROCESS_DONE && sink->IsFailed()) {
        SetSaveError(progress, job);
        result = PROCESS_FAILED;
    }
    if (source->GetError() != sndErrNone)
        LOGERROR("File conversion FAILED: the audio of %s could not be read", job.sourcePath);
    if (job.lengthText[0] == 0) {
        char text[32];
        LSoundTime::FromSamples(source->GetEndSample(), source->GetSampleRate())._GetText(text);
        CopyText(job.lengthText, text);
    }
    // Releasing the last handles finishes the file before its tags go in. The source goes
    // first: its threads and kept pass are let go while the encoder finishes.
    source.Close();
    sink.Close();
    // An encoder that could not write its file is only seen in what it left behind.
    if (result == PROCESS_DONE && !IsWrittenFile(writePath)) result = PROCESS_FAILED;
    if (result != PROCESS_DONE) {
        LOGERROR("File conversion FAILED: could not write to the sink file %s",
                 job.destinationPath);
        unlink(writePath);
    } else if (haveTags && !tags.WriteTags(writePath, tagModeAll, false)) {
        LOGERROR("Tag write FAILED: could not write tag to file %s", job.destinationPath);
    }
    return result;
}

// Renames `from` to `to` unless `to` exists; errno EEXIST when it does. A file system that
// cannot refuse in the rename itself is asked first.
bool RenameWithoutReplacing(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (IsNameTaken(to)) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from, to) == 0;
}

// The destination with " (n)" added to its name, for the first n from 2 that `place` does
// not refuse because the file exists already.
template <typename Place> bool PlaceAtFreeName(LProcessConvert& job, Place place) {
    const std::string wanted = job.destinationPath;
    char folder[kPathBufferSize], name[kPathBufferSize], ext[kPathBufferSize];
    _GetFolderFromPath(folder, wanted.c_str());
    _GetFileNameFromPath(name, wanted.c_str());
    _GetFileExtensionFromPath(ext, wanted.c_str());
    for (int n = 2;; ++n) {
        if (place(job.destinationPath)) break;
        if (errno != EEXIST) return false;
        const std::string numbered = std::string(name) + " (" + std::to_string(n) + ")";
        _MakeFilePath(job.destinationPath, folder, numbered.c_str(), ext);
    }
    if (wanted != job.destinationPath)
        LOGWARN("The file %s exists already: the output is saved as %s", wanted.c_str(),
                job.destinationPath);
    return true;
}

// What is done with the written file once the pass succeeded: it takes the destination's name
// (or, when the conversion is not kept, the source itself moves there). A file that is already
// there is never replaced, unless it is the source converted onto itself (`inPlace`): the output
// otherwise takes the next free name. False when the output could not be put in place; the
// source is then kept.
bool FinishOutput(LProcessConvert& job, const char* writePath, bool inPlace) {
    if (job.convert || inPlace) {
        // On the disk before it takes the name: it may replace the source, or the recording it
        // comes from may be deleted next.
        if (!SyncFile(writePath)) {
            LOGERROR("File conversion FAILED: could not write to the sink file %s",
                     job.destinationPath);
            unlink(writePath);
            return false;
        }
        const bool placed =
            inPlace ? std::rename(writePath, job.destinationPath) == 0
                    : PlaceAtFreeName(job, [&](const char* to) {
                          return RenameWithoutReplacing(writePath, to);
                      });
        if (!placed) {
            LOGERROR("File conversion FAILED: could not rename sink file to %s",
                     job.destinationPath);
            unlink(writePath);
            return false;
        }
    } else {
        unlink(writePath);
        const bool placed = PlaceAtFreeName(job, [&](const char* to) {
            if (IsNameTaken(to)) {
                errno = EEXIST;
                return false;
            }
            return MoveFile(job.sourcePath, to);
        });
        if (!placed) {
            LOGERROR("File conversion FAILED: could not rename source file to %s",
                     job.destinationPath);
            return false;
        }
    }
    if (job.addToList) ConvertNotify().NotifyAdd(job.destinationPath);
    if (job.copyToFolder && job.copyFolder[0]) CopyIntoFolder(job.destinationPath, job.copyFolder);
    ConvertNotify().NotifyProgress(1.0);
    return true;
}

LProcessResult Convert(LProcessInterface& progress, LProcessConvert& job,
                       const LRestoreChoices* choices, bool& inPlace) {
    if (!CreateFolderTree(job.outputFolder)) {
        UserInteraction().ShowError("ERROR: Unable to create folder.");
        return PROCESS_FAILED;
    }

    if (job.destinationPath[0] == 0) {
        char destination[kPathBufferSize];
        LGetRequestDestination(destination, job);
        std::memcpy(job.destinationPath, destination, sizeof job.destinationPath);
    }
    char fileName[kPathBufferSize];
    _GetFileFromPath(fileName, job.destinationPath);
    ConvertNotify().NotifyFile(fileName);

    // The output is written under a hidden name beside its destination and renamed into place
    // only when it is complete, tags included: a crash or a full disk never leaves a file that
    // looks finished, and converting a file onto itself replaces it in one step.
    char writePath[kPathBufferSize];
    LGetPartialOutputPath(writePath, job.destinationPath);
    // Only the source itself is replaced: a destination whose name differs from the source's in
    // case alone is another file where case counts.
    inPlace = IsSameFile(job.sourcePath, job.destinationPath);
    LOG("Converting file to destination %s", job.destinationPath);
    // A hidden file left by an earlier run of this request is ours to drop. Starting afresh
    // also means a link someone put under that name is never written through.
    unlink(writePath);

    LSoundSource source = LOpenAudioFileSource(job.sourcePath);
    if (source->GetError() != sndErrNone) {
        LOGERROR("File conversion FAILED: the source file could not be opened %s", job.sourcePath);
        return PROCESS_FAILED;
    }

    // Restoration keeps the rate and the channels, so the output is opened while it runs.
    LSoundSink sink;
    {
        OutputOpening opening(job, source, writePath);
        if (job.restore && (choices ? choices->Any() : LRestoreChoices::IsWantedBySettings())) {
            LOG("Applying Audio Restoration");
            if (ProcessAudioRestore(progress, source, choices ? *choices
                                                              : LRestoreChoices::FromSettings()) !=
                PROCESS_DONE)
                LOGERROR("Audio Restoration FAILED: one or more Restoration Tools did not work");
        }
        sink = opening.Take();
    }
    if (sink->IsFailed()) {
        SetSaveError(progress, job);
        LOGERROR("File conversion FAILED: could not create sink file");
        return PROCESS_FAILED;
    }

    LProcessResult result = WriteOutput(progress, job, source, sink, writePath);
    if (result == PROCESS_DONE && !FinishOutput(job, writePath, inPlace)) result = PROCESS_FAILED;
    return result;
}

} // namespace

void LGetPartialOutputPath(char* out, const char* destination) {
    char folder[kPathBufferSize], name[kPathBufferSize], ext[kPathBufferSize];
    _GetFolderFromPath(folder, destination);
    // A file at the root has an empty folder; its hidden file is at the root too.
    if (folder[0] == 0 && destination[0] == '/') std::snprintf(folder, sizeof folder, "/");
    _GetFileNameFromPath(name, destination);
    _GetFileExtensionFromPath(ext, destination);
    std::string hidden = ".";
    hidden.append(name).append(".partial");
    _MakeFilePath(out, folder, hidden.c_str(), ext);
}

namespace {

// A recording the job was to delete when done exists only among the temporary recordings, where
// nobody looks for it: when its conversion fails it is kept in the output folder instead.
void KeepFailedRecording(const LProcessConvert& job) {
    if (!job.deleteSource || std::strncmp(job.sourcePath, kTemporaryRecordingFolder,
                                          std::strlen(kTemporaryRecordingFolder)) != 0 ||
        !IsNameTaken(job.sourcePath))
        return;
    char name[kPathBufferSize], kept[kPathBufferSize];
    _GetFileNameFromPath(name, job.destinationPath[0] ? job.destinationPath : job.sourcePath);
    if (LRecoverRecording(job.sourcePath, job.outputFolder, name, kept))
        LOGWARN("The recording %s could not be converted; it was kept as %s", job.sourcePath,
                kept);
}

LProcessResult Run(LProcessInterface& progress, LProcessConvert& job,
                   const LRestoreChoices* choices) {
    LTerminateRequestStrings(job);
    bool inPlace = false;
    const LProcessResult result = Convert(progress, job, choices, inPlace);
    ConvertNotify().SetStatusText("");
    if (result == PROCESS_FAILED) KeepFailedRecording(job);
    // A source that was moved or replaced is gone already.
    if (result == PROCESS_DONE && job.deleteSource && !inPlace && job.convert) {
        // The output's new name is on the disk before the recording goes.
        char folder[kPathBufferSize];
        _GetFolderFromPath(folder, job.destinationPath);
        if (SyncFile(folder[0] ? folder : job.destinationPath[0] == '/' ? "/" : "."))
            unlink(job.sourcePath);
        else
            LOGERROR("The recording %s is kept: the folder of %s could not be synced",
                     job.sourcePath, job.destinationPath);
    }
    return result;
}

} // namespace

LProcessResult Process(LProcessInterface& progress, LProcessConvert& job) {
    return Run(progress, job, nullptr);
}

LProcessResult Process(LProcessInterface& progress, LProcessConvert& job,
                       const LRestoreChoices& choices) {
    return Run(progress, job, &choices);
}
