#pragma once

#include "jobs/ProcessInterface.h"

// Downloading and installing components that are missing. Components are fetched over HTTP
// from "http://<host>/components/mac/<file>" (see LGetComponentServerFileName), first from the
// component host and, when that fails, from the web host (settings of "platform/NetworkHosts.h").

// The caption of the progress window the component download runs behind.
inline constexpr const char* kInstallOnDemandCaption = "Install-on-Demand";

// The job that makes sure a component is there: `path` (260 bytes, the caller's) gets where
// it was found.
struct LProcessGetComponentPath {
    const char* name;
    char* path;
};

// Done when the component is found, if need be after downloading and installing it; stopped
// when the user stopped the download; failed otherwise.
int Process(LProcessInterface& pi, LProcessGetComponentPath& job);

// Downloads the component's file from the host into the components folder (`localPath`,
// 260 bytes, gets its path), makes it readable, writable and executable by everyone and
// unpacks it when it is a zip component. A failed download leaves no file behind.
int ProcessDownloadComponent(LProcessInterface& pi, const char* host, const char* name,
                             char* localPath);

// Downloads and installs the component unless it is already there.
int ProcessDownloadAndInstallComponent(LProcessInterface& pi, const char* name);

// Unpacks a downloaded zip component into the components folder, where it must make a
// folder named like the zip file, and gives everyone every access to that folder's contents.
// The zip file is deleted in either case.
int LInstallZipComponent(const char* name, const char* zipPath);

// Looks for the component and, when it is missing, runs the download job with `progress`
// (normally a progress window captioned kInstallOnDemandCaption). True when the component is
// there in the end; `out` (260 bytes) gets its path.
bool GetComponentPathDownload(const char* name, char* out, LProcessInterface& progress);
