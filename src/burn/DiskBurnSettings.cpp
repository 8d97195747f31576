#include "burn/DiskBurnSettings.h"

#include "platform/Settings.h"

namespace {

constexpr const char* kSection = "CDRecorder";

bool Flag(const char* key, bool fallback) {
    return LUserSettingGet<bool>(kSection, key, fallback);
}

int Number(const char* key, int fallback) {
    return LUserSettingGet<int>(kSection, key, fallback);
}

bool IsMaximum(int speed) {
    return speed == -1 || speed == kBurnSpeedMax || speed <= 0;
}

} // namespace

LDiskBurnSettings::LDiskBurnSettings() {
    eraseCDRW = Flag("EraseCDRW", true);
    overburn = Flag("Overburn", false);
    const int storedSpeed = Number("Speed", -1);
    speed = IsMaximum(storedSpeed) ? -1.0 : storedSpeed;
    cdDrive = static_cast<uint8_t>(Number("CDDrive", 0));
    cdLoadEject = Flag("CDLoadEject", true);
    verifyBurn = Flag("VerifyBurn", true);
    audioPause = Number("AudioPause", 20) * 0.1;
    copies = static_cast<uint16_t>(Number("Copies", 1));
    sao = Flag("SAO", false);
    cdText = Flag("CDTEXT", true);
    finalize = Flag("Finalize", true);
    fullErase = Flag("FullErase", false);
    bufferUnderRun = Flag("BufferUnderRun", true);
    bootableSectors = LUserSettingGetString(kSection, "BootableSectors", "");
}

LCDVNBurnSettings::LCDVNBurnSettings() {
    eraseCDRW = Flag("EraseCDRW", true);
    overburn = Flag("Overburn", false);
    cdLabel = LUserSettingGetString(kSection, "CDLabel", "CDLabel");
    const int storedSpeed = Number("Speed", kBurnSpeedMax);
    speed = static_cast<uint16_t>(IsMaximum(storedSpeed) ? kBurnSpeedMax : storedSpeed);
    cdDrive = static_cast<uint8_t>(Number("CDDrive", 0));
    cdLoadEject = Flag("CDLoadEject", true);
}

void LCDVNBurnSettings::SaveAsDefaultSettings() const {
    LUserSettingSet<int>(kSection, "Internal", internal);
    LUserSettingSet<bool>(kSection, "EraseCDRW", eraseCDRW);
    LUserSettingSet<bool>(kSection, "Overburn", overburn);
    LUserSettingSetString(kSection, "CDLabel", cdLabel.c_str());
    LUserSettingSet<int>(kSection, "Speed", speed);
    LUserSettingSet<int>(kSection, "CDDrive", cdDrive);
    LUserSettingSet<bool>(kSection, "CDLoadEject", cdLoadEject);
}
