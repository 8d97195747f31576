#pragma once

#include <string>
#include <vector>

// Each subcommand of vinora-cli takes the words after its name and returns the exit code:
// 0 done, 1 stopped, 2 failed (with the error text already on stderr).
using CliArgs = std::vector<std::string>;

int CliSettings(const CliArgs& args);
int CliInfo(const CliArgs& args);
int CliDecode(const CliArgs& args);
int CliTags(const CliArgs& args);
int CliConvert(const CliArgs& args);
int CliQueue(const CliArgs& args);
int CliDevices(const CliArgs& args);
int CliCapture(const CliArgs& args);
int CliPlay(const CliArgs& args);
int CliRecord(const CliArgs& args);
int CliSplitSide(const CliArgs& args);
int CliNoiseFloor(const CliArgs& args);
int CliDemo(const CliArgs& args);
int CliSplit(const CliArgs& args);
int CliJoin(const CliArgs& args);
int CliMkiso(const CliArgs& args);
int CliDrives(const CliArgs& args);
int CliBurnAudio(const CliArgs& args);
int CliBurnData(const CliArgs& args);
int CliErase(const CliArgs& args);
int CliEject(const CliArgs& args);
