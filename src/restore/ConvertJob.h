#pragma once

#include "jobs/ProcessInterface.h"
#include "restore/RestoreChoices.h"

#include <cstdint>

// One conversion request: turn a recorded file into the output file the user chose. Stored in
// the processing queue's file byte for byte, so it holds only NUL-terminated texts in
// 260-byte fields and byte flags (1825 bytes, no padding).
struct LProcessConvert {
    char sourcePath[260] = {};      // the file to convert (the raw recording)
    char outputFolder[260] = {};    // created when missing
    char outputExtension[260] = {}; // ".wav" or ".mp3"
    // Empty: outputFolder + the source's file name + outputExtension.
    char destinationPath[260] = {};
    char reserved[260] = {};   // always zero
    char lengthText[260] = {}; // the recording's length as shown; filled by the job when empty
    char copyFolder[260] = {};
    uint8_t restore = 1;      // apply the restoration chain
    uint8_t convert = 1;      // keep the converted output; 0: the source file becomes the output
    uint8_t addToList = 1;    // announce the finished file to the main window
    uint8_t deleteSource = 0; // delete the source when the job ends
    uint8_t copyToFolder = 0; // copy the finished file into copyFolder
};
static_assert(sizeof(LProcessConvert) == 1825);

// Ends every string of a request that was read from outside (the queue file) at the last byte
// of its field at the latest, so that none runs on into the next field.
void LTerminateRequestStrings(LProcessConvert& request);
// Where the request's output goes: its destinationPath, or outputFolder + the source's file
// name + outputExtension when that is empty. `out` takes 260 bytes.
void LGetRequestDestination(char* out, const LProcessConvert& request);

// Converts the request's source into its destination: opens the wave or MP3 source, restores
// it when asked, writes a wave or MP3 file with the source's tags, then renames, copies and
// announces as the request says. The output is written under the hidden name of
// LGetPartialOutputPath and takes the destination's name only when it is complete. Every
// failure is logged; whenever the result is not PROCESS_DONE the source is kept and no partial
// output is left (a run killed midway leaves only the hidden file, which the next run of the
// request writes again). A temporary recording that a failed job was to delete is moved where
// the user finds it: the output folder's "Recovered Recordings".
LProcessResult Process(LProcessInterface& progress, LProcessConvert& job);
// The same with the restoration chosen by the caller instead of the stored one.
LProcessResult Process(LProcessInterface& progress, LProcessConvert& job,
                       const LRestoreChoices& choices);

// Where the output for `destination` is written until it is complete: ".NAME.partial.EXT"
// beside it (hidden, so never listed as a recording). `out` takes 260 bytes.
void LGetPartialOutputPath(char* out, const char* destination);
