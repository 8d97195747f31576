#include "restore/ConvertJob.h"

#include "codecs/MP3File.h"
#include "codecs/Mp3EncodeSettings.h"
#include "codecs/Mp3EncodeSink.h"
#include "codecs/WaveFile.h"
#include "codecs/WaveFileFormat.h"
#include "jobs/UserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "restore/ConvertNotify.h"
#include "restore/RestoreChain.h"
#include "sound/SourceToSink.h"
#include "tags/AudioTagData.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

bool Exists(const char* path) {
    return access(path, F_OK) == 0;
}

// A regular file that holds something.
bool IsWrittenFile(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

bool SameText(const char* a, const char* b) {
    return strcasecmp(a, b) == 0;
}

LSoundSource OpenSourceByExtension(const char* path) {
    char ext[kPathBufferSize];
    _GetFileExtensionFromPath(ext, path);
    if (SameText(ext, ".wav")) return LWaveFile::OpenSource(path);
    if (SameText(ext, ".mp3")) return LMP3File::OpenSource(path);
    return LSoundSource();
}

// A wave sink in the user's saved format when `useSavedFormat`, else 16-bit PCM at the
// source's rate and channels. The saved format is first stored when there is none yet.
LSoundSink OpenWaveSink(const char* path, const LSoundSource& source, bool useSavedFormat) {
    LWaveFileFormat format(source->GetSampleRate(), source->GetChannels());
    char formatPath[kPathBufferSize];
    if (LWaveFileFormat::GetWavCodecFilePath(formatPath)) {
        if (!Exists(formatPath)) format.SaveToWavCodecFile(formatPath);
        if (useSavedFormat) format.LoadFromWavCodecFile(formatPath);
    }
    return LWaveFile::OpenSink(path, format);
}

LSoundSink OpenSinkByExtension(const char* path, const char* extension, const LSoundSource& source,
                               bool useSavedFormat) {
    if (SameText(extension, ".mp3"))
        return OpenMp3Sink(path, LMp3EncodeSettings(), source->GetSampleRate(),
                           source->GetChannels());
    if (SameText(extension, ".wav")) return OpenWaveSink(path, source, useSavedFormat);
    return LSoundSink();
}

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
    for (int n = 0; Exists(target); ++n) {
        const std::string numbered = std::string(name) + " - " + std::to_string(n);
        _MakeFilePath(target, folder, numbered.c_str(), ext);
    }
    if (!CopyFile(file, target))
        LOGERROR("File copy FAILED: could not copy %s to %s", file, target);
}

void CopyText(char (&field)[260], const char* text) {
    std::snprintf(field, sizeof field, "%s", text);
}

// Writes the opened source into the sink and the tags into the written file.
LProcessResult WriteOutput(LProcessInterface& progress, LProcessConvert& job, LSoundSource& source,
                           const char* writePath) {
    LSoundSink sink = OpenSinkByExtension(writePath, job.outputExtension, source, job.convert != 0);
    LAudioTagData tags;
    const bool haveTags = tags.ReadTags(job.sourcePath, tagModeAll);
    ConvertNotify().SetStatusText("Converting...");

    if (sink->GetError() & 1) {
        progress.SetError(("Save File Error: \"" + std::string(writePath) + "\"").c_str());
        LOGERROR("File conversion FAILED: could not create sink file");
        return PROCESS_FAILED;
    }

    LProcessResult result;
    {
        LPRSourceToSink pump;
        pump.title = "Converting";
        pump.source = source;
        pump.sink = sink;
        result = Process(progress, pump);
    }
    if (job.lengthText[0] == 0) {
        char text[32];
        LSoundTime::FromSamples(source->GetEndSample(), source->GetSampleRate())._GetText(text);
        CopyText(job.lengthText, text);
    }
    // Releasing the last handles finishes the file before its tags go in.
    sink.Close();
    source.Close();
    // An encoder that could not write its file is only seen in what it left behind.
    if (result == PROCESS_DONE && !IsWrittenFile(writePath)) result = PROCESS_FAILED;
    if (result != PROCESS_DONE) {
        LOGERROR("File conversion FAILED: could not write to the sink file %s", writePath);
        unlink(writePath);
    } else if (haveTags && !tags.WriteTags(writePath, tagModeAll, false)) {
        LOGERROR("Tag write FAILED: could not write tag to file %s", writePath);
    }
    return result;
}

// What is done with the written file once the pass succeeded.
void FinishOutput(LProcessConvert& job, const char* writePath, bool inPlace) {
    if (inPlace) {
        // Renaming over the recording replaces it in one step, so it is never lost.
        if (!MoveFile(writePath, job.sourcePath)) {
            LOGERROR("File conversion FAILED: could not rename sink file to source file %s",
                     job.sourcePath);
            return;
        }
    } else if (!job.convert && !SameText(job.sourcePath, job.destinationPath)) {
        if (!MoveFile(job.sourcePath, job.destinationPath))
            LOGERROR("File conversion FAILED: could not rename source file to %s",
                     job.destinationPath);
    }
    if (job.addToList) ConvertNotify().NotifyAdd(job.destinationPath);
    if (job.copyToFolder && job.copyFolder[0]) CopyIntoFolder(job.destinationPath, job.copyFolder);
    ConvertNotify().NotifyProgress(1.0);
}

LProcessResult Convert(LProcessInterface& progress, LProcessConvert& job, bool& inPlace) {
    if (!CreateFolderTree(job.outputFolder)) {
        UserInteraction().ShowError("ERROR: Unable to create folder.");
        return PROCESS_FAILED;
    }

    char name[kPathBufferSize];
    _GetFileNameFromPath(name, job.sourcePath);
    if (job.destinationPath[0] == 0)
        _MakeFilePath(job.destinationPath, job.outputFolder, name, job.outputExtension);
    char fileName[kPathBufferSize];
    _GetFileFromPath(fileName, job.destinationPath);
    ConvertNotify().NotifyFile(fileName);

    // Converting a file onto itself writes beside it first and replaces it afterwards.
    char writePath[kPathBufferSize];
    CopyText(writePath, job.destinationPath);
    inPlace = SameText(job.sourcePath, job.destinationPath);
    if (inPlace) {
        std::string prefixed = "_";
        prefixed += name;
        _MakeFilePath(writePath, job.outputFolder, prefixed.c_str(), job.outputExtension);
    }
    LOG("Converting file to destination %s", inPlace ? job.sourcePath : job.destinationPath);

    LSoundSource source = OpenSourceByExtension(job.sourcePath);
    if (source->GetError() != sndErrNone) {
        LOGERROR("File conversion FAILED: the source file could not be opened %s", job.sourcePath);
        return PROCESS_FAILED;
    }

    if (job.restore && IsAudioRestoreWanted()) {
        LOG("Applying Audio Restoration");
        if (ProcessAudioRestore(progress, source) != PROCESS_DONE)
            LOGERROR("Audio Restoration FAILED: one or more Restoration Tools did not work");
    }

    const LProcessResult result = WriteOutput(progress, job, source, writePath);
    if (result == PROCESS_DONE) FinishOutput(job, writePath, inPlace);
    return result;
}

} // namespace

LProcessResult Process(LProcessInterface& progress, LProcessConvert& job) {
    bool inPlace = false;
    const LProcessResult result = Convert(progress, job, inPlace);
    ConvertNotify().SetStatusText("");
    if (result == PROCESS_DONE && job.deleteSource && !inPlace) unlink(job.sourcePath);
    return result;
}
