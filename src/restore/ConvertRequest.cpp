#include "restore/ConvertJob.h"

#include "platform/Paths.h"

#include <cstdio>

void LTerminateRequestStrings(LProcessConvert& request) {
    for (char* field : {request.sourcePath, request.outputFolder, request.outputExtension,
                        request.destinationPath, request.reserved, request.lengthText,
                        request.copyFolder})
        field[kPathBufferSize - 1] = 0;
}

void LGetRequestDestination(char* out, const LProcessConvert& request) {
    if (request.destinationPath[0]) {
        std::snprintf(out, kPathBufferSize, "%s", request.destinationPath);
        return;
    }
    char name[kPathBufferSize];
    _GetFileNameFromPath(name, request.sourcePath);
    _MakeFilePath(out, request.outputFolder, name, request.outputExtension);
}
