#include "ui/SetupWizardDialog.h"

#include "jobs/UserInteraction.h"
#include "record/RecordingOutput.h"
#include "ui/DevicePicker.h"
#include "ui/EncoderSettingsDialogs.h"
#include "ui/LevelMeter.h"
#include "ui/ProgressDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

const char* const kLayouts[] = {"introduction", "source", "volume", "noise", "restoration",
                                "output",       "data",   "burn",   "final"};

QCheckBox* Check(const char* text, QWidget* parent) {
    return new QCheckBox(text, parent);
}

QLabel* Wrapped(const char* text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

// The heading of a page that has no header band.
QLabel* PageHeading(const char* text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QSpinBox* DBField(int low, int high, const char* name, QWidget* parent) {
    auto* box = new QSpinBox(parent);
    box->setRange(low, high);
    box->setSuffix(" dB");
    box->setAccessibleName(name);
    return box;
}

} // namespace

LSetupWizardDialog::LSetupWizardDialog(QWidget* parent, std::function<void()> startRecording,
                                       std::function<void(int, int)> toMainWindow,
                                       const char* mode)
    : QDialog(parent),
      setup_({std::move(startRecording), [this] { RefreshNoise(); },
              [this](const LDBMC& levels) {
                  volumeMeter_->SetLevel(levels);
                  noiseMeter_->SetLevel(levels);
              },
              [this](const char* title, ProcessFindBurners& scan) {
                  return ProcessRunAsDialog(this, title, scan);
              },
              std::move(toMainWindow), [this] { ShowBurnInfo(); }},
             mode) {
    setMinimumSize(620, 460);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    header_ = new QFrame(this);
    header_->setAutoFillBackground(true);
    header_->setBackgroundRole(QPalette::Base);
    auto* headerLayout = new QVBoxLayout(header_);
    heading_ = new QLabel(header_);
    QFont bold = heading_->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    heading_->setFont(bold);
    subheading_ = new QLabel(header_);
    subheading_->setWordWrap(true);
    headerLayout->addWidget(heading_);
    headerLayout->addWidget(subheading_);
    layout->addWidget(header_);
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    layout->addWidget(line);
    headerLine_ = line;

    stack_ = new QStackedWidget(this);
    for (QWidget* page : {IntroductionPage(), SourcePage(), VolumePage(), NoisePage(),
                          RestorationPage(), OutputPage(), DataPage(), BurnPage(), FinalPage()}) {
        page->layout()->setContentsMargins(18, 12, 18, 12);
        stack_->addWidget(page);
    }
    layout->addWidget(stack_, 1);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(12, 6, 12, 12);
    back_ = new QPushButton("< &Back", this);
    next_ = new QPushButton("&Next >", this);
    auto* cancel = new QPushButton("Cancel", this);
    next_->setDefault(true);
    buttons->addStretch(1);
    buttons->addWidget(back_);
    buttons->addWidget(next_);
    buttons->addSpacing(12);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(back_, &QPushButton::clicked, this, [this] { setup_.Wizard().Back(); });
    connect(next_, &QPushButton::clicked, this, [this] {
        const int current = setup_.Wizard().Current();
        if (current < 0) return;
        Store(setup_.Wizard().CurrentEntry().layout);
        setup_.Wizard().Next();
    });
    connect(cancel, &QPushButton::clicked, this, &LSetupWizardDialog::reject);
}

bool LSetupWizardDialog::Start() {
    return setup_.Wizard().Open(*this);
}

int LSetupWizardDialog::exec() {
    if (!Start()) return Rejected;
    return QDialog::exec();
}

void LSetupWizardDialog::reject() {
    if (!closing_ && setup_.Wizard().Current() >= 0) {
        setup_.Wizard().Cancel();
        return;
    }
    QDialog::reject();
}

QString LSetupWizardDialog::Heading() const {
    return heading_->text();
}

void LSetupWizardDialog::ShowPage(int index) {
    const LWizard::Entry& entry = setup_.Wizard().Pages()[static_cast<size_t>(index)];
    setWindowTitle(QString::fromStdString(entry.title));
    heading_->setText(QString::fromStdString(entry.heading));
    subheading_->setText(QString::fromStdString(entry.subheading));
    subheading_->setVisible(!entry.subheading.empty());
    // Pages without the common header show their heading themselves.
    header_->setVisible(entry.header);
    headerLine_->setVisible(entry.header);
    Show(entry.layout);
    for (int i = 0; i < static_cast<int>(std::size(kLayouts)); ++i)
        if (entry.layout == kLayouts[i]) stack_->setCurrentIndex(i);
    back_->setEnabled(setup_.Wizard().HasBack());
    next_->setText(setup_.Wizard().HasNext() ? "&Next >" : "&Finish");
    next_->setFocus();
}

void LSetupWizardDialog::CloseWizard(bool ok) {
    closing_ = true;
    ok ? accept() : QDialog::reject();
}

void LSetupWizardDialog::Show(const std::string& layout) {
    if (layout == "introduction") {
        dontShow_->setChecked(setup_.introduction.dontShowAgain);
    } else if (layout == "source") {
        const LRecordSourcePage& page = setup_.source;
        source_->button(page.vinyl ? 0 : 1)->setChecked(true);
        amp_->setCurrentIndex(page.amp ? 0 : 1);
        speed_->setCurrentIndex(page.speed);
        const bool shows[] = {page.calibrateVolume, page.measureNoiseFloor, page.setRestoreTools,
                              page.setOutputFormat};
        for (int i = 0; i < 4; ++i) showPages_[i]->setChecked(shows[i]);
    } else if (layout == "volume") {
        device_->SetDevice(setup_.volume.device);
        volume_->setValue(setup_.volume.volume);
    } else if (layout == "noise") {
        custom_->setChecked(setup_.noise.custom);
        floor_->setValue(setup_.noise.floor);
        RefreshNoise();
    } else if (layout == "restoration") {
        tools_->Show(setup_.restoration.choices);
    } else if (layout == "output") {
        format_->setCurrentIndex(setup_.output.format);
        makeCopy_->setChecked(setup_.output.makeCopy);
        copyFolder_->setText(QString::fromStdString(setup_.output.copyFolder));
        pattern_->setText(QString::fromStdString(setup_.output.pattern));
    } else if (layout == "data") {
        dataType_->setCurrentIndex(setup_.dataBurn.dataCDType);
        reencode_->setChecked(setup_.dataBurn.reencodeAllFiles);
        dataLabel_->setText(QString::fromStdString(setup_.dataBurn.label));
    } else if (layout == "burn") {
        ShowBurnPage();
    } else if (layout == "final") {
        startNow_->setChecked(setup_.final.startRecordingNow);
    }
}

void LSetupWizardDialog::Store(const std::string& layout) {
    if (layout == "introduction") {
        setup_.introduction.dontShowAgain = dontShow_->isChecked();
    } else if (layout == "source") {
        LRecordSourcePage& page = setup_.source;
        page.vinyl = source_->checkedId() == 0;
        page.amp = amp_->currentIndex() == 0;
        page.speed = speed_->currentIndex();
        page.calibrateVolume = showPages_[0]->isChecked();
        page.measureNoiseFloor = showPages_[1]->isChecked();
        page.setRestoreTools = showPages_[2]->isChecked();
        page.setOutputFormat = showPages_[3]->isChecked();
    } else if (layout == "volume") {
        setup_.volume.device = device_->Device();
        setup_.volume.volume = volume_->value();
    } else if (layout == "noise") {
        setup_.noise.custom = custom_->isChecked();
        setup_.noise.floor = floor_->value();
    } else if (layout == "restoration") {
        tools_->Store(setup_.restoration.choices);
    } else if (layout == "output") {
        setup_.output.format = format_->currentIndex();
        setup_.output.makeCopy = makeCopy_->isChecked();
        setup_.output.copyFolder = copyFolder_->text().toStdString();
        setup_.output.pattern = pattern_->text().toStdString();
    } else if (layout == "data") {
        setup_.dataBurn.dataCDType = dataType_->currentIndex();
        setup_.dataBurn.reencodeAllFiles = reencode_->isChecked();
        setup_.dataBurn.label = dataLabel_->text().toStdString();
    } else if (layout == "burn") {
        StoreBurnPage();
    } else if (layout == "final") {
        setup_.final.startRecordingNow = startNow_->isChecked();
    }
}

QWidget* LSetupWizardDialog::IntroductionPage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(PageHeading("Welcome to the Vinora Records Recording Setup Wizard!", page));
    layout->addWidget(Wrapped(
        "This wizard sets up your recordings step by step: where the sound comes from, the "
        "recording volume, the background noise of your turntable or tape deck, the tools that "
        "repair the audio, and the format your tracks are saved in.\n\nEvery choice can be "
        "changed later in Preferences.",
        page));
    layout->addStretch(1);
    dontShow_ = Check("&Do not show this page again", page);
    layout->addWidget(dontShow_);
    return page;
}

