#pragma once

#include "burn/BurnErrorCode.h"
#include "burn/BurnMediaTypes.h"
#include "disc/BufferVector.h"
#include "disc/Compilation.h"
#include "disc/ISOJolietFileSystem.h"
#include "disc/UDFFileSystem.h"
#include "jobs/SignalObject.h"
#include "jobs/Thread.h"

#include <ctime>
#include <set>
#include <string>

// Which file systems a project gets.
struct LProjectFileSystems {
    bool iso = false;
    bool joliet = false;
    bool udf = false;
};
LProjectFileSystems GetProjectFileSystems(int project);

// A failed write of the image file at `path` with the system's error number: error 37 (not
// enough free space) for a full disk or a file size limit, else 32, with the path and the
// system's reason as the detail.
BurnErrorCode LImageWriteError(const std::string& path, int error);

class WriteSectorCache;
class LSectorTarget;

// Lays out a data disc image of a compilation on its own thread: the system area (boot image,
// volume descriptors, UDF sequences, path tables), the directory areas of the ISO 9660, Joliet
// and UDF trees, the place of every file's data, and the closing anchor; then streams the image
// sector by sector, reading each file when its sectors come.
class LHybridDataDisk : public LThread {
public:
    // The priority of the build: the lowest, so recording and playing never wait for it.
    static constexpr int kBuildPriority = 0;

    // `sourceImage` non-empty: the image is that existing file instead. `bootImage` non-empty:
    // its first 32768 bytes fill sectors 0 to 15.
    LHybridDataDisk(LAbstractFileSystem& compilation, int project, int media,
                    std::string sourceImage = {}, std::string bootImage = {});
    ~LHybridDataDisk() override;

    // Builds the areas on the calling thread; false with Error() set.
    bool Build();
    // Set when the thread's build has ended.
    LSignalObject& Done() { return done_; }
    const BurnErrorCode& Error() const { return error_; }

    // The image's sectors: the last one and the count.
    uint32_t LastSector() const { return lastSector_; }
    uint32_t SectorCount() const { return lastSector_ + 1; }
    const LProjectFileSystems& FileSystems() const { return systems_; }

    // Sectors per run to a disc: 32 on Blu-ray, else 16.
    uint32_t SectorsPerWrite() const;

    // Writes the whole image into the open file `fd` (named `outputPath` in messages); the
    // error of the write: 1 when stopped; 41 with the path of each source file that could not
    // be read, its sectors written as zeros; 37 or 32 for a failed write (LImageWriteError);
    // 5 for a source image that could not be read or changed size. The build must have ended
    // without error.
    BurnErrorCode BurnCompilation(LProcessInterface& progress, int fd,
                                  const std::string& outputPath);
    // The same through a target: a disc being written (errors of the drive as well), or a disc
    // read back and compared. Verifying, the first run that differs ends it with error 30 and
    // the information "Error verifying file %s sectors %d to %d"; the sectors of a file that
    // could not be read when it was written, or cannot be read now, are not judged.
    BurnErrorCode BurnCompilation(LProcessInterface& progress, LSectorTarget& target);

protected:
    void ThreadFunction() override;

private:
    bool Fail(BurnErrorCodeValue code, const std::string& detail);
    bool BuildFileSystems(std::time_t now);
    BurnErrorCode BurnCompilation(LProcessInterface& progress, WriteSectorCache& cache);
    // The files' contents in the compilation's order, each padded to its sectors.
    BurnErrorCode ProcessWriteFilesToDisk(LProcessInterface& progress, WriteSectorCache& cache);
    // The existing image file, padded with zero sectors to the image's end.
    BurnErrorCode WriteISOImageSectors(LProcessInterface& progress, WriteSectorCache& cache);
    // The error of a run that failed, or of data that ran past the sectors laid out for it.
    BurnErrorCode RunFailed(const WriteSectorCache& cache) const;

    LAbstractFileSystem& compilation_;
    int media_;
    std::string sourceImage_;
    std::string bootImage_;
    LProjectFileSystems systems_;
    LISOJolietFileSystem iso_{false};
    LISOJolietFileSystem joliet_{true};
    std::unique_ptr<LUDFFileSystem> udf_;
    LBufferVector system_{526336};
    LBufferVector directories_{2048000};
    LBufferVector closing_{kSectorSize};
    uint32_t directoryStart_ = 0;
    uint32_t fileStart_ = 0;
    uint32_t closingSector_ = 0;
    uint32_t lastSector_ = 0;
    uint64_t sourceBytes_ = 0;
    BurnErrorCode error_;
    LSignalObject done_;
    // The files that could not be read while the image was written.
    std::set<const LAbstractBurnFile*> unreadable_;
};
