// Decoding speed of the MP3 source, as a multiple of real time, beside mpg123's on the same
// file. Usage: benchmp3decode [FILE.mp3]; without a file, one minute of pink noise at about
// 190 kbit/s (LAME -V 2) is encoded with sox and LAME.
#include "codecs/MP3File.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Decodes the whole file once; returns its length in frames.
int DecodeOnce(const std::string& path, std::vector<int>& block) {
    const LSoundSource source = LMP3File::OpenSource(path.c_str());
    while (source->GetPositionSample() < source->GetEndSample())
        source->Read(block.data(), 8192);
    return source->GetEndSample();
}

std::string MakeTestFile() {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "vinora-bench-mp3";
    std::filesystem::create_directories(dir);
    const std::string wav = (dir / "noise.wav").string();
    const std::string mp3 = (dir / "noise.mp3").string();
    const std::string command = "sox -n -r 44100 -c 2 -b 16 '" + wav +
                                "' synth 60 pinknoise gain -8 && lame --quiet -V 2 '" + wav +
                                "' '" + mp3 + "'";
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "benchmp3decode: could not make a test file with sox and lame\n");
        std::exit(2);
    }
    return mp3;
}

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : MakeTestFile();
    const LSoundSource probe = LMP3File::OpenSource(path.c_str());
    if (probe->GetError() != sndErrNone) {
        std::fprintf(stderr, "benchmp3decode: %s is not a readable MP3 file\n", path.c_str());
        return 2;
    }
    char codec[260] = "";
    LMP3File::GetCodecName(codec, path.c_str());
    std::vector<int> block(8192 * probe->GetChannels());
    const int frames = DecodeOnce(path, block);
    const double audio = double(frames) / probe->GetSampleRate();
    std::printf("%s: %.1f s, %d Hz, %d channels, %s\n", path.c_str(), audio, probe->GetSampleRate(),
                probe->GetChannels(), codec);

    // Best of several runs, each at least a second long.
    double best = 1e30;
    for (int run = 0; run < 5; ++run) {
        int decodes = 0;
        const Clock::time_point start = Clock::now();
        do {
            DecodeOnce(path, block);
            ++decodes;
        } while (Seconds(start) < 1.0);
        best = std::min(best, Seconds(start) / decodes);
    }
    std::printf("%-28s %8.1f x real time\n", "vinora MP3 decoder", audio / best);

    const std::string mpg123 = "mpg123 -q -t '" + path + "' 2>/dev/null";
    double bestMpg123 = 1e30;
    for (int run = 0; run < 5; ++run) {
        const Clock::time_point start = Clock::now();
        if (std::system(mpg123.c_str()) != 0) {
            std::printf("%-28s (not available)\n", "mpg123 -t");
            return 0;
        }
        bestMpg123 = std::min(bestMpg123, Seconds(start));
    }
    std::printf("%-28s %8.1f x real time\n", "mpg123 -t (whole process)", audio / bestMpg123);
    return 0;
}
