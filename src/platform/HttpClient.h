#pragma once

#include "jobs/ProcessInterface.h"

#include <cstddef>

// A minimal HTTP/1.0 client for the component download and the update check. URLs are
// "http://host[:port]/path"; without a port the server is asked on port 80. Results are
// LProcessResult values: 0 done, 1 stopped, 2 failed.

// Connects with the time-out, sends "GET <path> HTTP/1.0" with a Host header and reads the
// whole reply, headers included, until the buffer (size - 1 bytes) is full or the server
// closes. The buffer is NUL-terminated.
int ProcessHTTPGet(LProcessInterface& pi, const char* url, char* buffer, std::size_t size,
                   unsigned int timeout);

// Downloads the body of a "2xx" reply into the file at `localPath`. With `followRedirects`,
// replies 300, 301, 302, 303 and 307 are followed to their "Location:" (up to 8 in a row);
// without, they fail like every other status. With a Content-Length the body must arrive
// whole; without one it ends when the server closes. Progress runs from 0 to 1 over the body.
// A body that cannot be had completely (error, stop, a close before the announced length)
// leaves no file behind.
int ProcessHTTPDownloadFile(LProcessInterface& pi, const char* url, const char* localPath,
                            bool followRedirects);
