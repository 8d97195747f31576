#pragma once

#include <ctime>

// The time a disc image is stamped with: now, or, when SOURCE_DATE_EPOCH holds a number of
// seconds, that time, so that two builds of the same tree give the same bytes.
std::time_t LImageClockNow();

// `when` as the broken-down time an image's volume dates are written in: local time, or UTC
// when SOURCE_DATE_EPOCH is set (the image then does not depend on the machine's time zone).
std::tm LImageClockTime(std::time_t when);
