#pragma once

#include "jobs/UserInteraction.h"

#include <functional>

class QSystemTrayIcon;
class QWidget;

// Message boxes, choosers, tips, notices and "show folder" as Qt dialogs and desktop
// services. Callable from any thread: a call from another thread is handed to the GUI thread
// and the caller waits for the answer.
class LQtUserInteraction : public LUserInteraction {
public:
    // Dialogs open above the window `parent` returns (the active window when it returns
    // nullptr). Dock notices go to `tray` when the desktop has a tray, else to the
    // desktop's notification service, else to the log.
    void SetParentWindow(std::function<QWidget*()> parent) { parent_ = std::move(parent); }
    void SetTrayIcon(QSystemTrayIcon* tray) { tray_ = tray; }

    LMessageAnswer ShowMessage(const std::string& caption, const std::string& text,
                               LMessageButtons buttons) override;
    std::vector<std::string> ChooseOpenFiles(const LFileRequest& request, bool multiple) override;
    std::string ChooseSaveFile(const LFileRequest& request) override;
    std::string ChooseFolder(const std::string& prompt, const std::string& folder) override;
    void ShowTip(const std::string& title, const std::string& text) override;
    void ShowDockNotice(const std::string& text) override;
    void RevealFolder(const std::string& folder) override;
    bool ShowWarningWithCheck(const std::string& caption, const std::string& text,
                              const std::string& check) override;

private:
    QWidget* Parent() const;

    std::function<QWidget*()> parent_;
    QSystemTrayIcon* tray_ = nullptr;
};
