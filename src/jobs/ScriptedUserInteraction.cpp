#include "jobs/ScriptedUserInteraction.h"

void LScriptedUserInteraction::QueueAnswer(LMessageAnswer answer) {
    std::lock_guard guard(mutex_);
    answers_.push_back(answer);
}

void LScriptedUserInteraction::SetDefaultAnswer(LMessageAnswer answer) {
    std::lock_guard guard(mutex_);
    defaultAnswer_ = answer;
}

void LScriptedUserInteraction::QueuePaths(std::vector<std::string> paths) {
    std::lock_guard guard(mutex_);
    paths_.push_back(std::move(paths));
}

std::vector<LInteractionCall> LScriptedUserInteraction::Calls() const {
    std::lock_guard guard(mutex_);
    return calls_;
}

void LScriptedUserInteraction::ClearCalls() {
    std::lock_guard guard(mutex_);
    calls_.clear();
}

void LScriptedUserInteraction::Record(LInteractionKind kind, const std::string& caption,
                                      const std::string& text, LMessageButtons buttons) {
    std::lock_guard guard(mutex_);
    calls_.push_back({kind, caption, text, buttons});
}

std::vector<std::string> LScriptedUserInteraction::NextPaths() {
    std::lock_guard guard(mutex_);
    if (paths_.empty()) return {};
    std::vector<std::string> paths = std::move(paths_.front());
    paths_.pop_front();
    return paths;
}

LMessageAnswer LScriptedUserInteraction::ShowMessage(const std::string& caption,
                                                     const std::string& text,
                                                     LMessageButtons buttons) {
    Record(LInteractionKind::Message, caption, text, buttons);
    std::lock_guard guard(mutex_);
    if (!answers_.empty()) {
        const LMessageAnswer answer = answers_.front();
        answers_.pop_front();
        return answer;
    }
    if (defaultAnswer_) return *defaultAnswer_;
    const bool yesNo = buttons == LMessageButtons::YesNo || buttons == LMessageButtons::YesNoCancel;
    return yesNo ? LMessageAnswer::Yes : LMessageAnswer::Ok;
}

std::vector<std::string> LScriptedUserInteraction::ChooseOpenFiles(const LFileRequest& request,
                                                                   bool multiple) {
    Record(LInteractionKind::OpenFiles, request.title, request.folder);
    std::vector<std::string> paths = NextPaths();
    if (!multiple && paths.size() > 1) paths.resize(1);
    return paths;
}

std::string LScriptedUserInteraction::ChooseSaveFile(const LFileRequest& request) {
    Record(LInteractionKind::SaveFile, request.title, request.folder);
    std::vector<std::string> paths = NextPaths();
    return paths.empty() ? std::string() : paths.front();
}

std::string LScriptedUserInteraction::ChooseFolder(const std::string& prompt,
                                                   const std::string& folder) {
    Record(LInteractionKind::Folder, prompt, folder);
    std::vector<std::string> paths = NextPaths();
    return paths.empty() ? std::string() : paths.front();
}

void LScriptedUserInteraction::ShowTip(const std::string& title, const std::string& text) {
    Record(LInteractionKind::Tip, title, text);
}

void LScriptedUserInteraction::ShowDockNotice(const std::string& text) {
    Record(LInteractionKind::DockNotice, {}, text);
}

void LScriptedUserInteraction::RevealFolder(const std::string& folder) {
    Record(LInteractionKind::RevealFolder, {}, folder);
}

bool LScriptedUserInteraction::ShowWarningWithCheck(const std::string& caption,
                                                    const std::string& text, const std::string&) {
    return ShowMessage(caption, text, LMessageButtons::Ok) == LMessageAnswer::Yes;
}
