#include "HttpTestServer.h"

#include "jobs/ScriptedUserInteraction.h"
#include "platform/NetworkHosts.h"
#include "platform/Settings.h"
#include "platform/UpdateCheck.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

constexpr const char* kVersionPath = "/versions/vinora_mac.txt";

std::string Body(const std::string& body) {
    return "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n" + body;
}

class UpdateCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetUserInteraction(&user_);
        // A stand-in for the web browser that notes the link it was asked to open.
        const fs::path bin = home_.Path() / "bin";
        fs::create_directories(bin);
        opened_ = home_.Path() / "opened";
        std::ofstream(bin / "xdg-open")
            << "#!/bin/sh\necho \"$1\" > " << ShellQuote(opened_) << "\n";
        fs::permissions(bin / "xdg-open", fs::perms(0755));
        const char* path = std::getenv("PATH");
        savedPath_ = path ? path : "";
        setenv("PATH", (bin.string() + ":" + savedPath_).c_str(), 1);
        LUserSettingSetString(kNetworkSection, kVersionHostKey, server_.Host().c_str());
    }
    void TearDown() override {
        setenv("PATH", savedPath_.c_str(), 1);
        SetUserInteraction(nullptr);
    }

    // Waits up to two seconds for the browser stand-in.
    std::string OpenedLink() const {
        for (int i = 0; i < 100 && !fs::exists(opened_); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::ifstream in(opened_);
        std::string line;
        std::getline(in, line);
        return line;
    }

    TempHome home_;
    HttpTestServer server_;
    LScriptedUserInteraction user_;
    TimedStopProgress progress_;
    fs::path opened_;
    std::string savedPath_;
};

TEST_F(UpdateCommandTest, SameVersionIsCurrentAndANewerOneOffersItsPage) {
    server_.Serve(kVersionPath, Body("version=1.51&info=http://x/y"));
    EXPECT_EQ(LAboutCheckForVersionUpdate(progress_, true), PROCESS_DONE);
    auto calls = user_.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].caption, "Version Current");
    EXPECT_EQ(calls[0].text, "The current version is up-to-date");

    user_.ClearCalls();
    server_.Serve(kVersionPath, Body("version=1.6&info=http://x/y"));
    user_.QueueAnswer(LMessageAnswer::Ok);
    EXPECT_EQ(LAboutCheckForVersionUpdate(progress_, true), PROCESS_DONE);
    calls = user_.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].caption, "Update Version Available");
    EXPECT_EQ(calls[0].text, "An updated version of this software is now available for download "
                             "online. Do you want to see more information about the new "
                             "version?");
    EXPECT_EQ(calls[0].buttons, LMessageButtons::ViewCancel);
    EXPECT_EQ(OpenedLink(), "http://x/y");

    // A link that is no web page is never opened.
    fs::remove(opened_);
    server_.Serve(kVersionPath, Body("version=1.6&info=file:///etc/passwd"));
    user_.QueueAnswer(LMessageAnswer::Ok);
    EXPECT_EQ(LAboutCheckForVersionUpdate(progress_, true), PROCESS_DONE);
    EXPECT_EQ(OpenedLink(), "");
}

TEST_F(UpdateCommandTest, ReplyWithoutAVersionOrLinkOrNoServerFails) {
    for (const std::string& reply : {Body("info=http://x/y"), Body("version=new&info=http://x"),
                                     Body("version=1.6"),
                                     std::string("HTTP/1.0 404 Not Found\r\n\r\nversion=9")}) {
        server_.Serve(kVersionPath, reply);
        LProcessCheckForVersionUpdates job;
        EXPECT_EQ(Process(progress_, job), PROCESS_FAILED) << reply;
    }

    // Without a server the check the user asked for says so; one made unasked stays silent.
    LUserSettingDeleteItem(kNetworkSection, kVersionHostKey);
    EXPECT_EQ(LAboutCheckForVersionUpdate(progress_, false), PROCESS_FAILED);
    EXPECT_TRUE(user_.Calls().empty());
    EXPECT_EQ(LAboutCheckForVersionUpdate(progress_, true), PROCESS_FAILED);
    ASSERT_EQ(user_.Calls().size(), 1u);
    EXPECT_EQ(user_.Calls()[0].text.rfind("The check for updates could not be done", 0), 0u);
    EXPECT_EQ(server_.Requests().size(), 4u);
}

} // namespace
