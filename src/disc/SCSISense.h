#pragma once

#include "burn/BurnErrorCode.h"
#include "disc/SCSITransport.h"

#include <string>

// Sense data as drives return it, read into the form the command layer keeps: fixed format.

// Copies sense data of either format (fixed 0x70/0x71 or descriptor 0x72/0x73) into fixed
// format; anything else, or nothing, leaves all bytes 0.
void LSCSIToFixedSense(const uint8_t* raw, size_t length, uint8_t (&fixed)[kSCSISenseSize]);

// Sense key, ASC and ASCQ of fixed-format sense data.
LSenseBytes LSCSISenseBytes(const uint8_t (&fixed)[kSCSISenseSize]);

// The progress of a long operation (formatting, blanking, closing) that a drive reports with
// "not ready, in progress", as a fraction 0..1; false when the sense carries none.
bool LSCSISenseProgress(const uint8_t (&fixed)[kSCSISenseSize], double& fraction);

// "KEY/ASC/ASCQ" in hexadecimal, as drive documentation writes it: "3/0C/00".
std::string LSCSISenseText(LSenseBytes sense);
