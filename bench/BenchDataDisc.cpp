// Burning a 2 GB tree (MP3-sized files and whole recorded sides) with vinora-cli burn-data to
// the Virtual Burner's blank DVD+RW, without and with read-back verification, beside vinora-cli
// mkiso of the same tree in the same run, page cache warm: MB/s of the tree and peak memory.
// The disc is written through the SCSI layer and the virtual MMC drive into a file, so the
// difference to mkiso is what the command layer and the drive add. Each figure is the median
// of five rounds, and the ratio of the speeds is taken within each round: the disk's write-back
// and other work on the machine move the times more than the commands differ.
#include "BenchCommand.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRounds = 5;

// The run of median time among a command's rounds.
BenchRun Median(std::vector<BenchRun> runs) {
    std::sort(runs.begin(), runs.end(),
              [](const BenchRun& a, const BenchRun& b) { return a.seconds < b.seconds; });
    return runs[runs.size() / 2];
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

    std::printf("tree: %d files, %.0f MB; %d rounds, medians\n", kSongs + kSides, bytes / 1e6, kRounds);
    const std::string image = (root / "out.iso").string();
    const std::string mkiso = cli + " mkiso " + image + " --project 9 " + tree.string();
    const std::string disc = (root / "disc").string();
    const std::string burn = "VINORA_VIRTUAL_BURNER=dvd+rw:" + disc + " " + cli + " burn-data --project 9 " +
                             tree.string();
    // The three commands take turns, so that each round's figures share the machine's state
    // (other work, the disk's write-back); each burn gets a blank disc.
    std::vector<BenchRun> images, written, verified;
    std::vector<double> ratios;
    bool ok = true;
    for (int round = 0; round < kRounds && ok; ++round) {
        images.push_back(BenchMeasureCommand(mkiso, image));
        fs::remove(disc + ".state");
        written.push_back(BenchMeasureCommand(burn, disc));
        fs::remove(disc + ".state");
        verified.push_back(BenchMeasureCommand(burn + " --verify", disc));
        ok = images.back().ok && written.back().ok && verified.back().ok;
        if (ok) ratios.push_back(images.back().seconds / written.back().seconds);
    }
    fs::remove(image);
    if (!ok) {
        std::printf("a run failed: mkiso %d, burn %d, burn --verify %d\n", images.back().ok,
                    written.back().ok, verified.back().ok);
        return 1;
    }
    const BenchRun write = Median(written), verify = Median(verified);
    BenchReport("vinora-cli mkiso (hybrid DVD)", Median(images), bytes);
    BenchReport("burn-data to dvd+rw", write, bytes);
    BenchReport("burn-data --verify to dvd+rw", verify, bytes);
    if (verify.seconds > write.seconds)
        std::printf("%-34s %8.0f MB/s\n", "  of which the verification",
                    bytes / 1e6 / (verify.seconds - write.seconds));
    std::sort(ratios.begin(), ratios.end());
    std::printf("%-34s %8.2f  (rounds from %.2f to %.2f)\n", "burn speed / mkiso speed",
                ratios[ratios.size() / 2], ratios.front(), ratios.back());
    fs::remove(disc);
    fs::remove(disc + ".state");
    return 0;
}
