// Burning a 2 GB tree (MP3-sized files and whole recorded sides) with vinora-cli burn-data to
// the Virtual Burner's blank DVD+RW, without and with read-back verification, beside vinora-cli
// mkiso of the same tree in the same run, page cache warm: MB/s of the tree and peak memory.
// The disc is written through the SCSI layer and the virtual MMC drive into a file, so the
// difference to mkiso is what the command layer and the drive add. Each figure is the better
// of two runs: the machine may be busy with other work.
#include "BenchCommand.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

// The faster of two runs of a command, each after `prepare`.
template <typename Prepare>
BenchRun BestOfTwo(const std::string& command, const std::string& output, Prepare prepare) {
    prepare();
    const BenchRun first = BenchMeasureCommand(command, output);
    prepare();
    const BenchRun second = BenchMeasureCommand(command, output);
    if (!first.ok || !second.ok) return first.ok ? second : first;
    return first.seconds <= second.seconds ? first : second;
}

constexpr int kSongs = 2000;
constexpr size_t kSongBytes = 512 * 1024;
constexpr int kSides = 4;
constexpr size_t kSideBytes = 256u * 1024 * 1024;

} // namespace

int main() {
    const fs::path root = fs::temp_directory_path() / "vinora-bench-datadisc";
    const fs::path tree = root / "Archive";
    BenchMakeTree(tree, kSongs, kSongBytes, kSides, kSideBytes);
    const uint64_t bytes = BenchTreeBytes(tree);
    std::system(("find " + tree.string() + " -type f -print0 | xargs -0 cat > /dev/null").c_str());

    // A private settings store: the tray stays in between writing and verifying.
    const fs::path home = root / "home";
    const std::string environment = "HOME=" + home.string() + " XDG_CONFIG_HOME=" + (home / ".config").string() +
                                    " XDG_DATA_HOME=" + (home / ".local/share").string() +
                                    " SOURCE_DATE_EPOCH=1700000000 ";
    const std::string cli = environment + VINORA_CLI;
    std::system((cli + " settings set CDRecorder CDLoadEject 0 >/dev/null").c_str());

    std::printf("tree: %d files, %.0f MB\n", kSongs + kSides, bytes / 1e6);
    const std::string image = (root / "out.iso").string();
    BenchReport("vinora-cli mkiso (hybrid DVD)",
                BestOfTwo(cli + " mkiso " + image + " --project 9 " + tree.string(), image, [] {}), bytes);
    fs::remove(image);

    const std::string disc = (root / "disc").string();
    const std::string burn = "VINORA_VIRTUAL_BURNER=dvd+rw:" + disc + " " + cli + " burn-data --project 9 " +
                             tree.string();
    // Each burn gets a blank disc.
    const auto blank = [&] { fs::remove(disc + ".state"); };
    const BenchRun written = BestOfTwo(burn, disc, blank);
    BenchReport("burn-data to dvd+rw", written, bytes);
    const BenchRun verified = BestOfTwo(burn + " --verify", disc, blank);
    BenchReport("burn-data --verify to dvd+rw", verified, bytes);
    if (written.ok && verified.ok && verified.seconds > written.seconds)
        std::printf("%-34s %8.0f MB/s\n", "  of which the verification",
                    bytes / 1e6 / (verified.seconds - written.seconds));
    fs::remove(disc);
    fs::remove(disc + ".state");
    return 0;
}
