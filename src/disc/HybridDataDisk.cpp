#include "disc/HybridDataDisk.h"

#include "disc/FileReadAhead.h"
#include "disc/ISONames.h"
#include "disc/ImageClock.h"
#include "disc/SectorTargets.h"
#include "disc/WriteSectorCache.h"
#include "platform/File.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uint32_t kFirstDescriptor = 16;
constexpr uint32_t kUDFPathTables = 70;
constexpr uint32_t kUDFAnchor = 256;
constexpr uint32_t kUDFDirectories = 257;
constexpr size_t kBootBytes = 32768;
constexpr BurnErrorCodeValue kStopped = 1;
// Files are copied in slices of this size, between which a stop request and the progress are
// looked at.
constexpr uint64_t kCopySliceBytes = 64ull << 20;
// Image files are written in runs of 1 MiB; drives take runs of 16 or 32 sectors.
constexpr size_t kImageRunSectors = 512;
// The ring the files are read into ahead of a drive: 8 MiB in all.
constexpr size_t kReadAheadBytes = 1 << 20;
constexpr size_t kReadAheadBuffers = 8;

// Where the progress of one file's copy goes: the job, the progress at the file's first
// sector, and the progress of a sector.
struct FileProgress {
    LProcessInterface& job;
    double start;
    double perSector;

    void Copied(uint64_t bytes) const {
        job.SetProgress(start + static_cast<double>(bytes / kSectorSize) * perSector);
    }
};

// How the copy of a file's bytes into the cache ended: the bytes taken, whether they were all
// its bytes, a run that failed, or a stop request.
struct FileCopy {
    uint64_t done = 0;
    bool readable = false;
    bool failed = false;
    bool stopped = false;
};

// The next file's pieces from the ring, with a look at the stop request after each.
FileCopy CopyReadAhead(LFileReadAhead& ahead, WriteSectorCache& cache, const FileProgress& at) {
    FileCopy copy;
    LFileReadAhead::Piece piece;
    while (ahead.Next(piece)) {
        if (piece.size > 0 && !cache.WriteDataToCache(piece.data, piece.size)) {
            copy.failed = true;
            return copy;
        }
        copy.done += piece.size;
        if (piece.last) {
            copy.readable = piece.complete;
            return copy;
        }
        at.Copied(copy.done);
        if (at.job.IsToStop()) {
            copy.stopped = true;
            return copy;
        }
    }
    return copy;
}

// The file at `path`, `size` bytes of it, copied in slices (by the kernel where it can) with a
// look at the stop request and the progress after each.
FileCopy CopyInSlices(const std::string& path, uint64_t size, WriteSectorCache& cache,
                      const FileProgress& at) {
    FileCopy copy;
    LFile file(_OpenRead(path.c_str(), 0));
    while (file.IsOpen() && copy.done < size) {
        const uint64_t want = std::min(kCopySliceBytes, size - copy.done);
        const int64_t copied = cache.CopyFromFile(file.GetFd(), copy.done, want);
        if (copied < 0) {
            copy.failed = true;
            return copy;
        }
        copy.done += static_cast<uint64_t>(copied);
        at.Copied(copy.done);
        if (static_cast<uint64_t>(copied) < want) break;
        if (copy.done < size && at.job.IsToStop()) {
            copy.stopped = true;
            return copy;
        }
    }
    copy.readable = file.IsOpen() && copy.done >= size;
    return copy;
}

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

BurnErrorCode LImageWriteError(const std::string& path, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return BurnErrorCode(full ? 37 : 32, (path + ": " + std::strerror(error)).c_str());
}

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
    : compilation_(compilation), media_(media),
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
    return BuildFileSystems(LImageClockNow());
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

BurnErrorCode LHybridDataDisk::BurnCompilation(LProcessInterface& progress, int fd,
                                               const std::string& outputPath) {
    LImageFileTarget target(fd, outputPath);
    WriteSectorCache cache(target, kImageRunSectors);
    return BurnCompilation(progress, cache);
}

BurnErrorCode LHybridDataDisk::BurnCompilation(LProcessInterface& progress, LSectorTarget& target) {
    WriteSectorCache cache(target, SectorsPerWrite());
    return BurnCompilation(progress, cache);
}

uint32_t LHybridDataDisk::SectorsPerWrite() const {
    return Unit(media_);
}

BurnErrorCode LHybridDataDisk::RunFailed(const WriteSectorCache& cache) const {
    if (cache.Error().code == 0) return BurnErrorCode(5, "the data ran past its sectors");
    return cache.Error();
}

BurnErrorCode LHybridDataDisk::BurnCompilation(LProcessInterface& progress, WriteSectorCache& cache) {
    if (!sourceImage_.empty()) return WriteISOImageSectors(progress, cache);

    progress.SetProgress(0.05);
    if (!cache.Verifies())
        progress.SetStatus(systems_.udf ? "Writing UDF System Information" : "Writing Lead-in/Lead-out", 1);
    if (!cache.WriteDataToCache(system_.Data(), system_.Size()) || !cache.FlushSectorCache() ||
        !cache.WriteDataToCache(directories_.Data(), directories_.Size()) || !cache.FlushSectorCache())
        return RunFailed(cache);
    progress.SetProgress(0.1);

    BurnErrorCode result = ProcessWriteFilesToDisk(progress, cache);
    if (result.code != 0 && result.code != 41) return result;
    if (!cache.PadToSector(closingSector_) ||
        !cache.WriteDataToCache(closing_.Data(), closing_.Size()) || !cache.FlushSectorCache())
        return RunFailed(cache);
    return result;
}