QWidget* LSetupWizardDialog::SourcePage() {
    auto* page = new QWidget(this);
    auto* layout = new QFormLayout(page);
    source_ = new QButtonGroup(page);
    auto* vinyl = new QRadioButton("&Vinyl record", page);
    auto* cassette = new QRadioButton("&Cassette tape", page);
    source_->addButton(vinyl, 0);
    source_->addButton(cassette, 1);
    auto* kinds = new QHBoxLayout;
    kinds->addWidget(vinyl);
    kinds->addWidget(cassette);
    kinds->addStretch(1);
    layout->addRow("Source:", kinds);
    amp_ = new QComboBox(page);
    amp_->addItems({"Via Amp or Pre-Amp", "Direct Phono to Computer"});
    amp_->setAccessibleName("Connection");
    layout->addRow("C&onnection:", amp_);
    speed_ = new QComboBox(page);
    speed_->addItems({"33/45/78 RPM", "33 RPM Played at 45 RPM", "78 RPM Played at 45 RPM"});
    speed_->setAccessibleName("Speed");
    layout->addRow("&Speed:", speed_);
    layout->addRow(new QLabel("Show the pages that set up:", page));
    const char* texts[] = {"Recording &volume calibration", "&Background noise measurement",
                           "Audio &restoration tools", "&Output format"};
    for (int i = 0; i < 4; ++i) {
        showPages_[i] = Check(texts[i], page);
        layout->addRow(showPages_[i]);
    }
    return page;
}

