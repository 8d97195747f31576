#pragma once

#include "play/SoundPlayerLLQT.h"

// Holds the player's device layer and answers level queries.
class LSoundPlayerGeneric {
public:
    LSoundPlayerLLQT& Device() { return device_; }
    const LSoundPlayerLLQT& Device() const { return device_; }

    // The level of the last played buffer as a one-channel record.
    LDBMC GetDB() const { return device_.GetDB(); }

private:
    LSoundPlayerLLQT device_;
};
