#pragma once

#include <string>

// printf into a string, for the messages of the burn jobs.
std::string LFormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));
