#include "ui/RecordSettingsDialog.h"

#include "jobs/UserInteraction.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QCheckBox* Check(const char* text, bool on, QWidget* parent) {
    auto* box = new QCheckBox(text, parent);
    box->setChecked(on);
    return box;
}

} // namespace

LRecordSettingsDialog::LRecordSettingsDialog(QWidget* parent)
    : QDialog(parent), settings_(LRecordSettings::Load()) {
    setWindowTitle("Recording Options");
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form);

    device_ = new QComboBox(this);
    input_ = new QComboBox(this);
    device_->setAccessibleName("Recording device");
    input_->setAccessibleName("Input");
    LSoundRecordDeviceInit(choice_, settings_.device);
    for (const std::string& name : choice_.devices)
        device_->addItem(QString::fromStdString(name));
    device_->setCurrentIndex(choice_.deviceSelected);
    FillInputs();
    connect(device_, &QComboBox::currentIndexChanged, this, [this](int index) {
        choice_.deviceSelected = index;
        LSoundRecordDeviceChanged(choice_);
        FillInputs();
    });
    form->addRow("Recording &device:", device_);
    form->addRow("&Input:", input_);

    volume_ = new QSpinBox(this);
    volume_->setRange(-36, 12);
    volume_->setSuffix(" dB");
    volume_->setValue(settings_.volume);
    form->addRow("Recording &volume:", volume_);

    splitTime_ = new QSpinBox(this);
    splitTime_->setRange(1, 60);
    splitTime_->setSuffix(" s");
    splitTime_->setValue(settings_.autoSplitTime);
    form->addRow("Silence that ends a &track:", splitTime_);

    audioOnly_ = Check("Start recording only when audio &arrives", settings_.recordAudioOnly, this);
    autoSplit_ = Check("&Split tracks automatically at silence", settings_.autoSplitTracks, this);
    playback_ = Check("&Play the input while recording", settings_.playbackWhileRecording, this);
    recordTone_ = Check("Tone when recording s&tarts and stops", settings_.recordTone, this);
    stoppedTone_ = Check("Tone when recording is pa&used", settings_.stoppedTone, this);
    for (QCheckBox* box : {audioOnly_, autoSplit_, playback_, recordTone_, stoppedTone_})
        form->addRow(box);

    useMinTime_ = Check("Discard recordings shorter than:", settings_.useMinTime, this);
    minTime_ = new QLineEdit(QString::fromStdString(settings_.minTime), this);
    minTime_->setAccessibleName("Minimum length");
    form->addRow(useMinTime_, minTime_);

    makeCopy_ = Check("Also &copy each file to:", settings_.makeCopy, this);
    copyFolder_ = new QLineEdit(QString::fromStdString(settings_.copyFolder), this);
    copyFolder_->setAccessibleName("Copy folder");
    auto* browse = new QPushButton("&Browse...", this);
    connect(browse, &QPushButton::clicked, this, [this] {
        const std::string folder = UserInteraction().ChooseFolder(
            "Choose the folder that receives the copies", copyFolder_->text().toStdString());
        if (!folder.empty()) copyFolder_->setText(QString::fromStdString(folder));
    });
    auto* copyRow = new QHBoxLayout;
    copyRow->addWidget(copyFolder_);
    copyRow->addWidget(browse);
    form->addRow(makeCopy_, copyRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    const std::string tip = LTakeNoiseFloorTip();
    if (!tip.empty())
        QTimer::singleShot(0, this, [tip] { UserInteraction().ShowTip("Noise Floor", tip); });
}

void LRecordSettingsDialog::FillInputs() {
    input_->clear();
    for (const std::string& name : choice_.inputs)
        input_->addItem(QString::fromStdString(name));
    input_->setCurrentIndex(choice_.inputSelected);
    input_->setEnabled(!choice_.inputs.empty());
}

void LRecordSettingsDialog::accept() {
    choice_.inputSelected = input_->currentIndex();
    settings_.device = LSoundRecordDeviceApply(choice_);
    settings_.volume = volume_->value();
    settings_.autoSplitTime = splitTime_->value();
    settings_.recordAudioOnly = audioOnly_->isChecked();
    settings_.autoSplitTracks = autoSplit_->isChecked();
    settings_.playbackWhileRecording = playback_->isChecked();
    settings_.recordTone = recordTone_->isChecked();
    settings_.stoppedTone = stoppedTone_->isChecked();
    settings_.useMinTime = useMinTime_->isChecked();
    settings_.minTime = minTime_->text().toStdString();
    settings_.makeCopy = makeCopy_->isChecked();
    settings_.copyFolder = copyFolder_->text().toStdString();
    const std::string error = settings_.Save();
    if (!error.empty()) {
        UserInteraction().ShowError(error);
        return;
    }
    QDialog::accept();
}