QWidget* LSetupWizardDialog::VolumePage() {
    auto* page = new QWidget(this);
    auto* layout = new QFormLayout(page);
    device_ = new LDevicePicker(page, [this] {
        setup_.volume.device = device_->Device();
        setup_.volume.Restart();
    });
    layout->addRow("Recording &device:", device_);
    volume_ = DBField(-127, 127, "Recording volume", page);
    connect(volume_, &QSpinBox::valueChanged, this, [this](int value) {
        if (setup_.volume.volume == value) return;
        setup_.volume.volume = value;
        setup_.volume.Restart();
    });
    layout->addRow("Recording &volume:", volume_);
    volumeMeter_ = new LDBDisplay2(page);
    volumeMeter_->setAccessibleName("Input level");
    layout->addRow(volumeMeter_);
    layout->addRow(Wrapped("Play the loudest part of your record and set the volume so that the "
                           "meter reaches the orange part but never the red.",
                           page));
    return page;
}

QWidget* LSetupWizardDialog::NoisePage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(Wrapped("Play the record and press Measure Noise Floor during the silence "
                              "between two songs. The measurement takes two seconds.",
                              page));
    noiseMeter_ = new LDBDisplay2(page);
    noiseMeter_->setAccessibleName("Input level");
    layout->addWidget(noiseMeter_);
    noiseLevel_ = new QLabel(page);
    noiseStatus_ = new QLabel(page);
    noiseLast_ = new QLabel(page);
    for (QLabel* label : {noiseLevel_, noiseStatus_, noiseLast_}) layout->addWidget(label);
    measure_ = new QPushButton("&Measure Noise Floor", page);
    connect(measure_, &QPushButton::clicked, this, [this] { setup_.noise.Noise().CmMeasure(); });
    auto* row = new QHBoxLayout;
    row->addWidget(measure_);
    row->addStretch(1);
    layout->addLayout(row);
    custom_ = Check("Manually &Specify Noise Floor", page);
    floor_ = DBField(-127, 127, "Noise floor", page);
    auto* manual = new QHBoxLayout;
    manual->addWidget(custom_);
    manual->addWidget(floor_);
    manual->addStretch(1);
    layout->addLayout(manual);
    connect(custom_, &QCheckBox::toggled, floor_, &QWidget::setEnabled);
    layout->addStretch(1);
    return page;
}

