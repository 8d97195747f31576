#include "disc/CDBurnAudio.h"

#include "codecs/AiffFile.h"
#include "disc/DiscCheck.h"
#include "disc/DiskEventListener.h"
#include "platform/Log.h"
#include "platform/TemporaryFolder.h"
#include "sound/SourceToSink.h"

#include <cstdio>

namespace {

std::vector<LAudioCDTrack*> Tracks(LAbstractFileSystem& compilation) {
    std::vector<LAudioCDTrack*> tracks;
    for (auto& [name, item] : compilation.Root().children)
        if (item->audioTrack) tracks.push_back(item->audioTrack.get());
    return tracks;
}

// Steps 3 to 10 with the drive in hand: the disc check, the conversion and the burn.
void BurnOnDevice(LProcessInterface& progress, LCDBurnAudio& job, LDiscDevice& device,
                  std::unique_ptr<LTemporaryFolder>& folder) {
    progress.SetStatus("Checking disc and drive", 0);
    progress.SetProgressIndeterminateOn();
    if (ProcessCheckDriveAndDisk(progress, device, job, PROJECT_AUDIO_CD) != 0) {
        job.error = BurnErrorCode(14);
        return;
    }
    folder = std::make_unique<LTemporaryFolder>(job.temporaryRoot, "vinora-cd-");
    if (folder->Path().empty()) {
        job.error = BurnErrorCode(6);
        return;
    }
    progress.SetProgressIndeterminateOff();
    progress.SetStatus("Recording CD Audio", 0);
    if (ProcessConvertSourceToAiff(progress, job, folder->Path()) != 0) {
        job.error = BurnErrorCode(26);
        return;
    }
    std::optional<LServiceTrackArray> tracks = CreateTracks(folder->Path());
    if (!tracks || tracks->empty()) {
        job.error = BurnErrorCode(41);
        return;
    }
    // CD-TEXT comes from the job's tracks, in the same order as the files made of them.
    const std::vector<LAudioCDTrack*> sources = Tracks(job.compilation);
    LDiscBurnOptions options;
    options.speed = job.speed > 0 ? int(job.speed) : 0;
    options.cdText = job.cdText;
    progress.SetStatus("Recording CD Audio", 0);
    const int result = ProcessBurnAudioCD(progress, device, *tracks, options, sources);
    if (result != 0) job.error = BurnErrorCode(46);
}

} // namespace

LCDBurnAudio::LCDBurnAudio() {
    compilation.SetFSVolumeLabel("Label");
}

void LCDBurnAudio::AddTrack(const LSoundSource& source, const char* path, const char* title,
                            const char* performer, const char* text3) {
    ++trackCount_;
    char name[16];
    std::snprintf(name, sizeof name, "File%.2d", trackCount_);
    auto item = LAbstractBurnFile::Named(name, false, 0, std::time(nullptr));
    item->audioTrack = std::make_shared<LAudioCDTrack>(source, path, title, performer, text3);
    compilation.Root().AddSubFile(std::move(item));
}

int ProcessConvertSourceToAiff(LProcessInterface& progress, LCDBurnAudio& job,
                               const std::string& folder) {
    int index = 0;
    for (LAudioCDTrack* track : Tracks(job.compilation)) {
        ++index;
        char name[32];
        std::snprintf(name, sizeof name, "track%.2d.aiff", index);
        const std::string path = folder + "/" + name;
        char line[64];
        std::snprintf(line, sizeof line, "Converting Audio Files %d", index);
        progress.SetStatus("Converting", 0);
        progress.SetStatus(line, 1);
        progress.SetProgress(0.0);
        track->source->Seek(0);
        LPRSourceToSink pump;
        pump.source = track->source;
        pump.sink = LAifFile::OpenSinkPCM16(path.c_str(), 44100, 2);
        const LProcessResult result = Process(progress, pump);
        if (result != PROCESS_DONE) {
            LOGERROR("Unable to convert %s for the CD", track->path.c_str());
            return result;
        }
    }
    return 0;
}

int ProcessBurnAudioCD(LProcessInterface& progress, LDiscDevice& device,
                       const LServiceTrackArray& tracks, const LDiscBurnOptions& options,
                       const std::vector<LAudioCDTrack*>& texts) {
    std::vector<LDiscAudioTrack> layout;
    for (size_t i = 0; i < tracks.size(); ++i) {
        LDiscAudioTrack entry{tracks[i]->Properties().trackLength, "", "", tracks[i].get()};
        if (i < texts.size()) {
            entry.title = texts[i]->title;
            entry.performer = texts[i]->performer;
        }
        layout.push_back(std::move(entry));
    }
    if (!device.StartAudioBurn(layout, options)) return 2;
    return FollowDiscOperation(progress, device);
}

LProcessResult Process(LProcessInterface& progress, LCDBurnAudio& job) {
    LDiskEventsOff eventsOff;
    job.error = BurnErrorCode();
    std::unique_ptr<LTemporaryFolder> folder;
    if (LDiscDeviceRef device = CopyDeviceByIndex(job.cdDrive)) {
        LAcquireMediaReservation(*device);
        BurnOnDevice(progress, job, *device, folder);
        LReleaseAllMediaReservations(*device);
        device->ReleaseExclusiveAccess();
    } else {
        job.error = BurnErrorCode(15);
    }
    folder.reset();
    return job.error.code != 0 ? PROCESS_FAILED : PROCESS_DONE;
}
