// Feeds arbitrary bytes to the decoders of drive replies and sense data. The first byte chooses
// the decoder; the rest is the reply as the drive sent it.
#include "disc/SCSIRecords.h"
#include "disc/SCSISense.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t choice = data[0];
    const uint8_t* reply = data + 1;
    const size_t length = size - 1;
    switch (choice % 16) {
    case 0: {
        ATIPInfo atip;
        DecodeATIPInfo(reply, length, atip);
        atip.leadInStart.IsSet();
        return 0;
    }
    case 1: {
        DiskInformation info;
        DecodeDiskInformation(reply, length, info);
        info.LeadOutMSF();
        return 0;
    }
    case 2: {
        TrackInformation track;
        DecodeTrackInformation(reply, length, track);
        return 0;
    }
    case 3: {
        DVDPhysicalFormat format;
        DecodeDVDPhysicalFormat(reply, length, format);
        return 0;
    }
    case 4: {
        DriveFeatureHeader header;
        DecodeFeatureHeader(reply, length, header);
        DecodeCurrentProfile(reply, length);
        return 0;
    }
    case 5: {
        // The feature code to look for comes from the input too.
        if (length < 2)
            return 0;
        LFeatureDescriptor feature;
        // The descriptor must lie within the reply: the sanitizer checks its last byte.
        if (FindFeature(reply + 2, length - 2, uint16_t(reply[0] << 8 | reply[1]), feature) &&
            feature.size > 0 && feature.data[feature.size - 1] == 0xA5)
            return 0;
        return 0;
    }
    case 6: {
        WriteParamModePage page;
        DecodeWriteParamModePage(reply, length, page);
        uint8_t encoded[WriteParamModePage::kSize];
        page.Encode(encoded);
        return 0;
    }
    case 7: {
        LFormatCapacities capacities;
        DecodeFormatCapacities(reply, length, capacities);
        return 0;
    }
    case 8:
    case 9: {
        LWriteSpeeds speeds;
        DecodeWriteSpeeds(reply, length, choice % 16 == 8, speeds);
        return 0;
    }
    case 10: {
        DriveCapabilities capabilities;
        DecodeCapabilitiesPage(reply, length, capabilities);
        return 0;
    }
    case 11:
        DecodeChangerState(reply, length);
        DecodeReadCapacity(reply, length);
        return 0;
    case 12:
        DecodeISOVolumeSize(reply, length);
        DecodeUDFIntegritySize(reply, length);
        return 0;
    case 13:
        DecodeInquiryName(reply, length);
        return 0;
    default: {
        uint8_t fixed[kSCSISenseSize];
        LSCSIToFixedSense(reply, length, fixed);
        double fraction = 0;
        LSCSISenseProgress(fixed, fraction);
        LSCSISenseText(LSCSISenseBytes(fixed));
        return 0;
    }
    }
}
