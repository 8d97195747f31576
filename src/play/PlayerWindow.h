#pragma once

#include "play/SoundPlayDevice.h"
#include "play/SoundPlayer.h"
#include "play/SoundPlayerNotify.h"
#include "play/WaveControl.h"
#include "sound/DB.h"
#include "sound/SoundSource.h"
#include "sound/SoundTime.h"

#include <functional>
#include <string>
#include <vector>

// The file the play-and-split window plays.
struct LVinoraPlayerInfo {
    explicit LVinoraPlayerInfo(std::string path);

    // 1: the split window, without previous- and next-track buttons.
    unsigned options = 1;
    // The file name without its folder.
    std::string displayName;
    std::string path;

    // Opens the file as MP3 when its extension is exactly ".mp3", as a wave file when it is
    // exactly ".wav"; any other file gives a closed source.
    LSoundSource OpenSource() const;
};

// The commands of the play-and-split window and the keys that give them (see the view).
enum LPlayerCommand : int {
    pcVolume = 103,
    pcPlay = 108,      // F5, F9
    pcPause = 109,     // F6, F10, space
    pcStop = 110,      // Escape
    pcStart = 111,     // Home
    pcBackKey = 112,   // left arrow held down
    pcForwardKey = 113, // right arrow held down
    pcEnd = 114,       // End
    pcSlider = 119,
    pcClose = 122,     // Ctrl+W, keypad Enter
    pcPlayEnd = 123,
    pcBackUp = 1000,
    pcBackDown = 1001,
    pcForwardUp = 1002,
    pcForwardDown = 1003,
    pcDevice = 1004,
    pcBackDown2 = 1101,
    pcForwardUp2 = 1102,
    pcForwardDown2 = 1103,
    pcAddCursorPoint = 2002,
    pcRemovePoint = 2003,
    pcSplit = 2004,
};

// What the window's logic plays through: the sound player, or a stand-in in tests.
class LPlayerOutput {
public:
    virtual ~LPlayerOutput() = default;
    virtual bool Start(LSoundSource& source) = 0;
    virtual void Stop() = 0;
    virtual bool IsPlaying() const = 0;
    virtual void SetPlayVolume(LDB db) = 0;
    virtual void SetDevice(const LSoundPlayDevice& device) = 0;
    virtual void SetListener(LSoundPlayerNotify* listener, long user) = 0;
};

// The sound player on the chosen output device.
class LSoundPlayerOutput final : public LPlayerOutput {
public:
    bool Start(LSoundSource& source) override { return player_.Start(source); }
    void Stop() override { player_.Stop(); }
    bool IsPlaying() const override { return player_.IsPlaying(); }
    void SetPlayVolume(LDB db) override { player_.SetPlayVolume(db); }
    void SetDevice(const LSoundPlayDevice& device) override { player_.SetDevice(device); }
    void SetListener(LSoundPlayerNotify* listener, long user) override {
        player_.SetListener(listener, user);
    }

private:
    LSoundPlayer player_;
};

// What the window's logic asks of the window that shows it.
class LPlayerView {
public:
    virtual void SetTrackLengthText(const std::string& text) = 0;
    virtual void SetTimeText(const std::string& text) = 0;
    virtual void SetSlider(int percent) = 0;
    virtual void SetLevel(const LDBMC& level) = 0;
    // The meter shows silence.
    virtual void ClearLevel() = 0;
    // Playing, paused or scanning changed.
    virtual void ControlsChanged() = 0;
    // The wave cursor moved.
    virtual void CursorChanged() = 0;
    virtual void SplitPointsChanged() = 0;
    // A tip shown at the split button.
    virtual void ShowSplitTip(const char* text) = 0;
    virtual void Close() = 0;

protected:
    ~LPlayerView() = default;
};

// The player window: transport, position, volume, output device, scanning with the speed stage
// and the scrolling waveform that follows the position.
class LPlayerBaseDlg : public LSoundPlayerNotify {
public:
    enum class Scan { None, Back, Forward };

    LPlayerBaseDlg(LVinoraPlayerInfo& info, LPlayerOutput& output, LPlayerView& view);
    ~LPlayerBaseDlg() override;
    LPlayerBaseDlg(const LPlayerBaseDlg&) = delete;
    LPlayerBaseDlg& operator=(const LPlayerBaseDlg&) = delete;

    // A command of the window; `value` is the slider's position, the volume in dB or the
    // device's list index.
    virtual void Command(int id, int value = 0);

    // Shows the time: the time text, the slider, the wave cursor and a two-second waveform view
    // from one second before the cursor.
    void SetTime(LSoundTime time);

    LSoundTime GetTime() const { return time_; }
    LSoundTime GetLength() const { return length_; }
    int GetSampleRate() const { return sampleRate_; }
    bool IsPlaying() const { return output_.IsPlaying(); }
    bool IsPaused() const { return paused_; }
    Scan GetScan() const { return scan_; }
    LWaveControl& Wave() { return wave_; }
    // The output devices and the index of the chosen one.
    const std::vector<LSoundPlayDeviceListItem>& Devices() const { return devices_; }
    int DeviceIndex() const { return device_.GetIndex(); }

    void spntfTime(LSoundTime time, long user) override;
    void spntfLevel(const LDBMC& level, long user) override;
    void spntfStop(long user) override;

protected:
    // Opens the source for the window: its length and rate, the waveform scan.
    bool OpenFile();
    bool CmPlay();

    LVinoraPlayerInfo& info_;
    LPlayerOutput& output_;
    LPlayerView& view_;
    LWaveControl wave_;
    LSoundTime time_;
    LSoundTime length_;
    int sampleRate_ = 44100;
    int endFrame_ = 0;

private:
    enum class AfterScan { StayStopped, StayPaused, PlayOn };

    void ScanStart(bool back);
    void ScanStop();

    bool paused_ = false;
    Scan scan_ = Scan::None;
    AfterScan afterScan_ = AfterScan::StayStopped;
    std::vector<LSoundPlayDeviceListItem> devices_;
    LSoundPlayDevice device_;
};

// The play-and-split window: the player with split points set from the waveform.
class LVNPlayDlg : public LPlayerBaseDlg {
public:
    using SplitRequest = std::function<void(const std::string& path, const std::vector<int>& positions)>;
    using ReloadList = std::function<void()>;

    LVNPlayDlg(LVinoraPlayerInfo& info, LPlayerOutput& output, LPlayerView& view,
               SplitRequest split, ReloadList reload);

    // Opening: a vanished file is reported and the list reloaded (the window stays empty);
    // otherwise the length is shown, the waveform scanned and playing starts.
    void InitDialog();
    void Command(int id, int value = 0) override;

    // A click on the waveform at pixel column x sets the wave cursor.
    void OnWaveClick(int x);
    void SelectPoint(int index);

    const std::vector<std::string>& SplitPoints() const { return points_; }
    // The split points as frames of the file, in list order.
    std::vector<int> SplitFrames() const;
    int SelectedPoint() const { return selected_; }

private:
    void CmAddCursorPoint();
    void CmRemovePoint();
    void CmSplit();

    SplitRequest split_;
    ReloadList reload_;
    std::vector<std::string> points_;
    int selected_ = -1;
};
