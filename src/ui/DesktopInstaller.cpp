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

} // namespace

std::string LInstallDesktopEntry(const std::string& program) {
    char support[kPathBufferSize];
    GetUserApplicationSupportFolder(support);
    const std::string applications = std::string(support) + "/applications";
    const std::string icons = std::string(support) + "/icons/hicolor/scalable/apps";
    if (!CreateFolderTree(applications.c_str()) || !CreateFolderTree(icons.c_str()))
        return "The folders for the desktop entry cannot be created.";
    const std::string entry = "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=" + std::string(kProgramName) + "\n"
                              "GenericName=Vinyl and Cassette Recorder\n"
                              "Comment=Record vinyl records and cassettes into audio files and CDs\n"
                              "Exec=\"" + program + "\" %F\n"
                              "Icon=vinora\n"
                              "Terminal=false\n"
                              "Categories=AudioVideo;Audio;Recorder;DiscBurning;\n"
                              "MimeType=audio/x-wav;audio/wav;audio/vnd.wave;audio/mpeg;audio/mp3;\n";
    if (!Save(icons + "/vinora.svg", LProgramIconSvg()) ||
        !Save(applications + "/vinora.desktop", QByteArray::fromStdString(entry)))
        return "The desktop entry cannot be written.";
    return {};
}
