#pragma once

#include "burn/DiscService.h"

#include <libburn/libburn.h>

// libburn declares itself inside namespace burn when included from C++.
using burn::burn_disc_status;
using burn::burn_drive_info;
using burn::burn_drive_status;
using burn::burn_progress;
using burn::burn_speed_descriptor;

// How libburn's records read as the disc service's: kept apart from the drive handling so that
// they can be checked on records filled in by hand.

// An MMC profile number (burn_disc_get_profile) as a media kind; None for 0 (no disc).
LDiscMediaKind MapLibburnProfile(int profile);

// The drive's identity and write capabilities.
LDiscDeviceInfo MapLibburnInfo(const burn_drive_info& info);

// A disc's status: libburn's disc status, the profile, whether it is erasable, the bytes still
// writable (burn_disc_available_space) and the disc's whole capacity in blocks (0 when not known).
LDiscDeviceStatus MapLibburnDisc(burn_disc_status status, int profile, bool erasable,
                                 off_t freeBytes, uint32_t capacityBlocks);

// The write speeds offered for the loaded profile, kilobytes per second, fastest first, each once.
std::vector<double> MapLibburnSpeeds(const burn_speed_descriptor* list, int profile);

// A running job's state. `erasing` tells an erase from a burn; once the drive is idle, `wroteWell`
// (burn_drive_wrote_well) decides between Done and Failed.
LDiscOperationStatus MapLibburnProgress(burn_drive_status status, const burn_progress& progress,
                                        bool erasing, bool wroteWell);
