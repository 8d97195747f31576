#pragma once

#include "record/RecordingPage.h"

#include <QDialog>

class LDBDisplay2;
class QLabel;
class QLineEdit;
class QPushButton;

// The recording window: the session's commands, its texts and a live level meter over
// LRecordingPage, which holds the behaviour. Modal above the main window.
class LRecordingWindow : public QDialog, private LRecordingView {
public:
    LRecordingWindow(LRecordingHost& host, QWidget* parent);
    ~LRecordingWindow() override;

    LRecordingPage& Page() { return page_; }
    LDBDisplay2* Meter() const { return meter_; }
    QLabel* StatusLabel() const { return status_; }

protected:
    void reject() override;

private:
    void Refresh() override;
    void Levels(const LDBMC& levels) override;
    QPushButton* AddButton(const QString& text, const char* icon, void (LRecordingWindow::*run)());
    void Record();
    void Pause();
    void Stop();
    void StopAndDiscard();
    void Restart();
    void Options();

    LRecordingHost& host_;
    LRecordingPage page_;
    LDBDisplay2* meter_ = nullptr;
    QLabel* status_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLabel* format_ = nullptr;
    QLabel* recorded_ = nullptr;
    QLabel* session_ = nullptr;
    QLabel* remaining_ = nullptr;
    QLabel* freeSpace_ = nullptr;
    QPushButton* record_ = nullptr;
    QPushButton* pause_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* discard_ = nullptr;
    QPushButton* restart_ = nullptr;
};
