#include "cli/CliDiscOptions.h"
#include "cli/Commands.h"

#include "burn/BurnMediaTypes.h"
#include "burn/DiskBurnSettings.h"
#include "disc/BurnDataDisk.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli mkiso OUT.iso [--label L] [--project N] [--boot FILE] PATH...\n"
    "       vinora-cli mkiso OUT.iso --from IMAGE\n"
    "  folders are added with their whole trees; the project decides the file systems:\n"
    "  2 ISO 9660 + Joliet, 3 ISO 9660, 4 UDF, 18 ISO 9660 + Joliet + UDF (the default);\n"
    "  1 (Video DVD) and 17 (UDF Disk) are not made into image files;\n"
    "  --from copies an existing image file; an existing OUT is replaced only when it is an\n"
    "  .iso or .img file\n";

// Why a project cannot be made into an image file; null when it can.
const char* ProjectNotBuilt(int project) {
    switch (project) {
    case PROJECT_VIDEO_DVD:
        return "project 1 (Video DVD) is not built: its video layout is not made here; use "
               "--project 9 for a DVD with ISO 9660, Joliet and UDF";
    case PROJECT_UDF_DISK:
        return "project 17 (UDF Disk) takes its UDF project from the disc in the drive, and an "
               "image file has none; use --project 4 (UDF CD) or 8 (UDF DVD)";
    default:
        return nullptr;
    }
}

} // namespace

int CliMkiso(const CliArgs& args) {
    if (args.empty() || args[0].starts_with("--")) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    LAbstractFileSystem compilation;
    compilation.SetFSVolumeLabel(LCDVNBurnSettings().cdLabel);
    int project = PROJECT_HYBRID_DISK;
    std::string boot;
    std::string source;
    std::vector<std::string> paths;
    for (size_t i = 1; i < args.size(); ++i) {
        const bool hasValue = i + 1 < args.size();
        if (args[i] == "--label" && hasValue) {
            compilation.SetFSVolumeLabel(args[++i]);
        } else if (args[i] == "--project" && hasValue && ParseProject(args[i + 1], project)) {
            ++i;
        } else if (args[i] == "--boot" && hasValue) {
            boot = args[++i];
        } else if (args[i] == "--from" && hasValue) {
            source = args[++i];
        } else if (!args[i].starts_with("--")) {
            paths.push_back(args[i]);
        } else {
            std::fputs(kUsage, stderr);
            return 2;
        }
    }
    if (paths.empty() == source.empty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (const char* reason = ProjectNotBuilt(project); reason && source.empty()) {
        std::fprintf(stderr, "vinora-cli mkiso: %s\n", reason);
        return 2;
    }
    if (!CliAddPaths(compilation, paths, "mkiso")) return 2;
    LBurnDataDisk job(compilation, args[0], project);
    job.sourceImage = source;
    job.bootImage = boot;
    CliJobProgress progress;
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_STOPPED) {
        std::fprintf(stderr, "vinora-cli mkiso: stopped\n");
    } else if (result == PROCESS_FAILED) {
        std::fprintf(stderr, "vinora-cli mkiso: %s\n", job.error.Describe().c_str());
    }
    return result;
}
