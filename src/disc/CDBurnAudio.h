#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/BurnMediaTypes.h"
#include "burn/DiskBurnSettings.h"
#include "disc/AudioCDTrack.h"
#include "disc/AudioCDTrackFile.h"
#include "disc/Compilation.h"
#include "jobs/ProcessInterface.h"

#include <string>

// The audio CD burn job: every track is converted to a 44100 Hz stereo 16-bit AIFF file in a
// private folder under /var/tmp, the files are described to the disc service as audio tracks,
// and the service burns them, reading each file through the track producer. The folder goes at
// the end whatever happens.
class LCDBurnAudio : public LDiskBurnSettings {
public:
    LCDBurnAudio();

    // Adds a track after those added before; it becomes the root folder's item "File%.2d".
    void AddTrack(const LSoundSource& source, const char* path, const char* title,
                  const char* performer, const char* text3);
    int TrackCount() const { return trackCount_; }

    LAbstractFileSystem compilation;
    BurnErrorCode error;
    LBurnMediaTypes mediaType = MEDIA_NO_DISK;
    // Where the temporary folders are made; /var/tmp (a CD of AIFF files is about 800 MB).
    std::string temporaryRoot = "/var/tmp";

private:
    uint8_t trackCount_ = 0;
};

// Runs the whole job; the outcome's detail is left in the job's error.
LProcessResult Process(LProcessInterface& progress, LCDBurnAudio& job);

// Converts every track into "track%.2d.aiff" in the folder; the first failing pump result, or 0.
int ProcessConvertSourceToAiff(LProcessInterface& progress, LCDBurnAudio& job,
                               const std::string& folder);

// Burns the tracks onto the drive's disc, with the CD-TEXT of the job's tracks in the same
// order; 0 done, 1 stopped by the user, 2 failed.
int ProcessBurnAudioCD(LProcessInterface& progress, LDiscDevice& device,
                       const LServiceTrackArray& tracks, const LDiscBurnOptions& options,
                       const std::vector<LAudioCDTrack*>& texts);
