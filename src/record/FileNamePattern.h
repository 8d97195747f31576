#pragma once

#include <ctime>

// The file name of a recording from the user's pattern: each argument between two percent
// signs is replaced, names compared without regard to case: %YYYY% the year, %MM% %DD% %HH%
// %MIN% %SS% month, day, hour, minute and second in two digits (local time), %autonumber%
// `autoNumber` in at least two digits. An unknown name gives nothing, "%%" gives one "%", and an
// argument without its closing "%" runs to the end. `out` holds 260 bytes; the result is cut to
// 259 characters.
void CreateFormatedFileName(char* out, const char* pattern, int autoNumber);
// The same at a given time.
void CreateFormatedFileName(char* out, const char* pattern, int autoNumber, std::time_t now);
