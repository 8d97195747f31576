#include "cli/CliDiscOptions.h"
#include "cli/Commands.h"

#include "burn/BurnMediaTypes.h"
#include "burn/DiskBurnSettings.h"
#include "disc/BurnDataDisk.h"
#include "disc/FormatText.h"
#include "drives/SystemDiscService.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli burn-data PATH... [--drive N] [--label L] [--project N] [--verify]\n"
    "                            [--erase] [--speed X] [--from IMAGE]\n"
    "  folders are added with their whole trees; the project decides the file systems\n"
    "  (18 ISO 9660 + Joliet + UDF, the default; 16 ISO and 17 UDF for the disc's kind);\n"
    "  --speed is a multiple of the disc's base speed (max: the fastest); --verify reads the\n"
    "  disc back; --erase erases a used rewritable disc first; --from burns an existing image\n";

int Usage() {
    std::fputs(kUsage, stderr);
    return 2;
}

// "--speed X": a positive multiple of the base speed, or "max" for the fastest.
bool ParseSpeed(const std::string& text, double& speed) {
    if (text == "max") {
        speed = -1.0;
        return true;
    }
    char* end = nullptr;
    speed = std::strtod(text.c_str(), &end);
    return !text.empty() && !*end && speed > 0 && speed < 1000;
}

} // namespace

int CliBurnData(const CliArgs& args) {
    LAbstractFileSystem compilation;
    compilation.SetFSVolumeLabel(LCDVNBurnSettings().cdLabel);
    int project = PROJECT_HYBRID_DISK;
    std::string source;
    LDiskBurnSettings settings;
    // A command line verifies and erases only when told to.
    settings.verifyBurn = false;
    settings.eraseCDRW = false;
    std::vector<std::string> paths;
    for (size_t i = 0; i < args.size(); ++i) {
        const bool hasValue = i + 1 < args.size();
        if (args[i] == "--drive" && hasValue && ParseDrive(args[i + 1], settings.cdDrive)) {
            ++i;
        } else if (args[i] == "--label" && hasValue) {
            compilation.SetFSVolumeLabel(args[++i]);
        } else if (args[i] == "--project" && hasValue && ParseProject(args[i + 1], project)) {
            ++i;
        } else if (args[i] == "--speed" && hasValue && ParseSpeed(args[i + 1], settings.speed)) {
            ++i;
        } else if (args[i] == "--from" && hasValue) {
            source = args[++i];
        } else if (args[i] == "--verify") {
            settings.verifyBurn = true;
        } else if (args[i] == "--erase") {
            settings.eraseCDRW = true;
        } else if (!args[i].starts_with("--")) {
            paths.push_back(args[i]);
        } else {
            return Usage();
        }
    }
    if (paths.empty() == source.empty()) return Usage();
    if (project == PROJECT_VIDEO_DVD && source.empty()) {
        std::fputs("vinora-cli burn-data: project 1 (Video DVD) is not built: its video layout is "
                   "not made here; use --project 9 for a DVD with ISO 9660, Joliet and UDF\n",
                   stderr);
        return 2;
    }
    if (!CliAddPaths(compilation, paths, "burn-data")) return 2;
    InstallSystemDiscService();

    LBurnDataDisk job(compilation, {}, project);
    job.settings = settings;
    job.sourceImage = source;
    CliDiscProgress progress;
    const LProcessResult result = Process(progress, job);
    // A stop while writing is the job's error 1.
    if (result == PROCESS_STOPPED || (job.error.code == 1 && progress.IsToStop())) {
        std::fputs("vinora-cli burn-data: stopped\n", stderr);
        return PROCESS_STOPPED;
    }
    if (result == PROCESS_FAILED) {
        std::string text = job.errorText.empty() ? job.error.Describe() : job.errorText;
        // The drive's own reason, for a failing drive command.
        if (job.error.senseKey)
            text += LFormatText(" (sense %X/%02X/%02X)", job.error.senseKey,
                                job.error.additionalSenseCode, job.error.additionalSenseCodeQualifier);
        std::fprintf(stderr, "vinora-cli burn-data: %s\n", text.c_str());
        return PROCESS_FAILED;
    }
    char media[32];
    std::fprintf(stderr, "Burnt to the %s%s.\n", GetMediaTypeString(job.media, media),
                 settings.verifyBurn ? " and verified it" : "");
    return PROCESS_DONE;
}
