#pragma once

#include "play/PlayerWindow.h"

#include <QDialog>

#include <functional>
#include <string>
#include <vector>

class LDBDisplay2;
class LWaveWidget;
class QComboBox;
class QLabel;
class QPushButton;
class QSlider;

// The play-and-split window over LVNPlayDlg: the waveform, the position, transport buttons,
// level, volume and output device, and the split points. Modal above the main window.
class LPlayAndSplitWindow : public QDialog, private LPlayerView {
public:
    LPlayAndSplitWindow(const std::string& path, LVNPlayDlg::SplitRequest split,
                        LVNPlayDlg::ReloadList reload, QWidget* parent);
    ~LPlayAndSplitWindow() override;

    // Opens the file and starts playing.
    void Start();
    LVNPlayDlg& Logic() { return logic_; }
    LWaveWidget* Wave() const { return wave_; }
    QPushButton* Button(int command) const;
    QComboBox* SplitPointList() const { return points_; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void done(int result) override;

private:
    void SetTrackLengthText(const std::string& text) override;
    void SetTimeText(const std::string& text) override;
    void SetSlider(int percent) override;
    void SetLevel(const LDBMC& level) override;
    void ClearLevel() override;
    void ControlsChanged() override;
    void CursorChanged() override;
    void SplitPointsChanged() override;
    void ShowSplitTip(const char* text) override;
    void Close() override;

    QPushButton* AddButton(int command, const QString& text, const char* icon, const QString& tip);
    void AddShortcut(const QKeySequence& keys, int command);

    LVinoraPlayerInfo info_;
    LSoundPlayerOutput output_;
    LVNPlayDlg logic_;
    LWaveWidget* wave_ = nullptr;
    QLabel* length_ = nullptr;
    QLabel* time_ = nullptr;
    QSlider* position_ = nullptr;
    QSlider* volume_ = nullptr;
    QComboBox* devices_ = nullptr;
    QComboBox* points_ = nullptr;
    LDBDisplay2* meter_ = nullptr;
    std::vector<std::pair<int, QPushButton*>> buttons_;
};

// Opens the window on a file; false when the file cannot be played.
bool VNPlay(QWidget* parent, const std::string& path, LVNPlayDlg::SplitRequest split,
            LVNPlayDlg::ReloadList reload);
