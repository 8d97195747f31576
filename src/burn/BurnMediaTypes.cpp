#include "burn/BurnMediaTypes.h"

#include <cstring>
#include <iterator>

namespace {

constexpr const char* kMediaNames[] = {
    "CD-R",     "CD-RW",      "CD-ROM or burnt CD-R", "DVD-R",   "DVD-RW",   "DVD_R DL",
    "DVD+R",    "DVD+R DL",   "DVD+RW",               "DVD_RW DL", "DVD-RAM", "DVD-ROM",
    "HD-DVD-ROM", "HD-DVD-R", "HD-DVD-RAM",           "BD-ROM",  "BD-R",     "BD-RE",
    "Image File", "No Disk",
};

struct ProjectInfo {
    const char* name;
    int category;
};

constexpr ProjectInfo kProjects[] = {
    {"Audio CD", 0},      {"Video DVD", 1},     {"ISO CD", 0},         {"ISO CD", 0},
    {"UDF CD", 0},        {"Hybrid CD", 0},     {"ISO+Joliet DVD", 1}, {"ISO DVD", 1},
    {"UDF DVD", 1},       {"Hybrid DVD", 1},    {"ISO HD DVD", 2},     {"UDF HD DVD", 2},
    {"Hybrid HD DVD", 2}, {"ISO Blu-ray", 3},   {"UDF Blu-ray", 3},    {"Hybrid Blu-ray", 3},
    {"ISO Disk", 0},      {"UDF Disk", 0},      {"hybrid Disk", 0},
};

const char* Copy(const char* text, char* out) {
    std::strcpy(out, text);
    return out;
}

} // namespace

const char* GetMediaTypeString(int media, char* out) {
    if (media < 0 || media >= static_cast<int>(std::size(kMediaNames))) return Copy("", out);
    return Copy(kMediaNames[media], out);
}

const char* GetProjectTypeString(int project, char* out) {
    if (project < 0 || project >= static_cast<int>(std::size(kProjects))) return Copy("", out);
    return Copy(kProjects[project].name, out);
}

int GetProjectMediaCategory(int project) {
    if (project < 0 || project >= static_cast<int>(std::size(kProjects))) return 0;
    return kProjects[project].category;
}

bool IsMediaMatchProject(int media, int project) {
    if (project >= PROJECT_ISO_DISK && project <= PROJECT_HYBRID_DISK) return media != MEDIA_NO_DISK;
    switch (GetProjectMediaCategory(project)) {
    case 1:
        return media >= MEDIA_DVDMR && media <= MEDIA_DVDPRW_DL;
    case 2:
        return media == MEDIA_HDDVDR || media == MEDIA_HDDVDRAM;
    case 3:
        return media == MEDIA_BDR || media == MEDIA_BDRE;
    default:
        return media == MEDIA_CDR || media == MEDIA_CDRW;
    }
}
