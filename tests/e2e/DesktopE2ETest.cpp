// The vinora executable on the offscreen platform: it lists the output folder and converts what
// the queue file holds, as a person starting it would see.
#include "app/ProcessListThread.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string ReadText(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

int CountLines(const std::string& text, const std::string& start) {
    int count = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(start, 0) == 0) ++count;
    return count;
}

TEST(DesktopE2E, ListsTheFolderAndAddsWhatTheQueueConverts) {
    TempHome home;
    const fs::path output = home.Path() / "Recordings";
    const fs::path status = home.Path() / "status.txt";
    fs::create_directories(output);
    for (const char* name : {"one.wav", "two.wav", "three.mp3"})
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(output / name) +
                   " synth 1 sine 440 2>/dev/null");
    const fs::path recording = home.Path() / "take.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(recording) + " synth 2 sine 330");
    RunCommand(std::string(VINORA_CLI) + " settings set Settings AppOutputFolder " +
               ShellQuote(output));

    LProcessConvert request;
    std::snprintf(request.sourcePath, sizeof request.sourcePath, "%s", recording.c_str());
    std::snprintf(request.outputFolder, sizeof request.outputFolder, "%s", output.c_str());
    std::snprintf(request.outputExtension, sizeof request.outputExtension, ".wav");
    request.restore = 0;
    const fs::path data = home.DataHome() / "Brakwater Software/Vinora";
    fs::create_directories(data);
    ASSERT_TRUE(ProcessListFile::Append((data / "vnprocesses.list").c_str(), &request,
                                        sizeof request));

    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("VINORA_STATUS_FILE", status.c_str(), 1);
        execl(VINORA_DESKTOP, VINORA_DESKTOP, nullptr);
        _exit(127);
    }
    std::string shown;
    for (int i = 0; i < 300; ++i) {
        shown = ReadText(status);
        if (CountLines(shown, "row: ") == 4 && shown.find("No Files Queued") != std::string::npos)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(CountLines(shown, "row: "), 4) << shown;
    EXPECT_NE(shown.find("row: take.wav\t0:00:02.000"), std::string::npos) << shown;
    EXPECT_NE(shown.find("pane 2: No Files Queued"), std::string::npos) << shown;
    EXPECT_EQ(fs::file_size(data / "vnprocesses.list"), 0u);
}

TEST(DesktopE2E, InstallsADesktopEntryForTheUser) {
    TempHome home;
    int status = -1;
    const std::string said = RunCommand(
        "QT_QPA_PLATFORM=offscreen " + std::string(VINORA_DESKTOP) + " -installer", &status);
    EXPECT_EQ(status, 0);
    const fs::path path = home.DataHome() / "applications/com.brakwater.Vinora.desktop";
    EXPECT_EQ(said, "vinora: installed the desktop entry " + path.string() + "\n");
    const std::string entry = ReadText(path);
    EXPECT_NE(entry.find("Exec=\"" + std::string(VINORA_DESKTOP) + "\" %F"), std::string::npos);
    EXPECT_NE(entry.find("MimeType=audio/x-wav;"), std::string::npos);
    EXPECT_TRUE(fs::exists(home.DataHome() / "icons/hicolor/scalable/apps/com.brakwater.Vinora.svg"));
}

} // namespace
