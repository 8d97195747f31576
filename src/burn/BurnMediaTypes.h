#pragma once

// What is in the drive.
enum LBurnMediaTypes : int {
    MEDIA_CDR = 0,
    MEDIA_CDRW = 1,
    MEDIA_CDROM = 2,
    MEDIA_DVDMR = 3,
    MEDIA_DVDMRW = 4,
    MEDIA_DVDMR_DL = 5,
    MEDIA_DVDPR = 6,
    MEDIA_DVDPR_DL = 7,
    MEDIA_DVDPRW = 8,
    MEDIA_DVDPRW_DL = 9,
    MEDIA_DVDRAM = 10,
    MEDIA_DVDROM = 11,
    MEDIA_HDDVDROM = 12,
    MEDIA_HDDVDR = 13,
    MEDIA_HDDVDRAM = 14,
    MEDIA_BDROM = 15,
    MEDIA_BDR = 16,
    MEDIA_BDRE = 17,
    MEDIA_IMAGE_FILE = 18,
    MEDIA_NO_DISK = 19,
};

// What is being made. 16 to 18 are for any kind of disc: the media decides.
enum LBurnProjectType : int {
    PROJECT_AUDIO_CD = 0,
    PROJECT_VIDEO_DVD = 1,
    PROJECT_ISO_JOLIET_CD = 2,
    PROJECT_ISO_CD = 3,
    PROJECT_UDF_CD = 4,
    PROJECT_HYBRID_CD = 5,
    PROJECT_ISO_JOLIET_DVD = 6,
    PROJECT_ISO_DVD = 7,
    PROJECT_UDF_DVD = 8,
    PROJECT_HYBRID_DVD = 9,
    PROJECT_ISO_HDDVD = 10,
    PROJECT_UDF_HDDVD = 11,
    PROJECT_HYBRID_HDDVD = 12,
    PROJECT_ISO_BLURAY = 13,
    PROJECT_UDF_BLURAY = 14,
    PROJECT_HYBRID_BLURAY = 15,
    PROJECT_ISO_DISK = 16,
    PROJECT_UDF_DISK = 17,
    PROJECT_HYBRID_DISK = 18,
};

// The display strings copy into `out` (at least 32 bytes) and return it; "" for an unknown value.
const char* GetMediaTypeString(int media, char* out);
const char* GetProjectTypeString(int project, char* out);
// 0 CD, 1 DVD, 2 HD DVD, 3 Blu-ray; 0 for an unknown value.
int GetProjectMediaCategory(int project);
// Whether the loaded media can take the project.
bool IsMediaMatchProject(int media, int project);
