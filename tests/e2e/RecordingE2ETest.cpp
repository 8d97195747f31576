// Recording sessions end to end: a whole side captured and split into its tracks by vinora-cli
// split-side, or recorded live, converted by the queue; a session killed in its second track
// loses nothing already kept.
#include "E2ETestUtil.h"

#include "codecs/WaveFile.h"
#include "devices/DemoSide.h"
#include "support/ToneSignals.h"

#include <csignal>
#include <fcntl.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

double Seconds(const std::string& text) {
    int h = 0, m = 0;
    double s = 0;
    std::sscanf(text.c_str(), "%d:%d:%lf", &h, &m, &s);
    return h * 3600 + m * 60 + s;
}

struct PrintedTrack {
    std::string line;
    double start = 0, end = 0, length = 0;
    std::string path;
};

// Checks the printed tracks against the demo side's own: each boundary within half a second of
// the generated gap, none shorter than the minimum. Returns the queued paths and the total
// length. A live input's times count from when recording began, which is not when the player
// began: with `live`, the times are taken relative to the second track's start (the first
// boundary inside the open input), the player may have started up to two seconds after the
// recorder, and the first track may start later than its music by the fade-in that stays
// under the start threshold before anything is recorded.
std::vector<std::string> ExpectDemoTracks(const std::string& printed, double* total,
                                          bool live = false) {
    constexpr double tolerance = 0.5;
    std::istringstream lines(printed);
    std::vector<PrintedTrack> tracks;
    for (std::string text; std::getline(lines, text);) {
        // "track 1: Untitled 01  0:00:01.45 - 0:00:33.45  (0:00:32.00)  queued as PATH"
        if (text.rfind("track ", 0) != 0) continue;
        const std::size_t times = text.find("  ") + 2, queued = text.find("  queued as ");
        char start[32], end[32], length[32];
        if (std::sscanf(text.c_str() + times, "%31s - %31s  (%31[^)])", start, end, length) != 3) {
            ADD_FAILURE() << text << "\n" << printed;
            break;
        }
        tracks.push_back(
            {text, Seconds(start), Seconds(end), Seconds(length), text.substr(queued + 12)});
    }
    const LDemoSide demo;
    EXPECT_EQ(tracks.size(), demo.GetTracks().size()) << printed;
    const size_t count = std::min(tracks.size(), demo.GetTracks().size());
    double shift = 0;
    if (live && count >= 2) {
        shift = tracks[1].start - demo.GetTracks()[1].start / 44100.0;
        EXPECT_GE(shift, -tolerance) << printed;
        EXPECT_LE(shift, 2.0) << printed;
    }
    std::vector<std::string> paths;
    *total = 0;
    for (size_t i = 0; i < count; ++i) {
        const LDemoSide::Track& track = demo.GetTracks()[i];
        const PrintedTrack& got = tracks[i];
        const double start = got.start - shift, music = track.start / 44100.0;
        if (live && i == 0) {
            EXPECT_GE(start, music - tolerance) << got.line;
            EXPECT_LE(start, music + 2 * tolerance) << got.line;
        } else {
            EXPECT_NEAR(start, music, tolerance) << got.line;
        }
        EXPECT_NEAR(got.end - shift, (track.start + track.frames) / 44100.0, tolerance) << got.line;
        EXPECT_GE(got.length, 2.0) << got.line;
        *total += got.length;
        paths.push_back(got.path);
    }
    return paths;
}

// The demo side, captured from the Virtual Turntable as fast as the recorder takes it, is in
// the file whole and bit for bit: it ends with the side, rounded up to a 100 ms buffer.
void ExpectWholeDemoSide(const fs::path& captured) {
    LSoundSource side(new LDemoSide);
    LSoundSource file = LWaveFile::OpenSource(captured.c_str());
    ASSERT_EQ(file->GetError(), sndErrNone);
    const int frames = file->GetEndSample();
    ASSERT_GE(frames, side->GetEndSample());
    ASSERT_LT(frames, side->GetEndSample() + 4410);
    std::vector<int> expected = ReadFrames(side, frames);
    for (int& value : expected)
        value = std::clamp((value + 8) >> 4, -32768, 32767) * 16;
    EXPECT_TRUE(ReadFrames(file, frames) == expected);
}

// The queue turns every track into a file that decodes and carries the track's name.
void ExpectConvertedTracks(const std::vector<std::string>& paths) {
    int status = -1;
    Cli("queue run", &status, "", "2>/dev/null");
    ASSERT_EQ(status, 0);
    for (const std::string& path : paths) {
        const std::string probed = RunCommand(
            "ffprobe -v error -show_entries format=duration:format_tags=title -of csv=p=0 " +
            ShellQuote(path));
        const std::string name = fs::path(path).stem().string();
        EXPECT_GT(std::atof(probed.c_str()), 2.0) << path;
        EXPECT_NE(probed.find(name), std::string::npos) << probed;
    }
}

