#pragma once

#include "jobs/ProcessInterface.h"
#include "platform/Paths.h"

// Asking the version server whether a newer version of the program exists. The server is the
// version host of "platform/NetworkHosts.h"; its file "/versions/vinora_mac.txt" holds
// "version=<number>" and optionally "&info=<link to a page about it>".

// The caption of the progress window the check runs behind.
inline constexpr const char* kCheckingForUpdatesCaption = "Checking for Updates";

struct LProcessCheckForVersionUpdates {
    double latestVersion = 0;
    char infoLink[kPathBufferSize] = "";
};

// Fetches and reads the version file: done with the version and link filled in; failed when
// no version host is set, the server cannot be reached or its reply has no version.
int Process(LProcessInterface& pi, LProcessCheckForVersionUpdates& job);

// Reads a reply of the version server (the status line and headers may come first). False
// when it is not a "2xx" reply, holds no "version=" followed by a number, or no "info=".
bool LParseVersionReply(const char* reply, LProcessCheckForVersionUpdates& job);

// The "Check for Updates" command: runs the check with `progress` (normally a progress window
// captioned kCheckingForUpdatesCaption) and tells the user the outcome through the
// user interaction; when a newer version exists and the user chooses to view it, its
// information link opens in the web browser (http and https links only). A failed check tells
// the user it could not be done when the user asked for it (`askedByUser`); a check made
// without asking stays silent. Returns the check's result.
int LAboutCheckForVersionUpdate(LProcessInterface& progress, bool askedByUser);
