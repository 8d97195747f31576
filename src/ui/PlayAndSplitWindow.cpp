#include "ui/PlayAndSplitWindow.h"

#include "platform/Settings.h"
#include "ui/Icons.h"
#include "ui/LevelMeter.h"
#include "ui/WaveWidget.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QToolTip>
#include <QVBoxLayout>

#include <filesystem>
#include <system_error>

namespace {

constexpr const char* kGeometrySection = "PlayerWindow";

} // namespace

LPlayAndSplitWindow::LPlayAndSplitWindow(const std::string& path, LVNPlayDlg::SplitRequest split,
                                         LVNPlayDlg::ReloadList reload, QWidget* parent)
    : QDialog(parent), info_(path), logic_(info_, output_, *this, std::move(split), std::move(reload)) {
    setWindowTitle(QString("Play or Split File - %1").arg(QString::fromStdString(info_.displayName)));
    setWindowModality(Qt::ApplicationModal);
    auto* layout = new QVBoxLayout(this);

    auto* heading = new QHBoxLayout;
    auto* name = new QLabel(QString::fromStdString(info_.displayName), this);
    QFont bold = name->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    name->setFont(bold);
    name->setAccessibleName("File name");
    heading->addWidget(name, 1);
    length_ = new QLabel(this);
    length_->setAccessibleName("Track length");
    heading->addWidget(length_);
    layout->addLayout(heading);

    wave_ = new LWaveWidget(logic_.Wave(), this);
    wave_->SetClickHandler([this](int x) { logic_.OnWaveClick(x); });
    layout->addWidget(wave_, 1);

    auto* positionRow = new QHBoxLayout;
    position_ = new QSlider(Qt::Horizontal, this);
    position_->setRange(0, 100);
    position_->setAccessibleName("Position");
    connect(position_, &QSlider::valueChanged, this, [this](int value) {
        if (position_->isSliderDown() || position_->hasFocus()) logic_.Command(pcSlider, value);
    });
    positionRow->addWidget(position_, 1);
    time_ = new QLabel("0:00:00.000", this);
    time_->setAccessibleName("Time");
    QFont mono = time_->font();
    mono.setFamily("monospace");
    mono.setStyleHint(QFont::Monospace);
    time_->setFont(mono);
    positionRow->addWidget(time_);
    layout->addLayout(positionRow);

    auto* transport = new QHBoxLayout;
    transport->addWidget(AddButton(pcStart, "", "media-skip-backward", "Go to the start (Home)"));
    auto* back = AddButton(pcBackDown, "", "media-seek-backward", "Scan back while held (Left)");
    auto* play = AddButton(pcPlay, "&Play", "media-playback-start", "Play (F5)");
    auto* pause = AddButton(pcPause, "P&ause", "media-playback-pause", "Pause (F6, Space)");
    auto* stop = AddButton(pcStop, "&Stop", "media-playback-stop", "Stop (Esc)");
    auto* forward = AddButton(pcForwardDown, "", "media-seek-forward", "Scan forward while held (Right)");
    transport->addWidget(back);
    transport->addWidget(play);
    transport->addWidget(pause);
    transport->addWidget(stop);
    transport->addWidget(forward);
    transport->addWidget(AddButton(pcEnd, "", "media-skip-forward", "Go near the end (End)"));
    transport->addWidget(AddButton(pcPlayEnd, "Play &End", "", "Play the last three seconds"));
    // Scanning lasts while the button is held.
    for (auto [button, up] : {std::pair{back, pcBackUp}, std::pair{forward, pcForwardUp}}) {
        disconnect(button, &QPushButton::clicked, nullptr, nullptr);
        const int down = button == back ? pcBackDown : pcForwardDown;
        connect(button, &QPushButton::pressed, this, [this, down] { logic_.Command(down); });
        connect(button, &QPushButton::released, this, [this, up = up] { logic_.Command(up); });
    }
    transport->addStretch();
    layout->addLayout(transport);

    auto* output = new QGridLayout;
    meter_ = new LDBDisplay2(this);
    meter_->setAccessibleName("Level");
    output->addWidget(meter_, 0, 0, 2, 1);
    auto* volumeLabel = new QLabel("&Volume:", this);
    volume_ = new QSlider(Qt::Horizontal, this);
    volume_->setRange(-48, 0);
    volume_->setValue(0);
    volume_->setAccessibleName("Volume");
    volumeLabel->setBuddy(volume_);
    connect(volume_, &QSlider::valueChanged, this, [this](int db) { logic_.Command(pcVolume, db); });
    output->addWidget(volumeLabel, 0, 1);
    output->addWidget(volume_, 0, 2);
    auto* deviceLabel = new QLabel("&Output:", this);
    devices_ = new QComboBox(this);
    devices_->setAccessibleName("Output device");
    deviceLabel->setBuddy(devices_);
    for (const LSoundPlayDeviceListItem& device : logic_.Devices())
        devices_->addItem(QString::fromStdString(device.name));
    devices_->setCurrentIndex(logic_.DeviceIndex());
    connect(devices_, &QComboBox::activated, this, [this](int index) { logic_.Command(pcDevice, index); });
    output->addWidget(deviceLabel, 1, 1);
    output->addWidget(devices_, 1, 2);
    output->setColumnStretch(0, 1);
    layout->addLayout(output);

    auto* splitting = new QGroupBox("Split Points", this);
    auto* splitRow = new QHBoxLayout(splitting);
    splitRow->addWidget(AddButton(pcAddCursorPoint, "Add &Cursor Point", "list-add",
                                  "Add a split point at the red cursor; click the waveform to move it"));
    points_ = new QComboBox(this);
    points_->setMinimumContentsLength(12);
    points_->setAccessibleName("Split points");
    connect(points_, &QComboBox::activated, this, [this](int index) { logic_.SelectPoint(index); });
    splitRow->addWidget(points_, 1);
    splitRow->addWidget(AddButton(pcRemovePoint, "&Remove", "list-remove", "Remove the chosen split point"));
    splitRow->addWidget(AddButton(pcSplit, "Spli&t File", "edit-cut", "Cut the file at the split points"));
    layout->addWidget(splitting);

    auto* closeRow = new QHBoxLayout;
    closeRow->addStretch();
    closeRow->addWidget(AddButton(pcClose, "&Close", "window-close", "Close (Ctrl+W)"));
    layout->addLayout(closeRow);

    AddShortcut(Qt::Key_F5, pcPlay);
    AddShortcut(Qt::Key_F9, pcPlay);
    AddShortcut(Qt::Key_F6, pcPause);
    AddShortcut(Qt::Key_F10, pcPause);
    AddShortcut(Qt::Key_Space, pcPause);
    AddShortcut(Qt::Key_Home, pcStart);
    AddShortcut(Qt::Key_End, pcEnd);
    AddShortcut(QKeySequence::Close, pcClose);

    const std::string geometry = LUserSettingGetString(kGeometrySection, "Geometry");
    if (geometry.empty() || !restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(geometry))))
        resize(720, 420);
    wave_->setFocus();
    ControlsChanged();
}

