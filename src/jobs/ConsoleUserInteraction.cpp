#include "jobs/ConsoleUserInteraction.h"

#include <cstdio>

LMessageAnswer LConsoleUserInteraction::ShowMessage(const std::string& caption,
                                                    const std::string& text,
                                                    LMessageButtons buttons) {
    std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    switch (buttons) {
    case LMessageButtons::Ok:
        return LMessageAnswer::Ok;
    case LMessageButtons::YesNo:
        return LMessageAnswer::No;
    case LMessageButtons::OkCancel:
    case LMessageButtons::YesNoCancel:
    case LMessageButtons::ViewCancel:
        break;
    }
    return LMessageAnswer::Cancel;
}

std::vector<std::string> LConsoleUserInteraction::ChooseOpenFiles(const LFileRequest&, bool) {
    return {};
}

std::string LConsoleUserInteraction::ChooseSaveFile(const LFileRequest&) {
    return {};
}

std::string LConsoleUserInteraction::ChooseFolder(const std::string&, const std::string&) {
    return {};
}

void LConsoleUserInteraction::ShowTip(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "%s: %s\n", title.c_str(), text.c_str());
}

void LConsoleUserInteraction::ShowDockNotice(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
}

void LConsoleUserInteraction::RevealFolder(const std::string& folder) {
    std::fprintf(stderr, "%s\n", folder.c_str());
}
