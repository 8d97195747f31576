#pragma once

// The parts of the data disc job that its image-file path and its disc path share.

#include "disc/BurnDataDisk.h"

#include <string>

class LHybridDataDisk;

// Shows the user why the job fails: SetError and job.errorText.
void ShowBurnDataDiskError(LProcessInterface& progress, LBurnDataDisk& job, const std::string& text);
// Ends the job with `error`: its description goes to SetError.
LProcessResult FailBurnDataDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                const BurnErrorCode& error);
// Ends the job with a code and the text the user is shown.
LProcessResult FailBurnDataDisk(LProcessInterface& progress, LBurnDataDisk& job,
                                BurnErrorCodeValue code, const std::string& text);

// Waits for the builder's thread to lay out the image (or builds an existing image's layout at
// once), the progress bar indeterminate; false when the build failed or the user stopped it
// (job.error 1), for BuilderResult.
bool RunImageBuilder(LProcessInterface& progress, LBurnDataDisk& job, LHybridDataDisk& builder);
// The result of a build that did not succeed: stopped, or failed with the builder's error.
LProcessResult BuilderResult(LProcessInterface& progress, LBurnDataDisk& job,
                             const LHybridDataDisk& builder);

// The disc path of the job, after the checks of the compilation and the boot image.
LProcessResult BurnToDisc(LProcessInterface& progress, LBurnDataDisk& job, const std::string& boot);