LPlayAndSplitWindow::~LPlayAndSplitWindow() {
    // The waveform widget reads the logic's control, which goes before the child widgets do.
    delete wave_;
}

void LPlayAndSplitWindow::Start() {
    logic_.InitDialog();
}

QPushButton* LPlayAndSplitWindow::Button(int command) const {
    for (const auto& [id, button] : buttons_)
        if (id == command) return button;
    return nullptr;
}

QPushButton* LPlayAndSplitWindow::AddButton(int command, const QString& text, const char* icon,
                                            const QString& tip) {
    auto* button = new QPushButton(this);
    button->setText(text);
    if (icon[0]) button->setIcon(LThemeIcon(icon));
    button->setToolTip(tip);
    button->setAccessibleName(text.isEmpty() ? tip : QString(text).remove('&'));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, command] { logic_.Command(command); });
    buttons_.emplace_back(command, button);
    return button;
}

void LPlayAndSplitWindow::AddShortcut(const QKeySequence& keys, int command) {
    auto* shortcut = new QShortcut(keys, this);
    connect(shortcut, &QShortcut::activated, this, [this, command] { logic_.Command(command); });
}

void LPlayAndSplitWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        logic_.Command(pcStop);
        return;
    case Qt::Key_Enter:
        logic_.Command(pcClose);
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (!event->isAutoRepeat())
            logic_.Command(event->key() == Qt::Key_Left ? pcBackKey : pcForwardKey);
        return;
    default:
        QDialog::keyPressEvent(event);
    }
}

void LPlayAndSplitWindow::keyReleaseEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) && !event->isAutoRepeat()) {
        logic_.Command(event->key() == Qt::Key_Left ? pcBackUp : pcForwardUp);
        return;
    }
    QDialog::keyReleaseEvent(event);
}

void LPlayAndSplitWindow::done(int result) {
    LUserSettingSetString(kGeometrySection, "Geometry", saveGeometry().toBase64().toStdString().c_str());
    QDialog::done(result);
}

void LPlayAndSplitWindow::SetTrackLengthText(const std::string& text) {
    length_->setText(QString::fromStdString(text));
}

void LPlayAndSplitWindow::SetTimeText(const std::string& text) {
    time_->setText(QString::fromStdString(text));
}

void LPlayAndSplitWindow::SetSlider(int percent) {
    if (position_->isSliderDown()) return;
    const QSignalBlocker quiet(position_);
    position_->setValue(percent);
}

void LPlayAndSplitWindow::SetLevel(const LDBMC& level) {
    meter_->SetLevel(level);
}

void LPlayAndSplitWindow::ClearLevel() {
    meter_->Clear();
}

void LPlayAndSplitWindow::ControlsChanged() {
    const bool playing = logic_.IsPlaying() && logic_.GetScan() == LPlayerBaseDlg::Scan::None;
    Button(pcPlay)->setEnabled(!playing);
    Button(pcPause)->setEnabled(playing);
}

void LPlayAndSplitWindow::CursorChanged() {
    wave_->update();
}

void LPlayAndSplitWindow::SplitPointsChanged() {
    const QSignalBlocker quiet(points_);
    points_->clear();
    for (const std::string& point : logic_.SplitPoints())
        points_->addItem(QString::fromStdString(point));
    points_->setCurrentIndex(logic_.SelectedPoint());
    Button(pcRemovePoint)->setEnabled(!logic_.SplitPoints().empty());
    wave_->SetMarks(logic_.SplitFrames());
}

void LPlayAndSplitWindow::ShowSplitTip(const char* text) {
    QPushButton* split = Button(pcSplit);
    QToolTip::showText(split->mapToGlobal(QPoint(0, split->height())), text, split);
}

void LPlayAndSplitWindow::Close() {
    accept();
}

bool VNPlay(QWidget* parent, const std::string& path, LVNPlayDlg::SplitRequest split,
            LVNPlayDlg::ReloadList reload) {
    // A file that vanished opens the window, which says so; one that is there but unplayable
    // is the caller's to report.
    std::error_code error;
    if (std::filesystem::exists(path, error) &&
        LVinoraPlayerInfo(path).OpenSource()->GetError() != sndErrNone)
        return false;
    LPlayAndSplitWindow window(path, std::move(split), std::move(reload), parent);
    window.Start();
    window.exec();
    return true;
}
