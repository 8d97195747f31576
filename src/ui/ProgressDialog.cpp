#include "ui/ProgressDialog.h"

#include "jobs/UserInteraction.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>

#include <limits>

namespace {

// The longest single wait handed to a Qt timer.
constexpr int64_t kLongestTimer = std::numeric_limits<int>::max();

} // namespace

LProgressDialog::LProgressDialog(const char* title) : title_(title) {
    auto* layout = new QVBoxLayout(this);
    for (QLabel*& line : status_) {
        line = new QLabel(this);
        line->setMinimumWidth(360);
        layout->addWidget(line);
    }
    QFont step = status_[0]->font();
    step.setBold(true);
    status_[0]->setFont(step);
    status_[0]->setAccessibleName("Step");
    status_[1]->setAccessibleName("Detail");
    bar_ = new QProgressBar(this);
    bar_->setRange(0, 100);
    bar_->setValue(0);
    bar_->setAccessibleName("Progress");
    layout->addWidget(bar_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QObject::connect(buttons, &QDialogButtonBox::rejected, this, [this] { Close(0); });
    layout->addWidget(buttons);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

bool LProgressDialog::Open(QWidget* parent) {
    setParent(parent, windowFlags() | Qt::Dialog);
    setWindowTitle(QString::fromUtf8(title_));
    setWindowModality(Qt::ApplicationModal);
    stop_ = false;
    show();
    raise();
    activateWindow();
    const bool value = MainFunction();
    hide();
    if (parent) parent->activateWindow();
    return value;
}

void LProgressDialog::Close(int) {
    stop_ = true;
}

void LProgressDialog::reject() {
    Close(0);
}

void LProgressDialog::closeEvent(QCloseEvent* event) {
    Close(0);
    event->ignore();
}

void LProgressDialog::DispatchEvents(int64_t ms) {
    if (ms <= 0) {
        QCoreApplication::processEvents();
        return;
    }
    // A timer bounds the wait for the next event.
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(static_cast<int>(std::min(ms, kLongestTimer)));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool LProgressDialog::IsToStop() {
    DispatchEvents(0);
    return stop_;
}

bool LProgressDialog::ProcessWait(unsigned int ms) {
    QElapsedTimer clock;
    clock.start();
    while (!stop_) {
        const int64_t remaining =
            ms == WAIT_FOREVER ? kLongestTimer : int64_t{ms} - clock.elapsed();
        if (remaining < 1) return false;
        DispatchEvents(remaining);
    }
    return true;
}

int LProgressDialog::ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) {
    // The signal's descriptor wakes the event wait; the watcher goes when the wait ends.
    QSocketNotifier watcher(signal.Descriptor(), QSocketNotifier::Read);
    QObject::connect(&watcher, &QSocketNotifier::activated, &watcher,
                     [&watcher] { watcher.setEnabled(false); });
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        const int64_t remaining = int64_t{ms} - clock.elapsed();
        if (remaining <= 0) return WAIT_TIMEOUT;
        if (signal.IsSignaled()) return WAIT_SIGNALED;
        if (stop_) return WAIT_STOPPED;
        DispatchEvents(remaining);
    }
}

int LProgressDialog::ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) {
    if (!group.Select(ms)) return WAIT_TIMEOUT;
    return stop_ ? WAIT_STOPPED : WAIT_SIGNALED;
}

void LProgressDialog::SetError(const char* text) {
    // Through the program's user interaction, which shows it above this window.
    UserInteraction().ShowError(text);
}

void LProgressDialog::SetStatus(const char* text, int line) {
    if (line == 0 || line == 1) status_[line]->setText(QString::fromUtf8(text));
}

void LProgressDialog::SetProgress(double fraction) {
    SetProgressIndeterminateOff();
    bar_->setValue(static_cast<int>(fraction * 100));
}

void LProgressDialog::SetProgressIndeterminateOn() {
    bar_->setRange(0, 0);
}

void LProgressDialog::SetProgressIndeterminateOff() {
    if (bar_->maximum() == 0) bar_->setRange(0, 100);
}
