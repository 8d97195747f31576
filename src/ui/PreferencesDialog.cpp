#include "ui/PreferencesDialog.h"

#include "jobs/UserInteraction.h"
#include "record/RecordingOutput.h"
#include "ui/DevicePicker.h"
#include "ui/LevelMeter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

QCheckBox* Check(const char* text, bool on, QWidget* parent) {
    auto* box = new QCheckBox(text, parent);
    box->setChecked(on);
    return box;
}

QComboBox* List(std::initializer_list<const char*> texts, int current, const char* name,
                QWidget* parent) {
    auto* list = new QComboBox(parent);
    for (const char* text : texts) list->addItem(text);
    list->setCurrentIndex(current);
    list->setAccessibleName(name);
    return list;
}

} // namespace

LPreferencesDialog::LPreferencesDialog(QWidget* parent, const std::string& outputFolder,
                                       std::function<bool(const std::string&)> setOutputFolder)
    : QDialog(parent),
      general_(std::move(setOutputFolder), [this](const LDBMC& levels) { meter_->SetLevel(levels); }) {
    setWindowTitle("Preferences");
    auto* layout = new QVBoxLayout(this);
    tabs_ = new QTabWidget(this);
    general_.InitDialog(outputFolder);
    audio_.InitDialog();
    tabs_->addTab(GeneralPage(outputFolder), "&General");
    tabs_->addTab(AudioPage(), "&Audio Settings");
    layout->addWidget(tabs_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    general_.StartRecorder();
}

QWidget* LPreferencesDialog::GeneralPage(const std::string& outputFolder) {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    deleteFiles_ = Check("&Delete files from disk when they are removed from the list",
                         general_.deleteFiles, page);
    form->addRow(deleteFiles_);
    outputFolder_ = new QComboBox(page);
    outputFolder_->setEditable(true);
    outputFolder_->addItem(QString::fromStdString(outputFolder));
    outputFolder_->setAccessibleName("Recordings folder");
    auto* browse = new QPushButton("B&rowse...", page);
    connect(browse, &QPushButton::clicked, this, [this] {
        const std::string folder = UserInteraction().ChooseFolder(
            "Choose the folder for your recordings", outputFolder_->currentText().toStdString());
        if (!folder.empty()) outputFolder_->setCurrentText(QString::fromStdString(folder));
    });
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(outputFolder_, 1);
    folderRow->addWidget(browse);
    // The label of a row of several controls names its first one, so that its mnemonic works.
    auto* folderLabel = new QLabel("Recordings &folder:", page);
    folderLabel->setBuddy(outputFolder_);
    form->addRow(folderLabel, folderRow);
    device_ = new LDevicePicker(page, [this] {
        general_.device = device_->Device();
        general_.StartRecorder();
    });
    device_->SetDevice(general_.device);
    form->addRow("Recording d&evice:", device_);
    volume_ = new QSpinBox(page);
    volume_->setRange(-127, 127);
    volume_->setSuffix(" dB");
    volume_->setValue(general_.volume);
    volume_->setAccessibleName("Recording volume");
    connect(volume_, &QSpinBox::valueChanged, this, [this](int value) {
        general_.volume = value;
        general_.StartRecorder();
    });
    form->addRow("Recording &volume:", volume_);
    meter_ = new LDBDisplay2(page);
    meter_->setAccessibleName("Input level");
    form->addRow(meter_);
    recordTone_ = Check("Play a &tone when recording starts and stops", general_.recordTone, page);
    form->addRow(recordTone_);
    useMinTime_ = Check("Discard recordings &shorter than:", general_.useMinTime, page);
    minTime_ = new QSpinBox(page);
    minTime_->setRange(1, 999);
    minTime_->setSuffix(" s");
    minTime_->setValue(general_.minTime);
    minTime_->setAccessibleName("Minimum length");
    form->addRow(useMinTime_, minTime_);
    return page;
}

QWidget* LPreferencesDialog::AudioPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    source_ = List({"Vinyl", "Cassette"}, audio_.vinyl ? 0 : 1, "Source", page);
    form->addRow("&Source:", source_);
    speed_ = List({"33/45/78 RPM", "33 RPM Played at 45 RPM", "78 RPM Played at 45 RPM"},
                  audio_.speed, "Speed", page);
    form->addRow("S&peed:", speed_);
    amp_ = List({"Via Amp or Pre-Amp", "Direct Phono to Computer"}, audio_.amp ? 0 : 1,
                "Connection", page);
    form->addRow("&Connection:", amp_);
    noiseFloor_ = new QSpinBox(page);
    noiseFloor_->setRange(-127, 127);
    noiseFloor_->setSuffix(" dB");
    noiseFloor_->setValue(audio_.noiseFloor);
    noiseFloor_->setAccessibleName("Noise floor");
    form->addRow("&Noise floor:", noiseFloor_);
    format_ = new QComboBox(page);
    for (const LOutputFormat& format : kOutputFormats) format_->addItem(format.text);
    format_->setCurrentIndex(audio_.format);
    format_->setAccessibleName("Output format");
    form->addRow("Output &format:", format_);
    makeCopy_ = Check("Also c&opy each file to:", audio_.makeCopy, page);
    copyFolder_ = new QLineEdit(QString::fromStdString(audio_.copyFolder), page);
    copyFolder_->setAccessibleName("Copy folder");
    browse_ = new QPushButton("Locate output folder...", page);
    connect(browse_, &QPushButton::clicked, this, [this] {
        audio_.BrowseCopyFolder();
        copyFolder_->setText(QString::fromStdString(audio_.copyFolder));
    });
    const auto enableCopy = [this](bool on) {
        copyFolder_->setEnabled(on);
        browse_->setEnabled(on);
    };
    connect(makeCopy_, &QCheckBox::toggled, this, enableCopy);
    enableCopy(audio_.makeCopy);
    auto* copyRow = new QHBoxLayout;
    copyRow->addWidget(copyFolder_, 1);
    copyRow->addWidget(browse_);
    form->addRow(makeCopy_, copyRow);
    tools_ = std::make_unique<LRestoreSwitchBoxes>(page);
    tools_->Show(audio_.restoration);
    for (QCheckBox* box : tools_->Boxes())
        form->addRow(box == tools_->Boxes().front() ? "Restoration:" : "", box);
    return page;
}

void LPreferencesDialog::accept() {
    general_.deleteFiles = deleteFiles_->isChecked();
    general_.outputFolder = outputFolder_->currentText().toStdString();
    general_.device = device_->Device();
    general_.volume = volume_->value();
    general_.recordTone = recordTone_->isChecked();
    general_.useMinTime = useMinTime_->isChecked();
    general_.minTime = minTime_->value();
    if (!general_.CmOk()) {
        tabs_->setCurrentIndex(0);
        return;
    }
    audio_.vinyl = source_->currentIndex() == 0;
    audio_.speed = speed_->currentIndex();
    audio_.copyFolder = copyFolder_->text().toStdString();
    audio_.makeCopy = makeCopy_->isChecked();
    audio_.amp = amp_->currentIndex() == 0;
    audio_.noiseFloor = noiseFloor_->value();
    audio_.format = format_->currentIndex();
    tools_->Store(audio_.restoration);
    if (!audio_.CmOk()) {
        tabs_->setCurrentIndex(1);
        return;
    }
    QDialog::accept();
}

void LPreferencesDialog::done(int result) {
    general_.StopRecorder();
    QDialog::done(result);
}
