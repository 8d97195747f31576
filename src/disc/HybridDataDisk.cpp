#include "disc/HybridDataDisk.h"

#include "disc/ISONames.h"
#include "disc/WriteSectorCache.h"
#include "platform/File.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uint32_t kFirstDescriptor = 16;
constexpr uint32_t kUDFPathTables = 70;
constexpr uint32_t kUDFAnchor = 256;
constexpr uint32_t kUDFDirectories = 257;
constexpr size_t kBootBytes = 32768;
constexpr size_t kChunk = 65536;
// Image files are written in runs of 1 MiB; drives take runs of 16 or 32 sectors.
constexpr size_t kImageRunSectors = 512;

uint32_t RoundUp(uint64_t value, uint32_t unit) {
    return static_cast<uint32_t>((value + unit - 1) / unit * unit);
}

uint32_t Unit(int media) {
    return media == MEDIA_BDR || media == MEDIA_BDRE ? 32 : 16;
}

// Whether any name or the label needs more than Latin-1.
bool NeedsUnicode(const std::string& text) {
    const std::string units = LCopyToBigEndianUnicode(text);
    for (size_t i = 0; i < units.size(); i += 2)
        if (units[i] != 0) return true;
    return false;
}

bool TreeNeedsUnicode(const LAbstractBurnFile& folder) {
    for (const auto& [name, child] : folder.children)
        if (NeedsUnicode(child->name) || (child->folder && TreeNeedsUnicode(*child))) return true;
    return false;
}

} // namespace

LProjectFileSystems GetProjectFileSystems(int project) {
    switch (project) {
    case PROJECT_ISO_JOLIET_CD:
    case PROJECT_ISO_JOLIET_DVD:
    case PROJECT_ISO_HDDVD:
    case PROJECT_ISO_BLURAY:
    case PROJECT_ISO_DISK:
        return {true, true, false};
    case PROJECT_ISO_CD:
    case PROJECT_ISO_DVD:
        return {true, false, false};
    case PROJECT_UDF_CD:
    case PROJECT_UDF_DVD:
    case PROJECT_UDF_HDDVD:
    case PROJECT_UDF_BLURAY:
        return {false, false, true};
    case PROJECT_VIDEO_DVD:
    case PROJECT_HYBRID_CD:
    case PROJECT_HYBRID_DVD:
    case PROJECT_HYBRID_HDDVD:
    case PROJECT_HYBRID_BLURAY:
    case PROJECT_HYBRID_DISK:
        return {true, true, true};
    default:
        return {};
    }
}

LHybridDataDisk::LHybridDataDisk(LAbstractFileSystem& compilation, int project, int media,
                                 std::string sourceImage, std::string bootImage)
    : compilation_(compilation), project_(project), media_(media),
      sourceImage_(std::move(sourceImage)), bootImage_(std::move(bootImage)),
      systems_(GetProjectFileSystems(project)) {}

LHybridDataDisk::~LHybridDataDisk() {
    StopThreadNow();
}

void LHybridDataDisk::ThreadFunction() {
    Build();
    done_.Signal();
}

bool LHybridDataDisk::Fail(BurnErrorCodeValue code, const std::string& detail) {
    error_ = BurnErrorCode(code, detail.c_str());
    return false;
}

bool LHybridDataDisk::Build() {
    error_ = BurnErrorCode();
    const uint32_t unit = Unit(media_);
    if (!sourceImage_.empty()) {
        struct stat info {};
        if (stat(sourceImage_.c_str(), &info) != 0) return Fail(41, sourceImage_);
        sourceBytes_ = static_cast<uint64_t>(info.st_size);
        lastSector_ = RoundUp(RoundUp(sourceBytes_, kSectorSize) / kSectorSize, unit) - 1;
        return true;
    }
    system_.Clear();
    directories_.Clear();
    closing_.Clear();
    if (!bootImage_.empty()) {
        LFile boot(_OpenRead(bootImage_.c_str(), 1000));
        uint8_t sectors[kBootBytes] = {};
        if (!boot.IsOpen() || boot.Read(sectors, kBootBytes) < 0) return Fail(5, bootImage_);
        system_.AddData(sectors, kBootBytes);
    }
    return BuildFileSystems(std::time(nullptr));
}

