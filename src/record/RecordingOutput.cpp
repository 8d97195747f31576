#include "record/RecordingOutput.h"

#include "codecs/Mp3EncodeSettings.h"
#include "codecs/WaveFileFormat.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "record/FileNamePattern.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

int iNextAutoNumber = 0;

int LGetOutputFormatNum() {
    const int number = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1);
    return number >= 0 && number < static_cast<int>(std::size(kOutputFormats)) ? number : 1;
}

const LOutputFormat& LGetOutputFormat(int number) {
    return kOutputFormats[std::clamp(number, 0, static_cast<int>(std::size(kOutputFormats)) - 1)];
}

std::string LRecordingFormatText(int outputFormat) {
    char text[128];
    if (outputFormat == 1 || outputFormat == 3) {
        const LMp3EncodeSettings mp3;
        static constexpr const char* kModes[] = {"Stereo", "Joint", "Force", "Mono"};
        const char* mode = kModes[std::min<int>(mp3.channelMode, 3)];
        if (mp3.constantBitRate)
            std::snprintf(text, sizeof text, "MP3 CBR %dkbps %s", mp3.cbrBitRate, mode);
        else
            std::snprintf(text, sizeof text, "MP3 VBR %dkbps-%dkbps %s", mp3.vbrMinBitRate,
                          mp3.vbrMaxBitRate, mode);
        return text;
    }
    if (outputFormat == 0 || outputFormat == 2 || outputFormat == 4) {
        const LWaveFileFormat format = LWaveFileFormat::LoadWavCodecFile(44100, 2);
        std::snprintf(text, sizeof text, "WAV %dHz %s", static_cast<int>(format.wfx.nSamplesPerSec),
                      format.wfx.nChannels == 1 ? "Mono" : "Stereo");
        return text;
    }
    return "WAV 44100Hz Stereo";
}

bool LIsRecordingNameTaken(const char* name, const std::vector<std::string>& folders,
                           const std::vector<std::string>& queuedOutputs) {
    for (const std::string& folder : folders) {
        if (folder.empty()) continue;
        for (const char* extension : {".wav", ".mp3"}) {
            char path[kPathBufferSize];
            _MakeFilePath(path, folder.c_str(), name, extension);
            if (access(path, F_OK) == 0) return true;
        }
    }
    for (const std::string& output : queuedOutputs) {
        char queued[kPathBufferSize];
        _GetFileNameFromPath(queued, output.c_str());
        if (strcasecmp(queued, name) == 0) return true;
    }
    return false;
}

void GetNewRecordingFileName(char* name, const std::vector<std::string>& folders,
                             const std::vector<std::string>& queuedOutputs) {
    const std::string pattern =
        LUserSettingGetString("OutputFormat", "FileNameFormat", "Untitled %autonumber%");
    int number = std::max(iNextAutoNumber, 1);
    for (;; ++number) {
        CreateFormatedFileName(name, pattern.c_str(), number);
        if (!LIsRecordingNameTaken(name, folders, queuedOutputs)) break;
    }
    iNextAutoNumber = number + 1;
}
