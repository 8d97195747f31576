#pragma once

#include "cli/Commands.h"
#include "restore/ConvertJob.h"

// Fills a conversion request from "SRC DEST [--restore] [--copy-to DIR] [--keep-source]":
// DEST names the output file; its folder and extension choose where and how it is written.
// False, with the usage on stderr, when the words do not make a request.
bool CliParseConvertRequest(const CliArgs& args, const char* usage, LProcessConvert& request);
