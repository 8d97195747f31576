#include "ui/RecordingWindow.h"

#include "ui/Icons.h"
#include "ui/LevelMeter.h"
#include "ui/RecordSettingsDialog.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

LRecordingWindow::LRecordingWindow(LRecordingHost& host, QWidget* parent)
    : QDialog(parent), host_(host), page_(host, *this) {
    setWindowTitle("Recording Session");
    setWindowModality(Qt::ApplicationModal);
    auto* layout = new QVBoxLayout(this);

    status_ = new QLabel(this);
    QFont big = status_->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    status_->setFont(big);
    status_->setAccessibleName("Status");
    layout->addWidget(status_);

    meter_ = new LDBDisplay2(this);
    layout->addWidget(meter_);

    auto* details = new QGroupBox("Current Recording", this);
    auto* form = new QFormLayout(details);
    name_ = new QLineEdit(this);
    name_->setAccessibleName("Recording name");
    connect(name_, &QLineEdit::textEdited, this,
            [this](const QString& text) { page_.SetName(text.toStdString()); });
    form->addRow("&Name:", name_);
    const auto addValue = [&](const char* label, QLabel*& value) {
        value = new QLabel(this);
        value->setAccessibleName(QString(label).remove('&').remove(':'));
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form->addRow(label, value);
    };
    addValue("Output format:", format_);
    addValue("Recorded time:", recorded_);
    addValue("Session time:", session_);
    addValue("Remaining disc space:", remaining_);
    addValue("Free disk space:", freeSpace_);
    layout->addWidget(details);

    auto* buttons = new QHBoxLayout;
    const auto add = [&](QPushButton* button) { buttons->addWidget(button); return button; };
    record_ = add(AddButton("&Record", "media-record", &LRecordingWindow::Record));
    pause_ = add(AddButton("&Pause", "media-playback-pause", &LRecordingWindow::Pause));
    stop_ = add(AddButton("&Stop", "media-playback-stop", &LRecordingWindow::Stop));
    discard_ = add(AddButton("Stop and &discard", "edit-delete", &LRecordingWindow::StopAndDiscard));
    restart_ = add(AddButton("Res&tart", "view-refresh", &LRecordingWindow::Restart));
    buttons->addStretch();
    add(AddButton("&Options...", "preferences-system", &LRecordingWindow::Options));
    add(AddButton("E&xit", "window-close", &LRecordingWindow::reject));
    layout->addLayout(buttons);
    record_->setDefault(true);
    Refresh();
}

LRecordingWindow::~LRecordingWindow() = default;

QPushButton* LRecordingWindow::AddButton(const QString& text, const char* icon,
                                         void (LRecordingWindow::*run)()) {
    auto* button = new QPushButton(LThemeIcon(icon), text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, run] { (this->*run)(); });
    return button;
}

void LRecordingWindow::Refresh() {
    status_->setText(QString::fromStdString(page_.Status()));
    if (!name_->hasFocus()) name_->setText(QString::fromStdString(page_.Name()));
    format_->setText(QString::fromStdString(page_.Format()));
    recorded_->setText(QString::fromStdString(page_.RecordedTime()));
    session_->setText(QString::fromStdString(page_.SessionTime()));
    remaining_->setText(QString::fromStdString(page_.RemainingDiscSpace()));
    freeSpace_->setText(QString::fromStdString(page_.FreeDiskSpace()));
    const bool open = page_.IsRecording();
    record_->setEnabled(!open || page_.IsPaused());
    pause_->setEnabled(open && !page_.IsPaused());
    stop_->setEnabled(open);
    discard_->setEnabled(open);
    restart_->setEnabled(open);
}

void LRecordingWindow::Levels(const LDBMC& levels) {
    meter_->SetLevel(levels);
}

void LRecordingWindow::Record() {
    page_.CmRecord(page_.IsPaused());
    Refresh();
}

void LRecordingWindow::Pause() {
    page_.CmRecordPause();
}

void LRecordingWindow::Stop() {
    page_.CmStopSession(false);
    meter_->Clear();
}

void LRecordingWindow::StopAndDiscard() {
    page_.CmStopSession(true);
    meter_->Clear();
}

void LRecordingWindow::Restart() {
    page_.CmRecordRestart();
}

void LRecordingWindow::Options() {
    LRecordSettingsDialog dialog(this);
    dialog.exec();
}

void LRecordingWindow::reject() {
    if (page_.CmExit()) QDialog::reject();
}
