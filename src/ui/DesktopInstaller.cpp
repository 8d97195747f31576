#include "ui/DesktopInstaller.h"

#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/ProgramInfo.h"
#include "platform/UserFolders.h"
#include "ui/Icons.h"

#include <QByteArray>

namespace {

bool Save(const std::string& path, const QByteArray& data) {
    return SaveFile(path.c_str(), data.constData(), static_cast<std::size_t>(data.size()), 1000);
}

std::string DataHome() {
    char support[kPathBufferSize];
    GetUserApplicationSupportFolder(support);
    return support;
}

} // namespace

std::string LUserDesktopEntryPath() {
    return DataHome() + "/applications/" + kDesktopId + ".desktop";
}

std::string LInstallDesktopEntry(const std::string& program) {
    const std::string support = DataHome();
    const std::string applications = support + "/applications";
    const std::string icons = support + "/icons/hicolor/scalable/apps";
    if (!CreateFolderTree(applications.c_str()) || !CreateFolderTree(icons.c_str()))
        return "The folders for the desktop entry cannot be created.";
    const std::string entry = "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=" + std::string(kProgramName) + "\n"
                              "GenericName=Vinyl and Cassette Recorder\n"
                              "Comment=Record vinyl records and cassettes into audio files and CDs\n"
                              "Exec=\"" + program + "\" %F\n"
                              "Icon=" + kDesktopId + "\n"
                              "Terminal=false\n"
                              "Categories=AudioVideo;Audio;Recorder;DiscBurning;\n"
                              "MimeType=audio/x-wav;audio/wav;audio/vnd.wave;audio/mpeg;audio/mp3;\n";
    if (!Save(icons + "/" + kDesktopId + ".svg", LProgramIconSvg()) ||
        !Save(LUserDesktopEntryPath(), QByteArray::fromStdString(entry)))
        return "The desktop entry cannot be written.";
    return {};
}
