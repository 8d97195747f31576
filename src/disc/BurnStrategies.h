#pragma once

#include "burn/BurnErrorCode.h"
#include "jobs/ProcessInterface.h"

class LSCSI;
class LHybridDataDisk;
struct LBurnDataDisk;

// The ways of writing the built image to each kind of disc: write parameters, track
// reservation, the sectors, and the closing of track, session and disc. Each step stops the
// strategy on error; a file that could not be read (41, its sectors written as zeros) does
// not, so the disc is still closed. The image goes to the disc from job.startSector on.

// CD-R, CD-RW: track-at-once, Mode 1; closes the track and the session.
BurnErrorCode ProcessBurnCDR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                             LHybridDataDisk& builder);
// DVD-R, DVD-R DL: session-at-once; closes the track and the session.
BurnErrorCode ProcessBurnDVDMR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                               LHybridDataDisk& builder);
// DVD-RW: closes the track and finalises the disc.
BurnErrorCode ProcessBurnDVDMRW(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                                LHybridDataDisk& builder);
// DVD+R, DVD+R DL, HD-DVD-R, BD-R: closes track and session and finalises the disc.
BurnErrorCode ProcessBurnPR(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                            LHybridDataDisk& builder);
// DVD+RW, DVD+RW DL, BD-RE: writes in place; ends a background format that is still running.
BurnErrorCode ProcessBurnPRW(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                             LHybridDataDisk& builder);
// HD-DVD-RAM: formats a new session that holds the image, then writes it.
BurnErrorCode ProcessBurnHDDVDRAM(LProcessInterface& progress, LBurnDataDisk& job,
                                  LSCSI& device, LHybridDataDisk& builder);

// The strategy for job.media; media that none writes get nothing written and no error.
BurnErrorCode RunBurnStrategy(LProcessInterface& progress, LBurnDataDisk& job, LSCSI& device,
                              LHybridDataDisk& builder);
