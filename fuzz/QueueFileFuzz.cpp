// Feeds arbitrary bytes to the processing queue's file handling: the header check at start-up
// and the requests of a list that is discarded, the head request as the queue thread takes it,
// its removal, and the output paths each request names.
#include "FuzzFile.h"

#include "app/ProcessListThread.h"
#include "platform/Paths.h"
#include "restore/ConvertJob.h"

#include <cstring>

namespace {

void ExerciseRequest(const uint8_t* bytes) {
    LProcessConvert request;
    std::memcpy(&request, bytes, sizeof request);
    LTerminateRequestStrings(request);
    char destination[kPathBufferSize], partial[kPathBufferSize];
    LGetRequestDestination(destination, request);
    LGetPartialOutputPath(partial, destination);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kRecord = sizeof(LProcessConvert);
    std::string path = FuzzFilePath(data, size);
    if (path.empty())
        return 0;
    ProcessListFile::Resume(path.c_str(), kRecord, [](const std::vector<uint8_t>& records) {
        for (size_t at = 0; at + kRecord <= records.size(); at += kRecord)
            ExerciseRequest(records.data() + at);
    });

    // Resuming rewrote the header; the queue thread reads the list as it was.
    path = FuzzFilePath(data, size);
    uint8_t head[kRecord];
    if (ProcessListFile::ReadHead(path.c_str(), head, kRecord) == kRecord)
        ExerciseRequest(head);
    ProcessListFile::DropHead(path.c_str(), kRecord);
    return 0;
}
