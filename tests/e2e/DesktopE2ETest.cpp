// The vinora executable on the offscreen platform: it lists the output folder and converts what
// the queue file holds, as a person starting it would see.
#include "E2ETestUtil.h"

#include <csignal>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

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
        ASSERT_TRUE(SoxSynth(output / name, 44100, 2, "1 sine 440"));
    const fs::path recording = home.Path() / "take.wav";
    ASSERT_TRUE(SoxSynth(recording, 44100, 2, "2 sine 330"));
    Cli("settings set Settings AppOutputFolder " + ShellQuote(output));
    ASSERT_TRUE(QueueRequest(home, recording, output, "", ".wav", false));

    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("VINORA_STATUS_FILE", status.c_str(), 1);
        execl(VINORA_DESKTOP, VINORA_DESKTOP, nullptr);
        _exit(127);
    }
    // The row of the converted file comes before the status bar says the queue is empty.
    std::string shown;
    for (int i = 0; i < 300; ++i) {
        shown = FileText(status);
        if (CountLines(shown, "row: ") == 4 &&
            shown.find("pane 2: No Files Queued") != std::string::npos)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(CountLines(shown, "row: "), 4) << shown;
    EXPECT_NE(shown.find("row: take.wav\t0:00:02.000"), std::string::npos) << shown;
    EXPECT_NE(shown.find("pane 2: No Files Queued"), std::string::npos) << shown;
    EXPECT_EQ(fs::file_size(QueueFile(home)), 0u);
}

TEST(DesktopE2E, InstallsADesktopEntryForTheUser) {
    TempHome home;
    int status = -1;
    const std::string said = RunCommand(
        "QT_QPA_PLATFORM=offscreen " + std::string(VINORA_DESKTOP) + " -installer", &status);
    EXPECT_EQ(status, 0);
    const fs::path path = home.DataHome() / "applications/com.brakwater.Vinora.desktop";
    EXPECT_EQ(said, "vinora: installed the desktop entry " + path.string() + "\n");
    const std::string entry = FileText(path);
    EXPECT_NE(entry.find("Exec=\"" + std::string(VINORA_DESKTOP) + "\" %F"), std::string::npos);
    EXPECT_NE(entry.find("MimeType=audio/x-wav;"), std::string::npos);
    EXPECT_TRUE(fs::exists(home.DataHome() / "icons/hicolor/scalable/apps/com.brakwater.Vinora.svg"));
}

} // namespace
