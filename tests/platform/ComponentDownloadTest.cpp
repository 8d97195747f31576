// Finding components, and downloading and installing missing ones from a server on 127.0.0.1.
#include "HttpTestServer.h"

#include "platform/ComponentDownload.h"
#include "platform/Components.h"
#include "platform/NetworkHosts.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

bool IsExecutableByAll(const fs::path& path) {
    constexpr fs::perms all =
        fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    return (fs::status(path).permissions() & all) == all;
}

class ComponentDownloadTest : public ::testing::Test {
protected:
    void SetUp() override {
        char folder[kPathBufferSize];
        ASSERT_TRUE(GetComponentFolder(folder));
        folder_ = folder;
        EXPECT_EQ(folder_, home_.DataHome() / "Brakwater Software" / "Components");
        LUserSettingSetString(kNetworkSection, kComponentHostKey, componentHost_.Host().c_str());
    }

    // The server's file for a zip component that unpacks into `inner`.
    std::string Zip(const std::string& name, const std::string& inner) {
        const fs::path work = home_.Path() / "zipwork";
        fs::create_directories(work / inner);
        std::ofstream(work / inner / "encode") << "#!/bin/sh\necho encoded\n";
        fs::permissions(work / inner / "encode", fs::perms(0644));
        const std::string command = "cd " + ShellQuote(work.string()) + " && zip -qr " +
                                    ShellQuote(name) + " " + ShellQuote(inner);
        EXPECT_EQ(std::system(command.c_str()), 0);
        return HttpTestServer::Reply(200, ReadFile(work / name));
    }

    TempHome home_;
    HttpTestServer componentHost_;
    TimedStopProgress progress_;
    fs::path folder_;
};

TEST_F(ComponentDownloadTest, PlainComponentIsDownloadedWhenNoSystemCopyStandsInAndThenComesFirst) {
    const std::string lame = RunCommand("command -v lame");
    char path[kPathBufferSize];
    if (!lame.empty()) {
        ASSERT_TRUE(GetComponentPath("mp3el", path, true));
        EXPECT_EQ(std::string(path) + "\n", lame);
    }
    EXPECT_FALSE(GetComponentPath("mp3el", path, false));

    const std::string script = "#!/bin/sh\necho encoded\n";
    componentHost_.Serve("/components/mac/mp3el", HttpTestServer::Reply(200, script));
    const std::string savedPath = std::getenv("PATH");
    setenv("PATH", (home_.Path() / "bin").c_str(), 1);
    const bool found = GetComponentPathDownload("mp3el", path, progress_);
    setenv("PATH", savedPath.c_str(), 1);
    ASSERT_TRUE(found);
    EXPECT_EQ(fs::path(path), folder_ / "mp3el");
    EXPECT_EQ(ReadFile(path), script);
    EXPECT_TRUE(IsExecutableByAll(path));
    ASSERT_TRUE(GetComponentPath("mp3el", path, true));
    EXPECT_EQ(fs::path(path), folder_ / "mp3el") << "the installed copy wins over the system's";
}

// A component that answers its version is asked once; one put in its place is asked again, and
// one that fails is asked each time.
TEST_F(ComponentDownloadTest, AComponentIsAskedAgainOnlyWhenItsFileChangesOrItFailed) {
    const fs::path runs = home_.Path() / "runs";
    auto install = [&](int status) {
        const fs::path next = home_.Path() / "next";
        std::ofstream(next) << "#!/bin/sh\necho run >> " << ShellQuote(runs.string()) << "\nexit "
                            << status << "\n";
        fs::permissions(next, fs::perms(0755));
        fs::rename(next, folder_ / "mp3el");
    };
    auto timesAsked = [&] {
        const std::string text = fs::exists(runs) ? ReadFile(runs) : "";
        return std::count(text.begin(), text.end(), '\n');
    };
    char path[kPathBufferSize];
    install(0);
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(GetComponentPath("mp3el", path, false));
    EXPECT_EQ(timesAsked(), 1);
    install(1);
    for (int i = 0; i < 2; ++i) EXPECT_FALSE(GetComponentPath("mp3el", path, false));
    EXPECT_EQ(timesAsked(), 3);
}

TEST_F(ComponentDownloadTest, ZipComponentComesFromTheWebHostWhenTheComponentHostFails) {
    HttpTestServer webHost;
    webHost.Serve("/components/mac/mp3el2.zip", Zip("mp3el2.zip", "mp3el2"));
    LUserSettingSetString(kNetworkSection, kWebHostKey, webHost.Host().c_str());

    char path[kPathBufferSize];
    EXPECT_FALSE(GetComponentPath("mp3el2", path, true));
    LProcessGetComponentPath job{"mp3el2", path};
    ASSERT_EQ(Process(progress_, job), PROCESS_DONE);
    EXPECT_EQ(fs::path(path), folder_ / "mp3el2");
    EXPECT_TRUE(IsExecutableByAll(folder_ / "mp3el2" / "encode"));
    EXPECT_EQ(RunCommand(ShellQuote((folder_ / "mp3el2" / "encode").string())), "encoded\n");
    EXPECT_FALSE(fs::exists(folder_ / "mp3el2.zip"));
    EXPECT_EQ(progress_.statuses,
              (std::vector<std::string>{"0:Download install-on-demand", "1:mp3el2"}));
    EXPECT_EQ(componentHost_.Requests(), (std::vector<std::string>{"/components/mac/mp3el2.zip"}));

    // Found now without asking a server again.
    EXPECT_EQ(Process(progress_, job), PROCESS_DONE);
    EXPECT_EQ(componentHost_.Requests().size() + webHost.Requests().size(), 2u);
}

TEST_F(ComponentDownloadTest, FailuresLeaveNothingBehind) {
    // A zip that does not unpack into the component's folder.
    componentHost_.Serve("/components/mac/amrenc2.zip", Zip("amrenc2.zip", "other"));
    EXPECT_EQ(ProcessDownloadAndInstallComponent(progress_, "amrenc2"), PROCESS_FAILED);
    EXPECT_FALSE(fs::exists(folder_ / "amrenc2.zip"));
    EXPECT_FALSE(fs::exists(folder_ / "amrenc2"));

    // A stop while the server keeps silent: the web host is not tried.
    HttpTestServer webHost;
    LUserSettingSetString(kNetworkSection, kWebHostKey, webHost.Host().c_str());
    componentHost_.SetSilent(true);
    progress_.StopAfter(200);
    char path[kPathBufferSize];
    LProcessGetComponentPath stopped{"amrdec2", path};
    EXPECT_EQ(Process(progress_, stopped), PROCESS_STOPPED);
    EXPECT_TRUE(webHost.Requests().empty());
    EXPECT_FALSE(fs::exists(folder_ / "amrdec2.zip"));

    // No server set at all.
    LUserSettingDeleteItem(kNetworkSection, kComponentHostKey);
    LUserSettingDeleteItem(kNetworkSection, kWebHostKey);
    progress_.StopAfter(-1);
    EXPECT_FALSE(GetComponentPathDownload("aacdec3", path, progress_));
}

} // namespace
