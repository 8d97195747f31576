#include "disc/SCSICommands.h"

BurnErrorCode LSCSIError(BurnErrorCodeValue code, const LSCSI& device, const char* text) {
    return BurnErrorCode(code, text, device.GetSense());
}

BurnErrorCode LSCSIResultError(int result, const LSCSI& device, const char* text) {
    return result == PROCESS_STOPPED ? BurnErrorCode(kSCSIStopped) : LSCSIError(46, device, text);
}
