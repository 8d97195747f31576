#include "disc/BurnDataDisk.h"

#include "burn/BurnMediaTypes.h"
#include "disc/HybridDataDisk.h"
#include "platform/File.h"
#include "platform/FileOps.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace {

constexpr unsigned int kBuildWaitMs = 100;

std::string Format(const char* format, const std::string& path) {
    char text[1024];
    std::snprintf(text, sizeof text, format, path.c_str());
    return text;
}

LProcessResult Fail(LProcessInterface& progress, LBurnDataDisk& job, BurnErrorCodeValue code,
                    const std::string& text) {
    job.error = BurnErrorCode(code, text.c_str());
    progress.SetError(text.c_str());
    return PROCESS_FAILED;
}

bool Readable(const std::string& path) {
    return LFile(_OpenRead(path.c_str(), 1000)).IsOpen();
}

} // namespace

LProcessResult Process(LProcessInterface& progress, LBurnDataDisk& job) {
    job.error = BurnErrorCode();
    const char* title = "Writing to ISO Image";
    progress.SetStatus(title, 0);
    if (!job.sourceImage.empty() && !Readable(job.sourceImage))
        return Fail(progress, job, 1, Format("Cannot open the source ISO file \"%s\".", job.sourceImage));
    if (job.sourceImage.empty() && job.compilation.Root().children.empty())
        return Fail(progress, job, 1, "Disk Write failed because there are no files to write.");
    const std::string boot = job.bootImage.empty() ? job.settings.bootableSectors : job.bootImage;
    if (!boot.empty() && !Readable(boot))
        return Fail(progress, job, 1, Format("Cannot open the source ISO file \"%s\".", boot));
    if (progress.IsToStop()) return PROCESS_STOPPED;
    progress.SetProgressIndeterminateOn();

    LHybridDataDisk builder(job.compilation, job.project, MEDIA_IMAGE_FILE, job.sourceImage, boot);
    // Written under a private name in the destination's folder, renamed when complete.
    std::string folder = std::filesystem::path(job.outputImage).parent_path().string();
    if (folder.empty()) folder = ".";
    char partial[4096];
    std::snprintf(partial, sizeof partial, "%s/.%s.%d.part", folder.c_str(),
                  std::filesystem::path(job.outputImage).filename().c_str(), static_cast<int>(getpid()));
    LFile out(::open(partial, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!out.IsOpen())
        return Fail(progress, job, 1, Format("Cannot open the ISO file to write \"%s\".", job.outputImage));
    const auto discard = [&partial] { ::unlink(partial); };

    if (job.sourceImage.empty()) builder.Start(LHybridDataDisk::kBuildPriority);
    else builder.Build();
    progress.SetStatus("Generating file system", 0);
    progress.SetStatus("Please wait...", 1);
    while (job.sourceImage.empty() && builder.IsRunning() && !builder.Done().IsSignaled()) {
        if (progress.ProcessWaitSignal(builder.Done(), kBuildWaitMs) == WAIT_STOPPED) {
            builder.StopThreadNow();
            discard();
            return PROCESS_STOPPED;
        }
    }
    builder.StopThreadNow();
    if (builder.Error().code != 0) {
        discard();
        job.error = builder.Error();
        progress.SetError(job.error.Describe().c_str());
        return job.error.code == 1 ? PROCESS_STOPPED : PROCESS_FAILED;
    }

    progress.SetStatus(title, 0);
    progress.SetStatus("Please wait...", 1);
    progress.SetProgressIndeterminateOff();
    progress.SetProgress(0);
    if (progress.IsToStop()) {
        discard();
        return PROCESS_STOPPED;
    }
    job.error = builder.BurnCompilation(progress, out.GetFd());
    if (job.error.code == 0 && ::rename(partial, job.outputImage.c_str()) != 0)
        job.error = BurnErrorCode(32, job.outputImage.c_str());
    if (job.error.code != 0) {
        discard();
        progress.SetError(job.error.Describe().c_str());
        return PROCESS_FAILED;
    }
    return PROCESS_DONE;
}
