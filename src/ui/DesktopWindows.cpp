#include "ui/DesktopWindows.h"

#include "ui/MainWindow.h"
#include "ui/PlayAndSplitWindow.h"
#include "ui/PreferencesDialog.h"
#include "ui/RecordingWindow.h"
#include "ui/SetupWizardDialog.h"
#include "ui/TagEditorDialogs.h"

LMainDialogWindows LDesktopWindows(LMainWindow* const* shown) {
    LMainDialogWindows windows;
    windows.recordingWindow = [shown] {
        LRecordingWindow recording((*shown)->Dialog(), *shown);
        recording.exec();
    };
    const auto toMainWindow = [shown](int message, int value) {
        (*shown)->Dialog().Post(message, {}, value);
    };
    windows.wizard = [shown, toMainWindow] {
        LSetupWizardDialog wizard(
            *shown, [shown] { (*shown)->Dialog().Post(WM_OPEN_RECORDING_WINDOW); }, toMainWindow);
        wizard.exec();
    };
    windows.burnWizard = [shown, toMainWindow](const char* mode) {
        LSetupWizardDialog wizard(*shown, {}, toMainWindow, mode);
        wizard.exec();
    };
    windows.preferences = [shown] {
        MainDialog& dialog = (*shown)->Dialog();
        LPreferencesDialog preferences(*shown, GetVNOutputFolder(),
                                       [&dialog](const std::string& folder) {
                                           bool changed = false;
                                           if (!SetVNOutputFolder(folder.c_str(), &changed))
                                               return false;
                                           if (changed) dialog.Post(WM_RELOAD_LIST);
                                           return true;
                                       });
        preferences.exec();
    };
    windows.playAndSplit = [shown](const std::string& path) {
        MainDialog& dialog = (*shown)->Dialog();
        return VNPlay(
            *shown, path,
            [&dialog](const std::string& file, const std::vector<int>& positions) {
                dialog.SplitFile(file, positions);
            },
            [&dialog] { dialog.Post(WM_RELOAD_LIST); });
    };
    windows.editTag = [shown](LAudioTagData& tags, const std::string& path) {
        return LEditTagsOfFile(*shown, tags, path);
    };
    windows.editTagList = [shown](LAudioTagData& tags) { return LEditTagsOfFiles(*shown, tags); };
    return windows;
}
