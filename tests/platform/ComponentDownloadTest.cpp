// Finding components, and downloading and installing missing ones from a server on 127.0.0.1.
#include "HttpTestServer.h"

#include "platform/ComponentDownload.h"
#include "platform/Components.h"
#include "platform/NetworkHosts.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

bool IsExecutableByAll(const fs::path& path) {
    const fs::perms p = fs::status(path).permissions();
    return (p & fs::perms::owner_exec) != fs::perms::none &&
           (p & fs::perms::group_exec) != fs::perms::none &&
           (p & fs::perms::others_exec) != fs::perms::none;
}

// PATH set to one folder for the life of the object, so that no system program stands in for
// a component.
class PathOverride {
public:
    explicit PathOverride(const std::string& path) {
        const char* old = std::getenv("PATH");
        saved_ = old ? old : "";
        setenv("PATH", path.c_str(), 1);
    }
    ~PathOverride() { setenv("PATH", saved_.c_str(), 1); }

private:
    std::string saved_;
};

class ComponentDownloadTest : public ::testing::Test {
protected:
    void SetUp() override {
        char folder[kPathBufferSize];
        ASSERT_TRUE(GetComponentFolder(folder));
        folder_ = folder;
    }

    fs::path Zip(const std::string& name, const std::string& inner) {
        const fs::path work = home_.Path() / "zipwork";
        fs::create_directories(work / inner);
        std::ofstream(work / inner / "encode") << "#!/bin/sh\necho encoded\n";
        fs::permissions(work / inner / "encode", fs::perms(0644));
        const std::string command = "cd " + ShellQuote(work.string()) + " && zip -qr " +
                                    ShellQuote(name) + " " + ShellQuote(inner);
        EXPECT_EQ(std::system(command.c_str()), 0);
        return work / name;
    }

    TempHome home_;
    TimedStopProgress progress_;
    fs::path folder_;
};

TEST_F(ComponentDownloadTest, NamesOnTheServer) {
    char name[kPathBufferSize];
    LGetComponentServerFileName(name, "mp3el");
    EXPECT_STREQ(name, "mp3el");
    LGetComponentServerFileName(name, "mp3el2");
    EXPECT_STREQ(name, "mp3el2.zip");
    LGetComponentServerFileName(name, "ffmpeg4");
    EXPECT_STREQ(name, "ffmpeg4i.zip");
    EXPECT_TRUE(LIsZipComponent("openssl"));
    EXPECT_FALSE(LIsZipComponent("mp3el"));
}

TEST_F(ComponentDownloadTest, FolderComesFirstThenTheSystemEncoder) {
    EXPECT_EQ(folder_, home_.DataHome() / "Brakwater Software" / "Components");
    char path[kPathBufferSize];
    const std::string lame = RunCommand("command -v lame");
    if (!lame.empty()) {
        ASSERT_TRUE(GetComponentPath("mp3el", path, true));
        EXPECT_EQ(std::string(path) + "\n", lame);
    }
    EXPECT_FALSE(GetComponentPath("mp3el", path, false));
    EXPECT_EQ(fs::path(path), folder_ / "mp3el") << "where it would be installed";
    EXPECT_FALSE(GetComponentPath("aacenc3", path, true));

    std::ofstream(folder_ / "mp3el") << "#!/bin/sh\n";
    fs::permissions(folder_ / "mp3el", fs::perms(0600));
    ASSERT_TRUE(GetComponentPath("mp3el", path, true));
    EXPECT_EQ(fs::path(path), folder_ / "mp3el");
    EXPECT_TRUE(IsExecutableByAll(path));
}

TEST_F(ComponentDownloadTest, ZipComponentIsDownloadedUnpackedAndFound) {
    HttpTestServer server;
    server.Serve("/components/mac/mp3el2.zip",
                 HttpTestServer::Reply(200, ReadFile(Zip("mp3el2.zip", "mp3el2"))));
    LUserSettingSetString(kNetworkSection, kComponentHostKey, server.Host().c_str());

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

    // Found now without asking the server again.
    EXPECT_TRUE(GetComponentPath("mp3el2", path, true));
    EXPECT_EQ(Process(progress_, job), PROCESS_DONE);
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST_F(ComponentDownloadTest, PlainComponentBecomesTheEncoder) {
    const std::string lame = RunCommand("command -v lame");
    if (lame.empty()) GTEST_SKIP() << "lame is not installed";
    const std::string script = "#!/bin/sh\nexec " + lame.substr(0, lame.size() - 1) + " \"$@\"\n";
    HttpTestServer server;
    server.Serve("/components/mac/mp3el", HttpTestServer::Reply(200, script));
    LUserSettingSetString(kNetworkSection, kComponentHostKey, server.Host().c_str());

    const PathOverride noSystemEncoder((home_.Path() / "bin").string());
    char path[kPathBufferSize];
    ASSERT_TRUE(GetComponentPathDownload("mp3el", path, progress_));
    EXPECT_EQ(fs::path(path), folder_ / "mp3el");
    EXPECT_EQ(ReadFile(path), script);
    EXPECT_TRUE(IsExecutableByAll(path));
}

TEST_F(ComponentDownloadTest, WebHostIsTriedWhenTheComponentHostFails) {
    HttpTestServer componentHost;
    HttpTestServer webHost;
    webHost.Serve("/components/mac/aacenc3.zip",
                  HttpTestServer::Reply(200, ReadFile(Zip("aacenc3.zip", "aacenc3"))));
    LUserSettingSetString(kNetworkSection, kComponentHostKey, componentHost.Host().c_str());
    LUserSettingSetString(kNetworkSection, kWebHostKey, webHost.Host().c_str());

    EXPECT_EQ(ProcessDownloadAndInstallComponent(progress_, "aacenc3"), PROCESS_DONE);
    EXPECT_EQ(componentHost.Requests(), (std::vector<std::string>{"/components/mac/aacenc3.zip"}));
    EXPECT_EQ(webHost.Requests().size(), 1u);
    EXPECT_TRUE(fs::is_directory(folder_ / "aacenc3"));
}

TEST_F(ComponentDownloadTest, FailuresLeaveNothingBehind) {
    // No server set at all.
    char path[kPathBufferSize];
    EXPECT_FALSE(GetComponentPathDownload("aacdec3", path, progress_));
    LProcessGetComponentPath job{"aacdec3", path};
    EXPECT_EQ(Process(progress_, job), PROCESS_FAILED);

    // A zip that does not unpack into the component's folder.
    HttpTestServer server;
    server.Serve("/components/mac/amrenc2.zip",
                 HttpTestServer::Reply(200, ReadFile(Zip("amrenc2.zip", "other"))));
    LUserSettingSetString(kNetworkSection, kComponentHostKey, server.Host().c_str());
    EXPECT_EQ(ProcessDownloadAndInstallComponent(progress_, "amrenc2"), PROCESS_FAILED);
    EXPECT_FALSE(fs::exists(folder_ / "amrenc2.zip"));
    EXPECT_FALSE(fs::exists(folder_ / "amrenc2"));

    // A stop while the server keeps silent: the web host is not tried.
    HttpTestServer webHost;
    LUserSettingSetString(kNetworkSection, kWebHostKey, webHost.Host().c_str());
    server.SetSilent(true);
    progress_.StopAfter(200);
    LProcessGetComponentPath stopped{"amrdec2", path};
    EXPECT_EQ(Process(progress_, stopped), PROCESS_STOPPED);
    EXPECT_TRUE(webHost.Requests().empty());
    EXPECT_FALSE(fs::exists(folder_ / "amrdec2.zip"));
}

} // namespace
