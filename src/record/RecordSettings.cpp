#include "record/RecordSettings.h"

#include "platform/Settings.h"

#include <algorithm>

namespace {

constexpr const char* kSection = "Settings";

} // namespace

LRecordSettings LRecordSettings::Load() {
    LRecordSettings settings;
    settings.device = LSettingGetSoundRecordDevice(kSection, "SoundInDevice");
    settings.volume = std::clamp(LUserSettingGet<int>("Recording", "Volume", -20), -127, 127);
    settings.autoSplitTime = LUserSettingGet<int>(kSection, "AutoSplitTime", 2);
    settings.recordAudioOnly = LUserSettingGet<bool>(kSection, "RecordAudioOnly", true);
    settings.autoSplitTracks = LUserSettingGet<bool>(kSection, "AutoSplitTracks", true);
    settings.playbackWhileRecording =
        LUserSettingGet<bool>(kSection, "PlaybackAudioWhileRecording", true);
    settings.recordTone = LUserSettingGet<bool>(kSection, "RecordTone", false);
    settings.stoppedTone = LUserSettingGet<bool>(kSection, "StoppedTone", false);
    settings.useMinTime = LUserSettingGet<bool>(kSection, "UseMinTime", false);
    settings.minTime = LUserSettingGetString(kSection, "MinTime", "0:00:00.00");
    settings.makeCopy = LUserSettingGet<bool>("OutputFormat", "MakeCopy", false);
    settings.copyFolder = LUserSettingGetString("OutputFormat", "OutputFolder");
    return settings;
}

std::string LRecordSettings::Save() const {
    if (makeCopy && copyFolder.empty()) return "Please choose the folder that receives the copies.";
    LSettingSetSoundRecordDevice(kSection, "SoundInDevice", device);
    LUserSettingSet<int>("Recording", "Volume", std::clamp(volume, -127, 127));
    LUserSettingSet<int>(kSection, "AutoSplitTime", std::max(autoSplitTime, 1));
    LUserSettingSet<bool>(kSection, "RecordAudioOnly", recordAudioOnly);
    LUserSettingSet<bool>(kSection, "AutoSplitTracks", autoSplitTracks);
    LUserSettingSet<bool>(kSection, "PlaybackAudioWhileRecording", playbackWhileRecording);
    LUserSettingSet<bool>(kSection, "RecordTone", recordTone);
    LUserSettingSet<bool>(kSection, "StoppedTone", stoppedTone);
    LUserSettingSet<bool>(kSection, "UseMinTime", useMinTime);
    LUserSettingSetString(kSection, "MinTime", minTime.c_str());
    LUserSettingSet<bool>("OutputFormat", "MakeCopy", makeCopy);
    LUserSettingSetString("OutputFormat", "OutputFolder", copyFolder.c_str());
    return {};
}

std::string LTakeNoiseFloorTip() {
    if (LUserSettingGet<bool>("RecordingPage", "ShowBubbleTipNoiseFloor", false)) return {};
    LUserSettingSet<bool>("RecordingPage", "ShowBubbleTipNoiseFloor", true);
    return "Tracks start and end relative to the noise floor of your turntable or tape deck. "
           "Measure it in the Recording Wizard for the best results.";
}
