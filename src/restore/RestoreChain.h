#pragma once

#include "jobs/ProcessInterface.h"
#include "restore/RestoreChoices.h"
#include "sound/SoundSource.h"

// Wraps the source in the chosen restoration stages, in a fixed order: DC offset, high-pass,
// speed correction, click and pop removal, noise reduction, RIAA equalisation, normalisation.
// Each step's name goes to the main window's status text. Stops at the first step that does
// not succeed and returns its result; on success `source` is the end of the new chain.
LProcessResult ProcessAudioRestore(LProcessInterface& progress, LSoundSource& source,
                                   const LRestoreChoices& choices);
