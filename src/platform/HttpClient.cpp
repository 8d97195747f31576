#include "platform/HttpClient.h"

#include "platform/File.h"
#include "platform/HttpSocket.h"
#include "platform/HttpUrl.h"
#include "platform/Paths.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <strings.h>
#include <unistd.h>

namespace {

constexpr unsigned int kConnectTimeout = 22000;
constexpr unsigned int kRequestTimeout = 10000;
constexpr unsigned int kHeaderTimeout = 10000;
constexpr unsigned int kPieceTimeout = 7500;
constexpr std::size_t kPieceSize = 1028;
constexpr int kMaxRedirections = 8;
constexpr std::size_t kMaxPath = 2048;

bool StartsWithNoCase(const std::string& text, const char* prefix) {
    return strncasecmp(text.c_str(), prefix, std::strlen(prefix)) == 0;
}

// Connects to the URL's host and sends the request for its path.
int SendRequest(LProcessInterface& pi, LTcpSocket& socket, const char* url,
                unsigned int connectTimeout, unsigned int sendTimeout) {
    char hostText[kPathBufferSize];
    char path[kMaxPath];
    if (!ProcessHTTPSplitHost(url, hostText, path, sizeof path)) return PROCESS_FAILED;
    std::string host;
    int port = 80;
    if (!LHTTPSplitHostPort(hostText, host, port)) return PROCESS_FAILED;
    const int connected = ProcessConnect(pi, socket, host.c_str(), port, connectTimeout);
    if (connected != PROCESS_DONE) return connected;
    const std::string request = std::string("GET ") + (path[0] ? path : "/") +
                                " HTTP/1.0\r\nHost: " + hostText + "\r\n\r\n";
    return ProcessSend(pi, socket, request.data(), request.size(), sendTimeout);
}

bool IsRedirection(int status) {
    return status == 300 || status == 301 || status == 302 || status == 303 || status == 307;
}

// One header line. `value` is set to what follows the header's name and its blanks when the
// line is the named header; the empty line that ends the headers sets `end`.
struct HeaderLine {
    bool end = false;
    std::optional<std::string> value;
};

int ReadHeader(LProcessInterface& pi, LTcpSocket& socket, const char* name, HeaderLine& header) {
    std::string line;
    const int result = ProcessRecvLine(pi, socket, line, kHeaderTimeout);
    header = {line.empty(), std::nullopt};
    if (result == PROCESS_DONE && StartsWithNoCase(line, name)) {
        const std::size_t value = line.find_first_not_of(" \t", std::strlen(name));
        header.value = value == std::string::npos ? "" : line.substr(value);
    }
    return result;
}

// Reads header lines up to "Location:" and resolves its value against the URL.
int ReadLocation(LProcessInterface& pi, LTcpSocket& socket, const char* url, std::string& target) {
    HeaderLine header;
    while (true) {
        const int result = ReadHeader(pi, socket, "Location:", header);
        if (result != PROCESS_DONE) return result;
        if (header.end) return PROCESS_FAILED;
        if (header.value)
            return LHTTPResolveRedirection(target, url, header.value->c_str()) ? PROCESS_DONE
                                                                               : PROCESS_FAILED;
    }
}

// Reads the remaining header lines; `length` gets the Content-Length, or -1 without one.
int ReadHeaders(LProcessInterface& pi, LTcpSocket& socket, long long& length) {
    length = -1;
    HeaderLine header;
    while (true) {
        const int result = ReadHeader(pi, socket, "Content-Length:", header);
        if (result != PROCESS_DONE) return result;
        if (header.end) return PROCESS_DONE;
        if (!header.value) continue;
        const std::string& text = *header.value;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
        if (error != std::errc() || length < 0) return PROCESS_FAILED;
    }
}

// Copies the body into the file, `length` bytes or up to the close when it is -1.
int ReceiveBody(LProcessInterface& pi, LTcpSocket& socket, LFile& file, long long length) {
    if (length < 0) pi.SetProgressIndeterminateOn();
    pi.SetProgress(0);
    char piece[kPieceSize];
    long long received = 0;
    while (length < 0 || received < length) {
        if (pi.IsToStop()) return PROCESS_STOPPED;
        const std::size_t want =
            length < 0
                ? kPieceSize
                : static_cast<std::size_t>(std::min<long long>(kPieceSize, length - received));
        std::size_t got = 0;
        bool closed = false;
        const int result = ProcessRecvReady(pi, socket, piece, want, got, kPieceTimeout, &closed);
        if (closed && length < 0) break;
        if (result != PROCESS_DONE) return result;
        if (!file.Write(piece, got)) return PROCESS_FAILED;
        received += static_cast<long long>(got);
        if (length > 0) pi.SetProgress(static_cast<double>(received) / static_cast<double>(length));
    }
    if (length < 0) pi.SetProgressIndeterminateOff();
    return PROCESS_DONE;
}

int DownloadFile(LProcessInterface& pi, const char* url, const char* localPath, bool follow,
                 int redirectionsLeft) {
    LTcpSocket socket;
    const int sent = SendRequest(pi, socket, url, kConnectTimeout, kRequestTimeout);
    if (sent != PROCESS_DONE) return sent;

    std::string statusLine;
    const int got = ProcessRecvLine(pi, socket, statusLine, kHeaderTimeout);
    if (got != PROCESS_DONE) return got;
    const int status = LHTTPParseStatusLine(statusLine.c_str());

    if (follow && IsRedirection(status)) {
        if (redirectionsLeft == 0) return PROCESS_FAILED;
        std::string target;
        const int located = ReadLocation(pi, socket, url, target);
        if (located != PROCESS_DONE) return located;
        socket.Close();
        return DownloadFile(pi, target.c_str(), localPath, follow, redirectionsLeft - 1);
    }
    if (status < 200 || status > 299) return PROCESS_FAILED;

    int result = PROCESS_FAILED;
    {
        LFile file(_OpenWrite(localPath, 200));
        if (!file.IsOpen()) return PROCESS_FAILED;
        long long length = -1;
        result = ReadHeaders(pi, socket, length);
        if (result == PROCESS_DONE) result = ReceiveBody(pi, socket, file, length);
        // On the disk before the caller gives the file its name.
        if (result == PROCESS_DONE && fsync(file.GetFd()) != 0) result = PROCESS_FAILED;
    }
    if (result != PROCESS_DONE) unlink(localPath);
    return result;
}

} // namespace

int ProcessHTTPGet(LProcessInterface& pi, const char* url, char* buffer, std::size_t size,
                   unsigned int timeout) {
    if (size == 0) return PROCESS_FAILED;
    buffer[0] = '\0';
    LTcpSocket socket;
    const int sent = SendRequest(pi, socket, url, timeout, timeout);
    if (sent != PROCESS_DONE) return sent;
    std::size_t received = 0;
    const int result = ProcessRecvAll(pi, socket, buffer, size - 1, received, timeout);
    buffer[received] = '\0';
    return result;
}

int ProcessHTTPDownloadFile(LProcessInterface& pi, const char* url, const char* localPath,
                            bool followRedirects) {
    return DownloadFile(pi, url, localPath, followRedirects, kMaxRedirections);
}