BurnErrorCode LHybridDataDisk::ProcessWriteFilesToDisk(LProcessInterface& progress,
                                                       WriteSectorCache& cache) {
    const bool verifying = cache.Verifies();
    if (!verifying) unreadable_.clear();
    BurnErrorCode result;
    if (!systems_.iso && !systems_.udf) return result;
    // The files in the image's order; those unreadable when written are not read again.
    std::vector<LAbstractBurnFile*> files;
    std::vector<LFileReadAhead::Source> sources;
    compilation_.ForEachItem([&](LAbstractBurnFile& item) {
        if (item.folder) return;
        files.push_back(&item);
        if (!verifying || !unreadable_.contains(&item))
            sources.push_back({item.sourcePath, item.size});
    });
    // A drive is fed from a ring the files are read into ahead of it; an image file gets them
    // copied by the kernel.
    std::optional<LFileReadAhead> ahead;
    if (!cache.CopiesInKernel())
        ahead.emplace(std::move(sources), kReadAheadBytes, kReadAheadBuffers);
    const double perSector = 0.9 / SectorCount();
    for (LAbstractBurnFile* file : files) {
        const LAbstractBurnFile& item = *file;
        if (progress.IsToStop()) return BurnErrorCode(kStopped);
        progress.SetStatus(item.name.c_str(), 1);
        const uint64_t sectors = std::max<uint64_t>(1, (item.size + kSectorSize - 1) / kSectorSize);
        const uint64_t end = item.sector + sectors;
        // A file that could not be read when it was written holds zeros on the disc: whatever
        // it holds now, its sectors are not judged.
        if (verifying && unreadable_.contains(&item)) {
            if (!cache.SkipToSector(end)) return RunFailed(cache);
            continue;
        }
        const double start = 0.1 + static_cast<double>(item.sector - fileStart_) * perSector;
        const FileProgress at{progress, start, perSector};
        const FileCopy copy = ahead ? CopyReadAhead(*ahead, cache, at)
                                    : CopyInSlices(item.sourcePath, item.size, cache, at);
        if (copy.stopped) return BurnErrorCode(kStopped);
        if (!copy.failed && !copy.readable) {
            result.AddInformation(41, item.sourcePath.c_str());
            if (result.code == 0) result.code = 41;
            if (!verifying) unreadable_.insert(&item);
        }
        // A file that shrank or could not be read keeps its sectors, as zeros.
        bool failed = copy.failed;
        if (!failed && verifying && !copy.readable) failed = !cache.SkipToSector(end);
        else if (!failed) failed = !cache.PadToSector(end);
        if (!failed) continue;
        const BurnErrorCode error = RunFailed(cache);
        if (error.code != 30) return error;
        char text[BurnErrorCodeData::kTextSize];
        std::snprintf(text, sizeof text, "Error verifying file %s sectors %d to %d",
                      item.sourcePath.c_str(), static_cast<int>(cache.FailedFirst()),
                      static_cast<int>(cache.FailedLast()));
        result = error;
        result.AddInformation(30, text);
        return result;
    }
    return result;
}

BurnErrorCode LHybridDataDisk::WriteISOImageSectors(LProcessInterface& progress,
                                                    WriteSectorCache& cache) {
    const auto sourceFailed = [this](const std::string& reason) {
        return BurnErrorCode(5, (sourceImage_ + ": " + reason).c_str());
    };
    LFile source(_OpenRead(sourceImage_.c_str(), 1000));
    if (!source.IsOpen()) return sourceFailed(std::strerror(errno));
    // Read ahead of the writes like the files of a compilation; the open file above keeps
    // the error of a failed opening and tells whether the image changed size meanwhile.
    if (progress.IsToStop()) return BurnErrorCode(kStopped);
    LFileReadAhead ahead({{sourceImage_, sourceBytes_}}, kReadAheadBytes, kReadAheadBuffers);
    const double perSector =
        static_cast<double>(kSectorSize) / static_cast<double>(std::max<uint64_t>(sourceBytes_, 1));
    const FileCopy copy = CopyReadAhead(ahead, cache, {progress, 0, perSector});
    if (copy.stopped) return BurnErrorCode(kStopped);
    if (copy.failed) return RunFailed(cache);
    if (!copy.readable) return sourceFailed("the file became shorter while it was copied");
    struct stat info {};
    if (fstat(source.GetFd(), &info) != 0 || static_cast<uint64_t>(info.st_size) != sourceBytes_)
        return sourceFailed("the file changed size while it was copied");
    if (!cache.PadToSector(SectorCount())) return RunFailed(cache);
    return {};
}
