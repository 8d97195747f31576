#pragma once

#include "disc/BurnDataDisk.h"
#include "disc/CDBurnAudio.h"
#include "disc/DiscDrives.h"
#include "restore/ConvertJob.h"

#include <functional>

// The jobs the main window runs to burn, convert for a data disc and erase: the real ones by
// default; tests put their own in to watch what a job is given.
struct LBurnJobs {
    std::function<LProcessResult(LProcessInterface&, LCDBurnAudio&)> audio =
        [](LProcessInterface& progress, LCDBurnAudio& job) { return Process(progress, job); };
    std::function<LProcessResult(LProcessInterface&, LBurnDataDisk&)> data =
        [](LProcessInterface& progress, LBurnDataDisk& job) { return Process(progress, job); };
    std::function<LProcessResult(LProcessInterface&, LProcessConvert&)> convert =
        [](LProcessInterface& progress, LProcessConvert& job) { return Process(progress, job); };
    std::function<LProcessResult(LProcessInterface&, ProcessEraseDisk&)> erase =
        [](LProcessInterface& progress, ProcessEraseDisk& job) { return Process(progress, job); };
};
