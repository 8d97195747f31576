#include "disc/BurnDataDisk.h"

#include "burn/BurnMediaTypes.h"
#include "disc/BurnDataDiskSteps.h"
#include "disc/FormatText.h"
#include "disc/HybridDataDisk.h"
#include "platform/AtomicFile.h"
#include "platform/File.h"
#include "platform/FileOps.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <vector>

namespace {

constexpr unsigned int kBuildWaitMs = 100;

bool Readable(const std::string& path) {
    return LFile(_OpenRead(path.c_str(), 1000)).IsOpen();
}

bool IsDiscImageName(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return strcasecmp(extension.c_str(), ".iso") == 0 || strcasecmp(extension.c_str(), ".img") == 0;
}

// What lies at the image's path: nothing (false), or a disc image file that the new image may
// replace (true). Anything else is refused with `error` set.
bool ExistingImage(const std::string& path, std::string& error) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        if (errno != ENOENT) error = path + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode) || !IsDiscImageName(path))
        error =
            "\"" + path + "\" exists and is not a disc image (.iso or .img): it is not replaced";
    return true;
}

// The image file being written: a hidden file beside the destination, removed unless it took
// the destination's name.
class PartialImage {
public:
    explicit PartialImage(const std::string& destination) {
        const std::filesystem::path target(destination);
        const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
        const std::string pattern = folder + "/." + target.filename().string() + ".XXXXXX.part";
        std::vector<char> path(pattern.begin(), pattern.end());
        path.push_back('\0');
        file_ = LFile(mkostemps(path.data(), 5, O_CLOEXEC));
        if (file_.IsOpen()) {
            path_ = path.data();
            fchmod(file_.GetFd(), kFileMode);
        }
    }
    ~PartialImage() {
        if (!path_.empty()) unlink(path_.c_str());
    }
    PartialImage(const PartialImage&) = delete;
    PartialImage& operator=(const PartialImage&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }
    int GetFd() const { return file_.GetFd(); }

    // Syncs the image to the disk and gives it the destination's name, replacing the file there
    // only when `replace`. The error, named by `destination`, when that fails.
    BurnErrorCode Commit(const std::string& destination, bool replace) {
        if (fsync(file_.GetFd()) != 0) return LImageWriteError(destination, errno);
        file_.Close();
        const bool renamed = replace ? std::rename(path_.c_str(), destination.c_str()) == 0
                                     : RenameNoReplace(path_.c_str(), destination.c_str());
        if (!renamed) return BurnErrorCode(32, (destination + ": " + std::strerror(errno)).c_str());
        path_.clear();
        return {};
    }

private:
    LFile file_;
    std::string path_;
};

// Writes the image file.
LProcessResult BurnToImageFile(LProcessInterface& progress, LBurnDataDisk& job,
                               const std::string& boot) {
    std::string refusal;
    const bool replace = ExistingImage(job.outputImage, refusal);
    if (!refusal.empty()) return FailBurnDataDisk(progress, job, BurnErrorCode(5, refusal.c_str()));
    if (progress.IsToStop()) return PROCESS_STOPPED;
    progress.SetProgressIndeterminateOn();

    job.media = MEDIA_IMAGE_FILE;
    LHybridDataDisk builder(job.compilation, job.project, MEDIA_IMAGE_FILE, job.sourceImage, boot);
    PartialImage out(job.outputImage);
    if (!out.IsOpen())
        return FailBurnDataDisk(progress, job, 1,
                                LFormatText("Cannot open the ISO file to write \"%s\".",
                                            job.outputImage.c_str()));
    if (job.sourceImage.empty()) builder.Start(LHybridDataDisk::kBuildPriority);
    if (!RunImageBuilder(progress, job, builder)) return BuilderResult(progress, job, builder);

    progress.SetStatus("Writing to ISO Image", 0);
    progress.SetStatus("Please wait...", 1);
    progress.SetProgressIndeterminateOff();
    progress.SetProgress(0);
    if (progress.IsToStop()) return PROCESS_STOPPED;
    job.error = builder.BurnCompilation(progress, out.GetFd(), job.outputImage);
    if (job.error.code == 0) job.error = out.Commit(job.outputImage, replace);
    if (job.error.code != 0) return FailBurnDataDisk(progress, job, job.error);
    return PROCESS_DONE;
}

} // namespace

void ShowBurnDataDiskError(LProcessInterface& progress, LBurnDataDisk& job, const std::string& text) {
    job.errorText = text;
    progress.SetError(text.c_str());
}

LProcessResult FailBurnDataDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                const BurnErrorCode& error) {
    job.error = error;
    ShowBurnDataDiskError(progress, job, job.error.Describe());
    return PROCESS_FAILED;
}

LProcessResult FailBurnDataDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                BurnErrorCodeValue code, const std::string& text) {
    job.error = BurnErrorCode(code, text.c_str());
    ShowBurnDataDiskError(progress, job, text);
    return PROCESS_FAILED;
}

bool RunImageBuilder(LProcessInterface& progress, LBurnDataDisk& job, LHybridDataDisk& builder) {
    progress.SetProgressIndeterminateOn();
    progress.SetStatus("Generating file system", 0);
    progress.SetStatus("Please wait...", 1);
    if (!job.sourceImage.empty()) return builder.Build();
    while (builder.IsRunning() && !builder.Done().IsSignaled()) {
        if (progress.ProcessWaitSignal(builder.Done(), kBuildWaitMs) == WAIT_STOPPED) {
            builder.StopThreadNow();
            job.error = BurnErrorCode(1);
            return false;
        }
    }
    builder.StopThreadNow();
    return builder.Error().code == 0;
}

LProcessResult BuilderResult(LProcessInterface& progress, LBurnDataDisk& job,
                             const LHybridDataDisk& builder) {
    if (job.error.code == 1 || builder.Error().code == 1) {
        job.error = BurnErrorCode(1);
        return PROCESS_STOPPED;
    }
    return FailBurnDataDisk(progress, job, builder.Error());
}

LProcessResult Process(LProcessInterface& progress, LBurnDataDisk& job) {
    job.error = BurnErrorCode();
    job.errorText.clear();
    const bool toImage = !job.outputImage.empty();
    progress.SetStatus(toImage ? "Writing to ISO Image" : "Writing to Disk", 0);
    if (!job.sourceImage.empty() && !Readable(job.sourceImage))
        return FailBurnDataDisk(progress, job, 1,
                                LFormatText("Cannot open the source ISO file \"%s\".",
                                            job.sourceImage.c_str()));
    if (job.sourceImage.empty() && job.compilation.Root().children.empty())
        return FailBurnDataDisk(progress, job, 1,
                                "Disk Write failed because there are no files to write.");
    const std::string boot = job.bootImage.empty() ? job.settings.bootableSectors : job.bootImage;
    if (!boot.empty() && !Readable(boot))
        return FailBurnDataDisk(progress, job, 1,
                                LFormatText("Cannot open the source ISO file \"%s\".", boot.c_str()));
    return toImage ? BurnToImageFile(progress, job, boot) : BurnToDisc(progress, job, boot);
}
