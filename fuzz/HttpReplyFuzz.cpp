// Feeds arbitrary text to what reads the replies of web servers: status lines, the version
// server's reply, URLs and the "Location:" of redirections, and the shell escaping of paths.
// The input is cut at its first two NUL bytes into a URL, a location and a reply; the reply is
// also read line by line from a socket, as the client reads status and header lines.
#include "jobs/ProcessInterfaceVoid.h"
#include "platform/EscapeFilePath.h"
#include "platform/HttpUrl.h"
#include "platform/Paths.h"
#include "platform/HttpSocket.h"
#include "platform/UpdateCheck.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

// The next NUL-terminated piece of the input.
std::string Piece(const uint8_t*& data, const uint8_t* end) {
    const auto* stop = static_cast<const uint8_t*>(std::memchr(data, 0, size_t(end - data)));
    if (!stop) stop = end;
    std::string text(reinterpret_cast<const char*>(data), size_t(stop - data));
    data = stop == end ? end : stop + 1;
    return text;
}

// Sends the reply through a socket pair and reads it back as lines until the reader fails
// (at the end, where the peer has closed).
void ReadLines(const std::string& reply) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return;
    LTcpSocket socket;
    socket.Reset(ends[0]);
    const bool sent = write(ends[1], reply.data(), reply.size()) == ssize_t(reply.size());
    close(ends[1]);
    if (!sent)
        return;
    LProcessInterfaceVoid progress;
    std::string line;
    while (ProcessRecvLine(progress, socket, line, 1000) == PROCESS_DONE)
        LHTTPParseStatusLine(line.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const uint8_t* end = data + size;
    const std::string url = Piece(data, end);
    const std::string location = Piece(data, end);
    const std::string reply = Piece(data, end);

    char host[kPathBufferSize];
    char path[64];
    ProcessHTTPSplitHost(url.c_str(), host, path, sizeof path);
    std::string hostName;
    int port = 0;
    LHTTPSplitHostPort(host, hostName, port);
    std::string out;
    LHTTPGetURLParent(out, url.c_str());
    LHTTPResolveRedirection(out, url.c_str(), location.c_str());

    LHTTPParseStatusLine(reply.c_str());
    LProcessCheckForVersionUpdates job;
    if (LParseVersionReply(reply.c_str(), job) && std::strlen(job.infoLink) >= sizeof job.infoLink)
        __builtin_trap();

    ReadLines(reply);

    char escaped[kPathBufferSize];
    EscapeFilePath(escaped, url.c_str());
    return 0;
}
