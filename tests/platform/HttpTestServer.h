#pragma once

#include "jobs/ProcessInterface.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

// A small HTTP server on 127.0.0.1 for the tests: it answers each request for a known path
// with the exact bytes it was given (404 for others), or, when silent, takes requests and
// never answers. It runs on its own thread from construction to destruction.
class HttpTestServer {
public:
    HttpTestServer() {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(listener_, 16);
        socklen_t size = sizeof address;
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Run(); });
    }
    ~HttpTestServer() {
        stop_ = true;
        thread_.join();
        for (int held : held_)
            close(held);
        close(listener_);
    }
    HttpTestServer(const HttpTestServer&) = delete;
    HttpTestServer& operator=(const HttpTestServer&) = delete;

    // "127.0.0.1:<port>", as a host setting or the host part of a URL.
    std::string Host() const { return "127.0.0.1:" + std::to_string(port_); }
    std::string Url(const std::string& path) const { return "http://" + Host() + path; }

    void Serve(const std::string& path, const std::string& response) {
        std::lock_guard lock(mutex_);
        responses_[path] = response;
    }
    void SetSilent(bool silent) { silent_ = silent; }

    // The paths asked for, in order.
    std::vector<std::string> Requests() const {
        std::lock_guard lock(mutex_);
        return requests_;
    }

    // A complete reply; `length` false leaves out the Content-Length, `announced` overrides it.
    static std::string Reply(int status, const std::string& body, bool length = true,
                             long announced = -1, const std::string& headers = "") {
        std::string reply = "HTTP/1.0 " + std::to_string(status) + " Test\r\n" + headers;
        if (length)
            reply += "Content-Length: " +
                     std::to_string(announced >= 0 ? announced : long(body.size())) + "\r\n";
        return reply + "Content-Type: application/octet-stream\r\n\r\n" + body;
    }

private:
    void Run() {
        while (!stop_) {
            pollfd entry{listener_, POLLIN, 0};
            if (poll(&entry, 1, 50) <= 0) continue;
            const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (client < 0) continue;
            Answer(client);
        }
    }

    // Reads the request head (waiting at most two seconds for each piece) and answers it.
    void Answer(int client) {
        std::string head;
        char buffer[1024];
        for (pollfd entry{client, POLLIN, 0}; head.find("\r\n\r\n") == std::string::npos;) {
            const ssize_t got =
                poll(&entry, 1, 2000) > 0 ? recv(client, buffer, sizeof buffer, 0) : 0;
            if (got <= 0) break;
            head.append(buffer, size_t(got));
        }
        const size_t start = head.find(' ') + 1;
        const std::string path = head.substr(start, head.find(' ', start) - start);
        std::string response = Reply(404, "not here");
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(path);
            if (responses_.count(path)) response = responses_[path];
        }
        if (silent_) {
            held_.push_back(client);
            return;
        }
        for (size_t sent = 0; sent < response.size();) {
            const ssize_t n =
                send(client, response.data() + sent, response.size() - sent, MSG_NOSIGNAL);
            if (n <= 0) break;
            sent += size_t(n);
        }
        close(client);
    }

    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_ = false;
    std::atomic<bool> silent_ = false;
    mutable std::mutex mutex_;
    std::map<std::string, std::string> responses_;
    std::vector<std::string> requests_;
    std::vector<int> held_;
    std::thread thread_;
};

// The whole contents of a file, as bytes.
inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A job interface that asks the job to stop once a time has passed, and keeps the progress
// and status it is given.
class TimedStopProgress : public LProcessInterface {
public:
    // Stop requests begin `ms` milliseconds from now; negative: never.
    void StopAfter(int ms) {
        stopAt_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        stops_ = ms >= 0;
    }

    bool IsToStop() override { return stops_ && std::chrono::steady_clock::now() >= stopAt_; }
    bool ProcessWait(unsigned int) override { return IsToStop(); }
    int ProcessWaitSignal(LSignalObjectRef, unsigned int) override { return WAIT_TIMEOUT; }
    int ProcessWaitSignalObjectGroup(LSignalObjectGroup&, unsigned int) override {
        return WAIT_TIMEOUT;
    }
    void SetStatus(const char* text, int line) override {
        statuses.push_back(std::to_string(line) + ":" + text);
    }
    void SetProgress(double fraction) override { progress.push_back(fraction); }

    std::vector<std::string> statuses;
    std::vector<double> progress;

private:
    bool stops_ = false;
    std::chrono::steady_clock::time_point stopAt_;
};
