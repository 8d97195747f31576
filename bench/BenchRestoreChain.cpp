// Throughput of every stage-building restoration step chained in the order the conversion job
// uses (high-pass, click and pop removal, noise gates, RIAA equaliser), on 44.1 kHz stereo,
// as a multiple of real time.
#include "BenchMeasure.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "restore/ClickPop.h"
#include "restore/HighPassFilter.h"
#include "restore/NoiseGates.h"
#include "restore/RIAA.h"

int main()
{
    constexpr int kSeconds = 120;
    LProcessInterfaceVoid progress;
    LSoundSource source(new BenchNoiseSource(44100, 2, kSeconds));
    ProcessLowCutFilter(progress, source, 150);
    ProcessClickPop(progress, source);
    ProcessNoiseReduction(progress, source, -36);
    ProcessRIAAEqCalculate(progress, source);
    BenchMeasure("all stages chained", source, kSeconds);
    return 0;
}
