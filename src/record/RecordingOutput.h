#pragma once

#include <string>
#include <vector>

// What happens to each recording ("OutputFormatNum" in section "OutputFormat").
struct LOutputFormat {
    const char* text;      // as the setup pages show it
    const char* extension; // of the converted file
    bool convert;          // the conversion keeps its output (else the recording is moved)
};

inline constexpr LOutputFormat kOutputFormats[] = {
    {"Save recording to computer in Wave format", ".wav", true},
    {"Save recording to computer in MP3 format", ".mp3", true},
    {"Save recording in Wave format, burn to Data CD/DVD later", ".wav", true},
    {"Save recording in MP3 format, burn to Data CD/DVD later", ".mp3", true},
    {"Save recording in Wave format, burn to Audio CD later", ".wav", false},
    {"Do nothing", ".wav", false},
};

// The stored output format, 0 to 5 (1 when missing or out of range).
int LGetOutputFormatNum();
const LOutputFormat& LGetOutputFormat(int number);

// The format a recording is saved in, as the recording window shows it: "WAV 44100Hz Stereo",
// "MP3 CBR 128kbps Joint", "MP3 VBR 32kbps-128kbps Stereo".
std::string LRecordingFormatText(int outputFormat);

// The next number for "%autonumber%" in the names of recordings, shared by every session.
extern int iNextAutoNumber;

// Whether a recording named `name` would meet another file: a ".wav" or ".mp3" of that name in
// one of `folders` (the output folder and the copy folder), or an output of that name still
// waiting in the processing queue or being converted (`queuedOutputs`, full paths). Names
// compare without regard to case.
bool LIsRecordingNameTaken(const char* name, const std::vector<std::string>& folders,
                           const std::vector<std::string>& queuedOutputs);

// The name of the next recording: the "FileNameFormat" pattern of section "OutputFormat"
// ("Untitled %autonumber%") expanded with the first number from iNextAutoNumber (at least 1)
// that gives a name not taken (LIsRecordingNameTaken); the number after it becomes the next.
// `name` takes 260 bytes.
void GetNewRecordingFileName(char* name, const std::vector<std::string>& folders,
                             const std::vector<std::string>& queuedOutputs);
