#pragma once

#include <string>

// What an environment variable of a virtual device holds: "PATH[,speed=N]". N is the speed in
// times real time (a decimal number, 1 when left out); 0 means as fast as the other side goes.
// An empty PATH ("" or ",speed=N") names no file.
struct LVirtualDeviceSetting {
    std::string path;
    double speed = 1;
};

// Reads the variable `name`. Without it the setting has no path and speed 1. False with
// `error` set when the speed is not a number of zero or more.
bool LReadVirtualDeviceSetting(const char* name, LVirtualDeviceSetting& setting,
                               std::string& error);