void LSetupWizardDialog::RefreshNoise() {
    if (setup_.Wizard().Current() < 0 || setup_.Wizard().CurrentEntry().layout != "noise") return;
    LSampleNoisePage& noise = setup_.noise.Noise();
    noiseStatus_->setText(QString::fromStdString(noise.Status()));
    noiseLevel_->setText(QString::fromStdString(noise.LevelText()));
    noiseLast_->setText(QString::fromStdString(noise.LastSetText()));
    measure_->setEnabled(noise.IsMeasureEnabled());
    if (!custom_->isChecked()) floor_->setValue(noise.StoredFloor());
    floor_->setEnabled(custom_->isChecked());
}

QWidget* LSetupWizardDialog::RestorationPage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    tools_ = std::make_unique<LRestoreSwitchBoxes>(page);
    for (QCheckBox* box : tools_->Boxes()) layout->addWidget(box);
    layout->addStretch(1);
    return page;
}

QWidget* LSetupWizardDialog::OutputPage() {
    auto* page = new QWidget(this);
    auto* layout = new QFormLayout(page);
    format_ = new QComboBox(page);
    for (const LOutputFormat& format : kOutputFormats) format_->addItem(format.text);
    format_->setAccessibleName("Output format");
    layout->addRow("&Format:", format_);
    pattern_ = new QLineEdit(page);
    pattern_->setAccessibleName("File name pattern");
    pattern_->setToolTip("%autonumber% is the track's number; %YYYY%, %MM%, %DD%, %HH%, %MIN% "
                         "and %SS% the date and time of recording.");
    layout->addRow("File &names:", pattern_);
    makeCopy_ = Check("Also &copy each file to:", page);
    copyFolder_ = new QLineEdit(page);
    copyFolder_->setAccessibleName("Copy folder");
    auto* browse = new QPushButton("&Browse...", page);
    connect(browse, &QPushButton::clicked, this, [this] {
        const std::string folder = UserInteraction().ChooseFolder(
            "Locate output folder...", copyFolder_->text().toStdString());
        if (!folder.empty()) copyFolder_->setText(QString::fromStdString(folder));
    });
    auto* row = new QHBoxLayout;
    row->addWidget(copyFolder_, 1);
    row->addWidget(browse);
    layout->addRow(makeCopy_, row);
    auto* mp3 = new QPushButton("&MP3 Settings...", page);
    auto* wave = new QPushButton("&WAV Settings...", page);
    connect(mp3, &QPushButton::clicked, this, [this] { LEditMp3EncoderSettings(this); });
    connect(wave, &QPushButton::clicked, this, [this] { LEditWaveEncoderSettings(this); });
    auto* encoders = new QHBoxLayout;
    encoders->addWidget(mp3);
    encoders->addWidget(wave);
    encoders->addStretch(1);
    layout->addRow("Encoders:", encoders);
    return page;
}

QWidget* LSetupWizardDialog::FinalPage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(PageHeading("The Wizard Setup is now complete.", page));
    layout->addWidget(Wrapped("Press Finish to store your choices.", page));
    layout->addStretch(1);
    startNow_ = Check("&Start recording now", page);
    layout->addWidget(startNow_);
    return page;
}

QWidget* LSetupWizardDialog::DataPage() {
    auto* page = new QWidget(this);
    auto* layout = new QFormLayout(page);
    layout->setRowWrapPolicy(QFormLayout::DontWrapRows);
    dataType_ = new QComboBox(page);
    for (const char* text : kDataCDTypeTexts) dataType_->addItem(text);
    dataType_->setAccessibleName("Data disc type");
    layout->addRow("The disc &holds:", dataType_);
    reencode_ = Check("&Convert every file, also those already in that format", page);
    reencode_->setToolTip("Off: files already in the chosen format are copied to the disc as "
                          "they are, which is faster and loses nothing.");
    layout->addRow(reencode_);
    dataLabel_ = new QLineEdit(page);
    dataLabel_->setMaxLength(int(kDiscLabelMax));
    dataLabel_->setAccessibleName("Disc label");
    layout->addRow("Disc &label (16 characters max.):", dataLabel_);
    layout->addRow(Wrapped("The files selected in the main list are put on a data CD or DVD "
                           "that computers, car stereos and many disc players can read. Files "
                           "that need converting are converted first; your recordings are left "
                           "as they are.",
                           page));
    return page;
}

