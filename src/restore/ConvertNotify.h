#pragma once

// Where the conversion job and the restoration chain report to the main window: the status
// text shown before the percentage, the file being converted, finished files and progress.
// The application installs its main-window notifier; until then reports go nowhere.
class LConvertNotify {
public:
    // Copies the text (at most 259 bytes) shown before the percentage; empty clears it.
    virtual void SetStatusText(const char* text) = 0;
    virtual void NotifyFile(const char* name) = 0;
    virtual void NotifyAdd(const char* path) = 0;
    virtual void NotifyProgress(double fraction) = 0;

protected:
    ~LConvertNotify() = default;
};

// The installed notifier, or one that drops everything.
LConvertNotify& ConvertNotify();
// nullptr restores the one that drops everything. The object must outlive its use.
void SetConvertNotify(LConvertNotify* notify);
