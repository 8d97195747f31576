#include "cli/CliAudioFiles.h"
#include "cli/CliDiscOptions.h"
#include "cli/Commands.h"

#include "burn/DiskBurnSettings.h"
#include "disc/CDBurnAudio.h"
#include "disc/DiscDrives.h"
#include "drives/SystemDiscService.h"
#include "platform/Log.h"
#include "tags/AudioTagData.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

// The options every disc command shares: --drive N, and the flags it accepts.
struct DiscOptions {
    uint8_t drive = LDiskBurnSettings().cdDrive;
    bool flag = false;
    std::vector<std::string> files;
};

bool ParseDiscOptions(const CliArgs& args, const char* flag, bool takesFiles, DiscOptions& out) {
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--drive" && i + 1 < args.size() && ParseDrive(args[i + 1], out.drive)) ++i;
        else if (flag && args[i] == flag) out.flag = true;
        else if (takesFiles && !args[i].starts_with("--")) out.files.push_back(args[i]);
        else return false;
    }
    return !takesFiles || !out.files.empty();
}

int Usage(const char* usage) {
    std::fprintf(stderr, "usage: vinora-cli %s\n", usage);
    return 2;
}

std::string MediaText(const LDiscDeviceStatus& status) {
    if (status.inTransition) return "not ready";
    if (!status.mediaPresent) return "No Disk";
    char name[32];
    GetMediaTypeString(MediaTypeOfKind(status.kind), name);
    std::string text = name[0] ? name : "unknown disc";
    text += status.blank ? ", blank" : ", used";
    if (status.appendable) text += ", appendable";
    if (status.erasable) text += ", erasable";
    return text;
}

std::string FreeText(const LDiscDeviceStatus& status) {
    if (!status.mediaPresent) return "No Disc in Drive";
    if (status.usedBlocks > 0) return "Disc Already Used";
    return CapacityText(status.freeBlocks, 4) + " of audio, " + CapacityText(status.freeBlocks, 2);
}

} // namespace

int CliDrives(const CliArgs& args) {
    if (!args.empty()) return Usage("drives");
    InstallSystemDiscService();
    const std::vector<LDiscDeviceRef> devices = DiscService().CopyDeviceArray();
    if (devices.empty()) {
        std::printf("No burners found.\n");
        return 0;
    }
    for (size_t i = 0; i < devices.size(); ++i) {
        const LDiscDeviceStatus status = devices[i]->CopyStatus();
        std::printf("%zu: %s\n   media: %s\n   free: %s\n   speeds:", i,
                    MapDriveNumberToString(unsigned(i)).c_str(), MediaText(status).c_str(),
                    FreeText(status).c_str());
        const int unit = SpeedUnitForMedia(MediaTypeOfKind(status.kind));
        for (double speed : status.burnSpeeds) std::printf(" %dx", SpeedInTenths(speed, unit) / 10);
        std::printf("%s\n", status.burnSpeeds.empty() ? " none" : "");
    }
    return 0;
}

int CliBurnAudio(const CliArgs& args) {
    constexpr const char* kUsage = "burn-audio FILE... [--drive N] [--erase]";
    DiscOptions options;
    if (!ParseDiscOptions(args, "--erase", true, options)) return Usage(kUsage);
    InstallSystemDiscService();
    LCDBurnAudio job;
    job.cdDrive = options.drive;
    // A command line erases a disc only when told to.
    job.eraseCDRW = options.flag;
    for (const std::string& file : options.files) {
        LSoundSource source = CliOpenAudioSource(file);
        if (source->GetError() != sndErrNone) {
            LOGERROR("Unable to open file %s", file.c_str());
            std::fprintf(stderr, "Unable to open file %s: %s\n", file.c_str(),
                         CliSoundErrorText(source->GetError()));
            continue;
        }
        LAudioTagData tags;
        tags.ReadTags(file.c_str(), tagModeAll);
        std::string title = tags.GetTag("TITLE");
        if (title.empty()) title = std::filesystem::path(file).stem().string();
        job.AddTrack(source, file.c_str(), title.c_str(), tags.GetTag("ARTIST").c_str(), nullptr);
    }
    if (job.TrackCount() == 0) {
        std::fprintf(stderr, "vinora-cli burn-audio: %s\n", GetBurnErrorMessage(26));
        return 2;
    }
    CliDiscProgress progress;
    const LProcessResult result = Process(progress, job);
    if (result != PROCESS_DONE) {
        std::fprintf(stderr, "vinora-cli burn-audio: %s\n", job.error.Describe().c_str());
        return progress.IsToStop() ? PROCESS_STOPPED : PROCESS_FAILED;
    }
    std::fprintf(stderr, "Burnt %d tracks.\n", job.TrackCount());
    return 0;
}

int CliErase(const CliArgs& args) {
    constexpr const char* kUsage = "erase [--drive N] [--full]";
    DiscOptions options;
    if (!ParseDiscOptions(args, "--full", false, options)) return Usage(kUsage);
    InstallSystemDiscService();
    LDiskBurnSettings settings;
    settings.cdDrive = options.drive;
    settings.fullErase = options.flag;
    ProcessEraseDisk job;
    CliDiscProgress progress;
    const LProcessResult result = Process(progress, job, settings);
    if (result != PROCESS_DONE)
        std::fprintf(stderr, "vinora-cli erase: %s\n", job.error.Describe().c_str());
    return result;
}

int CliEject(const CliArgs& args) {
    DiscOptions options;
    if (!ParseDiscOptions(args, nullptr, false, options)) return Usage("eject [--drive N]");
    InstallSystemDiscService();
    LDiscDeviceRef device = CopyDeviceByIndex(options.drive);
    if (!device) {
        std::fprintf(stderr, "vinora-cli eject: %s\n", GetBurnErrorMessage(15));
        return 2;
    }
    if (!device->EjectMedia()) {
        std::fprintf(stderr, "vinora-cli eject: the drive did not eject\n");
        return 2;
    }
    return 0;
}
