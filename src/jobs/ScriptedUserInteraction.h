#pragma once

#include "jobs/UserInteraction.h"

#include <deque>
#include <mutex>
#include <optional>

enum class LInteractionKind { Message, OpenFiles, SaveFile, Folder, Tip, DockNotice, RevealFolder };

// One request made of an LScriptedUserInteraction.
struct LInteractionCall {
    LInteractionKind kind;
    // Message box caption, chooser title or folder prompt, tip title; empty otherwise.
    std::string caption;
    // Message box or tip text, the chooser's start folder, the notice, the revealed folder.
    std::string text;
    // Message boxes only.
    LMessageButtons buttons = LMessageButtons::Ok;
};

// User interaction for tests: records every request and answers from a script.
class LScriptedUserInteraction : public LUserInteraction {
public:
    // Answers for the next message boxes, oldest first.
    void QueueAnswer(LMessageAnswer answer);
    // The answer once the queued ones are used up; without it, the first button (OK or Yes).
    void SetDefaultAnswer(LMessageAnswer answer);
    // Results for the next choosers, oldest first: open choosers return the whole list, save and
    // folder choosers its first path; an empty list is a cancel. Choosers cancel when none is left.
    void QueuePaths(std::vector<std::string> paths);

    std::vector<LInteractionCall> Calls() const;
    void ClearCalls();

    LMessageAnswer ShowMessage(const std::string& caption, const std::string& text,
                               LMessageButtons buttons) override;
    std::vector<std::string> ChooseOpenFiles(const LFileRequest& request, bool multiple) override;
    std::string ChooseSaveFile(const LFileRequest& request) override;
    std::string ChooseFolder(const std::string& prompt, const std::string& folder) override;
    void ShowTip(const std::string& title, const std::string& text) override;
    void ShowDockNotice(const std::string& text) override;
    void RevealFolder(const std::string& folder) override;
    // Recorded as a message box; an answer of Yes ticks the box.
    bool ShowWarningWithCheck(const std::string& caption, const std::string& text,
                              const std::string& check) override;

private:
    void Record(LInteractionKind kind, const std::string& caption, const std::string& text,
                LMessageButtons buttons = LMessageButtons::Ok);
    std::vector<std::string> NextPaths();

    mutable std::mutex mutex_;
    std::vector<LInteractionCall> calls_;
    std::deque<LMessageAnswer> answers_;
    std::optional<LMessageAnswer> defaultAnswer_;
    std::deque<std::vector<std::string>> paths_;
};
