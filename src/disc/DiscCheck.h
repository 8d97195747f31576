#pragma once

#include "burn/BurnMediaTypes.h"
#include "burn/DiscService.h"
#include "burn/DiskBurnSettings.h"
#include "jobs/ProcessInterface.h"

#include <string>

// Media reservations: a process-wide count of the reservations the program holds, so that every
// one taken is given back at the end of a job.
void LAcquireMediaReservation(LDiscDevice& device);
void LReleaseMediaReservation(LDiscDevice& device);
void LReleaseAllMediaReservations(LDiscDevice& device);
int LMediaReservationCount();

// What the service's progress reports are given: the job and the result word, 2 until a report
// decides (0 done, 1 stopped, 2 failed).
template <typename J> struct LBurnCallBack {
    J* job;
    int result = 2;
    bool decided = false;
};

// The detail line for a state of a burn or an erase: "Writing track 2 ...", "Erasing..."...
std::string ProgressStateText(const LDiscOperationStatus& status);

// One progress report of a running burn or erase: a stop request gives 1, the end 0 (done) or
// 2 (failed); otherwise the detail line and the progress bar follow the report. True once the
// result is decided.
bool ProgressCallBack(LBurnCallBack<LProcessInterface>& callback, const LDiscOperationStatus& status);

// Follows a started burn or erase until it ends or the user stops it; 0 done, 1 stopped, 2 failed.
// A stop cancels the drive's work and waits until the drive has given up.
int FollowDiscOperation(LProcessInterface& job, LDiscDevice& device);

// Makes sure the drive holds a disc the project can use: a blank disc is taken as it is; an
// erasable one is erased when "EraseCDRW" is set or the project is 19 (the erase job); any other
// disc is ejected and the user is asked for one. 0 when a usable disc is loaded, 1 when the user
// stopped, 2 when no usable disc is there.
int ProcessCheckDriveAndDisk(LProcessInterface& job, LDiscDevice& device,
                             const LDiskBurnSettings& settings, int projectType);

// Erases the disc, quick or complete; 0 done, 1 stopped, 2 failed.
int druProcessEraseDisk(LProcessInterface& job, LDiscDevice& device, bool complete);

// The project type the erase job hands to the disc check: always erase an erasable disc.
inline constexpr int kEraseProjectType = 19;