bool LHybridDataDisk::BuildFileSystems(std::time_t now) {
    std::string problem;
    if (systems_.iso && !iso_.LoadFileSystem(compilation_, problem)) return Fail(6, problem);
    if (IsToStop()) return Fail(1, {});
    if (systems_.joliet && !joliet_.LoadFileSystem(compilation_, problem)) return Fail(6, problem);
    if (IsToStop()) return Fail(1, {});
    if (systems_.udf) {
        udf_ = std::make_unique<LUDFFileSystem>(NeedsUnicode(compilation_.VolumeLabel()) ||
                                                TreeNeedsUnicode(compilation_.Root()));
        udf_->LoadFileSystem(compilation_);
    }
    if (IsToStop()) return Fail(1, {});

    // The descriptors from sector 16: ISO, Joliet, their terminator, then UDF's recognition.
    uint32_t next = kFirstDescriptor;
    const uint32_t isoDescriptor = next;
    if (systems_.iso) ++next;
    const uint32_t jolietDescriptor = next;
    if (systems_.joliet) ++next;
    const uint32_t terminator = next;
    if (systems_.iso) ++next;
    const uint32_t recognition = next;
    if (systems_.udf) next += 3;

    const uint32_t isoTables = systems_.iso ? iso_.BuildSystemArea() : 0;
    const uint32_t jolietTables = systems_.joliet ? joliet_.BuildSystemArea() : 0;
    const uint32_t isoTableSector = systems_.udf ? kUDFPathTables : next;
    const uint32_t jolietTableSector = isoTableSector + isoTables;
    const uint32_t tablesEnd = jolietTableSector + jolietTables;
    if (systems_.udf && tablesEnd > kUDFAnchor)
        return Fail(6, "the folders are too many for the path tables");

    directoryStart_ = systems_.udf ? kUDFDirectories : std::max(tablesEnd, next);
    uint32_t end = directoryStart_;
    if (systems_.iso) end = iso_.BuildFileSystemArea(end);
    if (systems_.joliet) end = joliet_.BuildFileSystemArea(end);
    const uint32_t partitionStart = end;
    if (systems_.udf) end += udf_->GetFSSize();
    fileStart_ = end;

    // File data in the compilation's own order, the order in which it is written.
    uint64_t sector = fileStart_;
    if (systems_.iso || systems_.udf)
        compilation_.ForEachItem([&sector](LAbstractBurnFile& item) {
            if (item.folder) return;
            item.sector = static_cast<uint32_t>(sector);
            sector += std::max<uint64_t>(1, (item.size + kSectorSize - 1) / kSectorSize);
        });
    if (sector + 1 >= 0xFFFFFFFFull) return Fail(28, "the image would exceed 8 TB");
    const uint32_t count = RoundUp(sector + (systems_.udf ? 1 : 0), Unit(media_));
    lastSector_ = count - 1;
    closingSector_ = systems_.udf ? lastSector_ : count;

    if (systems_.iso) {
        iso_.BuildPostFilesArea(system_, directories_, directoryStart_, isoDescriptor, isoTableSector,
                                count, now);
        if (systems_.joliet)
            joliet_.BuildPostFilesArea(system_, directories_, directoryStart_, jolietDescriptor,
                                       jolietTableSector, count, now);
        uint8_t end[kSectorSize] = {255, 'C', 'D', '0', '0', '1', 1};
        system_.WriteAt(static_cast<size_t>(terminator) * kSectorSize, end, kSectorSize);
    }
    if (systems_.udf) {
        udf_->BuildSystemArea(system_, recognition, partitionStart, lastSector_ - partitionStart, now);
        udf_->BuildFileSystemArea(directories_, directoryStart_, partitionStart, now);
        udf_->BuildClosingArea(closing_, lastSector_);
    }
    system_.SetPosition(static_cast<size_t>(directoryStart_) * kSectorSize);
    directories_.SetPosition(static_cast<size_t>(fileStart_ - directoryStart_) * kSectorSize);
    return true;
}

