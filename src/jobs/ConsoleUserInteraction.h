#pragma once

#include "jobs/UserInteraction.h"

// User interaction for a process without windows: texts go to stderr, questions get their
// cautious answer (Cancel, or No where there is no Cancel) and choosers are cancelled.
class LConsoleUserInteraction : public LUserInteraction {
public:
    LMessageAnswer ShowMessage(const std::string& caption, const std::string& text,
                               LMessageButtons buttons) override;
    std::vector<std::string> ChooseOpenFiles(const LFileRequest& request, bool multiple) override;
    std::string ChooseSaveFile(const LFileRequest& request) override;
    std::string ChooseFolder(const std::string& prompt, const std::string& folder) override;
    void ShowTip(const std::string& title, const std::string& text) override;
    void ShowDockNotice(const std::string& text) override;
    void RevealFolder(const std::string& folder) override;
};