QWidget* LSetupWizardDialog::BurnPage() {
    auto* page = new QWidget(this);
    auto* layout = new QFormLayout(page);
    layout->setRowWrapPolicy(QFormLayout::DontWrapRows);
    drives_ = new QComboBox(page);
    drives_->setAccessibleName("Drive");
    drives_->setPlaceholderText("No burner found");
    auto* refresh = new QPushButton("&Refresh", page);
    refresh->setToolTip("Look for burners and discs again.");
    auto* driveRow = new QHBoxLayout;
    driveRow->addWidget(drives_, 1);
    driveRow->addWidget(refresh);
    driveCaption_ = new QLabel(page);
    driveCaption_->setBuddy(drives_);
    layout->addRow(driveCaption_, driveRow);
    speeds_ = new QComboBox(page);
    speeds_->setAccessibleName("Write speed");
    layout->addRow("Write &speed:", speeds_);
    eraseFirst_ = Check("", page);
    eraseFirst_->setAccessibleName("Erase first");
    layout->addRow(eraseFirst_);
    overburn_ = Check("Allow &overburning (write past the disc's stated capacity)", page);
    layout->addRow(overburn_);
    discLabel_ = new QLineEdit(page);
    discLabel_->setMaxLength(int(kDiscLabelMax));
    discLabel_->setAccessibleName("Disc label");
    labelCaption_ = new QLabel(page);
    labelCaption_->setBuddy(discLabel_);
    layout->addRow(labelCaption_, discLabel_);
    auto* line = new QFrame(page);
    line->setFrameShape(QFrame::HLine);
    layout->addRow(line);
    projectSize_ = new QLabel(page);
    projectSize_->setAccessibleName("Project size");
    layout->addRow("Selected files:", projectSize_);
    capacity_ = new QLabel(page);
    capacity_->setAccessibleName("Disc capacity");
    layout->addRow("Room on the disc:", capacity_);
    eraseNow_ = new QPushButton(page);
    auto* eraseRow = new QHBoxLayout;
    eraseRow->addWidget(eraseNow_);
    eraseRow->addStretch(1);
    layout->addRow(eraseRow);

    connect(drives_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (fillingBurnPage_ || index < 0) return;
        StoreBurnPage();
        setup_.burn.dlg.SelectDrive(index);
        ShowBurnInfo();
    });
    connect(refresh, &QPushButton::clicked, this, [this] {
        StoreBurnPage();
        setup_.burn.dlg.UpdateCDInfo();
        ShowBurnInfo();
    });
    connect(eraseNow_, &QPushButton::clicked, this, [this] { setup_.burn.dlg.CmEraseNow(); });
    return page;
}

void LSetupWizardDialog::ShowBurnPage() {
    const LCDVNBurnDlg& page = setup_.burn.dlg;
    driveCaption_->setText(QString::fromStdString(page.driveCaption) + ":");
    eraseFirst_->setText(QString::fromStdString(page.eraseCaption));
    eraseFirst_->setChecked(page.eraseCDRW);
    overburn_->setChecked(page.overburn);
    overburn_->setEnabled(page.overburnEnabled);
    labelCaption_->setText(page.labelCaption);
    discLabel_->setText(QString::fromStdString(page.label));
    discLabel_->setEnabled(page.labelEnabled);
    eraseNow_->setText(QString::fromStdString(page.eraseButtonCaption));
    ShowBurnInfo();
}

void LSetupWizardDialog::ShowBurnInfo() {
    const LCDVNBurnDlg& page = setup_.burn.dlg;
    fillingBurnPage_ = true;
    drives_->clear();
    for (const std::string& drive : page.drives) drives_->addItem(QString::fromStdString(drive));
    drives_->setCurrentIndex(page.drives.empty() ? -1 : page.driveSelected);
    speeds_->clear();
    for (const std::string& speed : page.speeds) speeds_->addItem(QString::fromStdString(speed));
    speeds_->setCurrentIndex(page.speedSelected);
    projectSize_->setText(QString::fromStdString(page.projectSize));
    capacity_->setText(QString::fromStdString(page.capacity));
    fillingBurnPage_ = false;
}

void LSetupWizardDialog::StoreBurnPage() {
    LCDVNBurnDlg& page = setup_.burn.dlg;
    if (drives_->currentIndex() >= 0) page.driveSelected = drives_->currentIndex();
    page.speedSelected = std::max(0, speeds_->currentIndex());
    page.eraseCDRW = eraseFirst_->isChecked();
    page.overburn = overburn_->isChecked();
    page.label = discLabel_->text().toStdString();
}
