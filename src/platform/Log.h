#pragma once

#include <ctime>

// The daily log: what the program did (conversions, failures, files added), one line per
// event, "HH:MM:SS text\r\n", appended to "YYYY-MM-DD Vinora Records Vinyl to CD Converter
// Log.txt" in the application's "Logs" folder. An entry goes to the file of the day on which
// it is made. A line is at most 8,191 bytes: a longer text is cut, line end included.
// Failures to write the log are silent. Callable from any thread; the file lock keeps lines
// from different threads and processes whole.

// printf-style entries: information, warnings and errors. All three write the same kind of
// line; the name says what the caller reports.
void LOG(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LOGWARN(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LOGERROR(const char* format, ...) __attribute__((format(printf, 1, 2)));

namespace LLog {

// Appends one entry with the text as it is.
void Log(const char* text);

// The log folder (the application sub-folder "Logs", created when missing) into the 260-byte
// `out`: the one fixed at the program's start, else looked up from the user's folders now.
bool GetFolder(char* out);
// Fixes the log folder for the rest of the run (the program's start), or lets it follow the
// user's folders again.
void FixFolder(bool fixed);

// The clock that dates entries; tests set their own to log on chosen days. nullptr restores
// the system clock.
using Clock = time_t (*)();
void SetClock(Clock clock);

} // namespace LLog