// The demo side, captured whole, then played into the Virtual Speaker while it is recorded, is
// heard across every split.
TEST(RecordingE2E, SplitsTheDemoSideIntoItsTracks) {
    TempHome home;
    const fs::path side = home.Path() / "side.wav";
    const fs::path heard = home.Path() / "heard.wav";
    int status = -1;
    const std::string captured = CaptureDemoSide(side, &status);
    ASSERT_EQ(status, 0) << captured;
    ExpectWholeDemoSide(side);
    Cli("settings set OutputFormat OutputFormatNum 1");
    Cli("settings set Settings PlaybackAudioWhileRecording 1");
    Cli("settings set Player Device 'Virtual Speaker'");
    const std::string printed =
        Cli("split-side " + ShellQuote(side), &status,
            Env("VINORA_VIRTUAL_SPEAKER", heard.string() + ",speed=0"), "2>/dev/null");
    ASSERT_EQ(status, 0) << printed;
    double total = 0;
    const std::vector<std::string> paths = ExpectDemoTracks(printed, &total);
    const double played = SoxiSeconds(heard);
    EXPECT_GE(played, total - 0.5);
    EXPECT_LE(played, LDemoSide().GetTracks().back().start / 44100.0 + 40);
    ExpectConvertedTracks(paths);
}

// The demo side played into a sound server's null sink in real time and recorded from its
// monitor splits the same way.
using RecordingFromServerE2E = PulseE2E;

TEST_F(RecordingFromServerE2E, RecordsTheDemoSideFromASoundServer) {
    const fs::path side = home_.Path() / "side.wav";
    int status = -1;
    CaptureDemoSide(side, &status);
    ASSERT_EQ(status, 0);
    Cli("settings set OutputFormat OutputFormatNum 0");
    const std::string script =
        "paplay --device=turntable " + ShellQuote(side) + " & player=$!; " + VINORA_CLI +
        " record --device turntable.monitor --seconds 190 2>/dev/null; "
        "status=$?; kill $player 2>/dev/null; wait $player; exit $status";
    // A recorder that fell behind on a busy machine lost audio, logged it, and its times say
    // nothing: such a run is made again once.
    std::string printed;
    for (int attempt = 1; attempt <= 2; ++attempt) {
        printed = RunCommand(script, &status);
        ASSERT_EQ(status, 0) << printed;
        if (!home_.TakeLostAudioLogged()) break;
        ASSERT_LT(attempt, 2) << "audio was lost in both runs";
        for (const auto& entry : fs::directory_iterator(AppData(home_)))
            if (entry.path().extension() == ".wav" || entry.path().filename() == "vnprocesses.list")
                fs::remove(entry.path());
    }
    // A live input's times are the clock's; the input stays open from track to track. The
    // player may take a while to start on a busy machine.
    double total = 0;
    ExpectConvertedTracks(ExpectDemoTracks(printed, &total, true));
}

TEST(RecordingE2E, AKilledSessionKeepsTheTracksItQueued) {
    TempHome home;
    const fs::path side = home.Path() / "side.wav";
    // One 4 s song, 3 s of quiet, then a song long enough to be killed in.
    ASSERT_TRUE(
        SoxSynth(side, 44100, 2,
                 "4 sine 440 vol 0.5 : synth 3 whitenoise vol 0.001 : synth 30 sine 330 vol 0.5"));
    Cli("settings set OutputFormat OutputFormatNum 0");
    const fs::path printed = home.Path() / "printed.txt";
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=4").c_str(), 1);
        const int out = ::open(printed.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, STDOUT_FILENO);
        execl(VINORA_CLI, VINORA_CLI, "record", "--device", "Virtual Turntable", nullptr);
        _exit(127);
    }
    // Wait for the first track to be queued, then kill the session in the second.
    const fs::path queue = QueueFile(home);
    for (int i = 0; i < 200 && !(fs::exists(queue) && fs::file_size(queue) > 8); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    ASSERT_EQ(fs::file_size(queue), 8u + 1825u);
    const std::string listed = Cli("queue list", nullptr, "", "2>/dev/null");
    const std::string source = listed.substr(0, listed.find(" -> "));
    EXPECT_EQ(source.rfind("/var/tmp/", 0), 0u) << listed;
    EXPECT_TRUE(fs::exists(source)) << listed;

    int status = -1;
    Cli("queue run", &status);
    EXPECT_EQ(status, 0);
    const std::string output = listed.substr(listed.find(" -> ") + 4, listed.find('\n') - listed.find(" -> ") - 4);
    EXPECT_NEAR(SoxiSeconds(output), 4.0, 0.3) << output;
    EXPECT_FALSE(fs::exists(source));
}

} // namespace