BurnErrorCode LHybridDataDisk::BurnCompilation(LProcessInterface& progress, int fd) {
    BurnErrorCode result;
    WriteSectorCache cache(fd, kImageRunSectors);
    const auto failed = [&result](BurnErrorCodeValue code, const std::string& detail = {}) {
        result = BurnErrorCode(code, detail.c_str());
        return result;
    };
    std::vector<uint8_t> chunk(kChunk);
    if (!sourceImage_.empty()) {
        LFile source(_OpenRead(sourceImage_.c_str(), 1000));
        if (!source.IsOpen()) return failed(41, sourceImage_);
        for (uint64_t done = 0; done < sourceBytes_;) {
            if (progress.IsToStop()) return failed(1);
            const ssize_t got = source.Read(chunk.data(), chunk.size());
            if (got <= 0) break;
            if (!cache.WriteDataToCache(chunk.data(), static_cast<size_t>(got))) return failed(32, "image file");
            done += static_cast<uint64_t>(got);
            progress.SetProgress(static_cast<double>(done) / std::max<uint64_t>(sourceBytes_, 1));
        }
        if (!cache.FlushSectorCache() || !cache.WriteZeroSectors(SectorCount() - cache.NextSector()))
            return failed(32, "image file");
        return result;
    }

    progress.SetProgress(0.05);
    progress.SetStatus(systems_.udf ? "Writing UDF System Information" : "Writing Lead-in/Lead-out", 1);
    if (!cache.WriteDataToCache(system_.Data(), system_.Size()) || !cache.FlushSectorCache() ||
        !cache.WriteDataToCache(directories_.Data(), directories_.Size()) || !cache.FlushSectorCache())
        return failed(32, "image file");
    progress.SetProgress(0.1);

    bool stopped = false;
    bool writeFailed = false;
    const double perSector = 0.9 / SectorCount();
    double fraction = 0.1;
    if (systems_.iso || systems_.udf)
        compilation_.ForEachItem([&](LAbstractBurnFile& item) {
            if (item.folder || stopped || writeFailed) return;
            if (progress.IsToStop()) {
                stopped = true;
                return;
            }
            progress.SetStatus(item.name.c_str(), 1);
            const uint64_t sectors = std::max<uint64_t>(1, (item.size + kSectorSize - 1) / kSectorSize);
            LFile file(_OpenRead(item.sourcePath.c_str(), 0));
            int64_t done = 0;
            if (file.IsOpen()) done = cache.CopyFromFile(file.GetFd(), item.size);
            if (done < 0) {
                writeFailed = true;
                return;
            }
            if (!file.IsOpen() || static_cast<uint64_t>(done) < item.size)
                result.AddInformation(41, item.sourcePath.c_str());
            // A file that shrank or could not be read keeps its sectors, as zeros.
            if (!cache.FlushSectorCache() ||
                !cache.WriteZeroSectors(item.sector + sectors - cache.NextSector())) {
                writeFailed = true;
                return;
            }
            fraction += sectors * perSector;
            progress.SetProgress(fraction);
        });
    if (stopped) return failed(1);
    if (writeFailed) return failed(32, "image file");
    if (!cache.WriteZeroSectors(closingSector_ - cache.NextSector()) ||
        !cache.WriteDataToCache(closing_.Data(), closing_.Size()) || !cache.FlushSectorCache())
        return failed(32, "image file");
    if (!result.Chain().empty() && result.code == 0) result.code = result.Chain().front().code;
    return result;
}
