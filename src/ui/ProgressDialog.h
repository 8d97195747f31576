#pragma once

#include "jobs/ProcessInterface.h"
#include "jobs/ProcessResult.h"

#include <QDialog>

class QLabel;
class QProgressBar;

// The progress window behind a job that runs on the GUI thread: a caption, two status lines,
// a 0..100 bar with an indeterminate mode and a Cancel button. The window stays live because
// the job's stop queries and waits dispatch the pending GUI events; Cancel (or closing the
// window) makes the next IsToStop() true.
class LProgressDialog : public LProcessInterface, public QDialog {
public:
    explicit LProgressDialog(const char* title);

    // Shows the window application-modal, runs MainFunction() on this thread and closes the
    // window again. Returns MainFunction()'s value.
    bool Open(QWidget* parent);
    // The user asked to stop: only sets the stop flag.
    virtual void Close(int code);

    bool IsToStop() override;
    bool ProcessWait(unsigned int ms) override;
    int ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) override;
    int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) override;
    void SetError(const char* text) override;
    void SetStatus(const char* text, int line) override;
    void SetProgress(double fraction) override;
    void SetProgressIndeterminateOn() override;
    void SetProgressIndeterminateOff() override;

protected:
    virtual bool MainFunction() = 0;
    void reject() override;
    void closeEvent(QCloseEvent* event) override;

private:
    // Waits up to ms for the next event and dispatches it; `ms` 0 dispatches what is waiting.
    void DispatchEvents(int64_t ms);

    bool stop_ = false;
    const char* title_;
    QLabel* status_[2];
    QProgressBar* bar_;
};

// The window for one job: MainFunction() runs `Process(*this, job)`.
template <typename T> class LProcessDialog : public LProgressDialog {
public:
    LProcessDialog(const char* title, T& job) : LProgressDialog(title), job_(job) {}

    LProcessResult result = PROCESS_FAILED;

protected:
    bool MainFunction() override {
        result = static_cast<LProcessResult>(Process(*this, job_));
        return true;
    }

private:
    T& job_;
};

// Runs the job behind a modal progress window above `parent` and returns its result
// (PROCESS_FAILED when the window could not be shown).
template <typename T> LProcessResult ProcessRunAsDialog(QWidget* parent, const char* title, T& job) {
    LProcessDialog<T> dialog(title, job);
    dialog.Open(parent);
    return dialog.result;
}
