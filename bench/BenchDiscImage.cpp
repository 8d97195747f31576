// Building a hybrid (ISO 9660 + Joliet + UDF) image of a 1 GB tree of thousands of MP3-sized
// files and a few large WAV files, page cache warm, beside genisoimage -J -udf and
// xorriso -as mkisofs -J on the same tree in the same run: MB/s and the builder's peak memory,
// also for half the tree (peak memory must not follow the files' total size). The image is
// synced to the disk before it takes its name; with strace present, the time of that sync is
// measured on its own (a further run that traces only fsync).
#include "BenchCommand.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

constexpr int kSongs = 3000;
constexpr size_t kSongBytes = 256 * 1024;
constexpr int kSides = 4;
constexpr size_t kSideBytes = 64u * 1024 * 1024;

// The seconds vinora-cli spends in fsync while it writes the image, as strace times the calls;
// negative when strace is not there.
double SyncSeconds(const std::string& command, const std::string& image, const fs::path& folder) {
    if (std::system("command -v strace >/dev/null 2>&1") != 0) return -1;
    const fs::path trace = folder / "fsync.trace";
    fs::remove(image);
    sync();
    if (std::system(("strace -f --seccomp-bpf -T -e trace=fsync -o " + trace.string() + " " +
                     command + " >/dev/null 2>&1")
                        .c_str()) != 0)
        return -1;
    std::ifstream in(trace);
    double total = 0;
    for (std::string line; std::getline(in, line);) {
        const size_t open = line.rfind('<');
        if (line.find("fsync(") != std::string::npos && open != std::string::npos)
            total += std::atof(line.c_str() + open + 1);
    }
    fs::remove(trace);
    return total;
}

} // namespace

int main() {
    const fs::path root = fs::temp_directory_path() / "vinora-bench-disc";
    const fs::path tree = root / "Collection";
    BenchMakeTree(tree, kSongs, kSongBytes, kSides, kSideBytes);
    const uint64_t bytes = BenchTreeBytes(tree);
    std::system(("find " + tree.string() + " -type f -print0 | xargs -0 cat > /dev/null").c_str());
    const std::string image = (root / "out.iso").string();
    const std::string cli = VINORA_CLI;

    std::printf("tree: %d files, %.0f MB\n", kSongs + kSides, bytes / 1e6);
    // Half the tree first: the songs only.
    fs::path half = root / "Half";
    if (!fs::exists(half)) {
        fs::create_directories(half);
        for (const fs::directory_entry& entry : fs::directory_iterator(tree))
            if (entry.path().filename() != "Sides" && entry.is_directory())
                fs::create_directory_symlink(entry.path(), half / entry.path().filename());
    }
    BenchReport("vinora-cli mkiso, songs only", BenchMeasureCommand(cli + " mkiso " + image + " " + half.string(), image),
           BenchTreeBytes(half));
    const std::string hybrid = cli + " mkiso " + image + " " + tree.string();
    BenchReport("vinora-cli mkiso (hybrid)", BenchMeasureCommand(hybrid, image), bytes);
    if (const double seconds = SyncSeconds(hybrid, image, root); seconds >= 0)
        std::printf("%-34s %8.2f s\n", "  of which the sync before rename", seconds);
    BenchReport("genisoimage -J -udf", BenchMeasureCommand("genisoimage -quiet -J -udf -o " + image + " " + tree.string(), image),
           bytes);
    BenchReport("xorriso -as mkisofs -J", BenchMeasureCommand("xorriso -as mkisofs -quiet -J -o " + image + " " + tree.string(), image),
           bytes);
    fs::remove(image);
    return 0;
}
