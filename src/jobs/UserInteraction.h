#pragma once

#include <string>
#include <vector>

// Which buttons a message box offers. ViewCancel is OkCancel with OK labelled "View".
enum class LMessageButtons { Ok, OkCancel, YesNo, YesNoCancel, ViewCancel };
// The button that closed a message box.
enum class LMessageAnswer { Ok, Cancel, Yes, No };

// One entry of a file chooser's type list, e.g. {"Audio Files", {"*.wav", "*.mp3"}}.
struct LFileFilter {
    std::string name;
    std::vector<std::string> patterns;
};

// What a file chooser starts with.
struct LFileRequest {
    std::string title;
    std::string folder;   // where it opens; empty: wherever the chooser likes
    std::string fileName; // the suggested name (save choosers)
    std::vector<LFileFilter> filters;
};

// Everything the program asks of or shows to the user outside its own windows: message boxes,
// questions, file and folder choosers, tips, dock notices and showing a folder in the file
// browser. The desktop program shows real dialogs; tests answer from a script. Every call may
// come from any thread and returns once the user has answered: an implementation that shows
// windows hands the call to the thread that owns them and waits.
class LUserInteraction {
public:
    virtual ~LUserInteraction() = default;

    // A modal message box; returns the button pressed (Cancel or No when it was just closed).
    virtual LMessageAnswer ShowMessage(const std::string& caption, const std::string& text,
                                       LMessageButtons buttons) = 0;
    // One file, or several when `multiple`; empty when cancelled.
    virtual std::vector<std::string> ChooseOpenFiles(const LFileRequest& request,
                                                     bool multiple) = 0;
    // Empty when cancelled.
    virtual std::string ChooseSaveFile(const LFileRequest& request) = 0;
    // `prompt` says what the folder is for; empty when cancelled.
    virtual std::string ChooseFolder(const std::string& prompt, const std::string& folder) = 0;
    // A short non-modal hint.
    virtual void ShowTip(const std::string& title, const std::string& text) = 0;
    // A notification beside the program's dock icon that goes away by itself.
    virtual void ShowDockNotice(const std::string& text) = 0;
    // Shows the folder in the desktop's file browser.
    virtual void RevealFolder(const std::string& folder) = 0;

    // A warning with one OK button and a check box under the text ("Don't show this again");
    // returns whether the box was ticked. Without a box to show, the warning alone.
    virtual bool ShowWarningWithCheck(const std::string& caption, const std::string& text,
                                      const std::string& check) {
        (void)check;
        ShowMessage(caption, text, LMessageButtons::Ok);
        return false;
    }

    // A message box captioned "Error" with one OK button.
    void ShowError(const std::string& text) { ShowMessage("Error", text, LMessageButtons::Ok); }
};

// The process's user interaction. Until one is set it is a console fallback that prints every
// text on stderr and answers questions with Cancel or No (choosers: cancelled).
LUserInteraction& UserInteraction();
// Set at start-up (the windows) or by a test; nullptr restores the console fallback. The object
// must outlive its use.
void SetUserInteraction(LUserInteraction* interaction);
