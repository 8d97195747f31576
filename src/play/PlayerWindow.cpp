#include "play/PlayerWindow.h"

#include "codecs/AudioFileTypes.h"
#include "jobs/UserInteraction.h"
#include "platform/ProgramInfo.h"
#include "platform/Settings.h"
#include "restore/CueSpeed.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <strings.h>
#include <system_error>

namespace {

constexpr int kEndPlayingMs = 1500;
constexpr int kPlayEndMs = 3000;
constexpr int kScanRampMs = 8000;

struct ScanSpeeds {
    double start;
    double end;
};
constexpr ScanSpeeds kBackFast{-0.5, -7.0};
constexpr ScanSpeeds kBackSlow{-0.1, -3.0};
constexpr ScanSpeeds kForwardFast{1.5, 7.0};
constexpr ScanSpeeds kForwardSlow{0.1, 3.0};

std::string TimeText(LSoundTime time) {
    char text[32];
    time._GetText(text);
    return text;
}

} // namespace

LVinoraPlayerInfo::LVinoraPlayerInfo(std::string filePath)
    : displayName(std::filesystem::path(filePath).filename().string()), path(std::move(filePath)) {}

LSoundSource LVinoraPlayerInfo::OpenSource() const {
    const LAudioFileType* type = LFindAudioFileType(path.c_str(), LNameMatch::exact);
    return type ? type->openSource(path.c_str()) : LSoundSource();
}

LPlayerBaseDlg::LPlayerBaseDlg(LVinoraPlayerInfo& info, LPlayerOutput& output, LPlayerView& view)
    : info_(info), output_(output), view_(view),
      device_(LSettingGetSoundPlayDevice("Player", "Device")) {
    GetSoundPlayDeviceList(devices_);
    output_.SetListener(this, 0);
    output_.SetDevice(device_);
}

LPlayerBaseDlg::~LPlayerBaseDlg() {
    output_.SetListener(nullptr, 0);
    output_.Stop();
    wave_.StopScan();
}

bool LPlayerBaseDlg::OpenFile() {
    LSoundSource source = info_.OpenSource();
    if (source->GetError() != sndErrNone) return false;
    sampleRate_ = source->GetSampleRate();
    endFrame_ = source->GetEndSample();
    length_ = source.GetEnd();
    wave_.SetSource(info_.OpenSource());
    return true;
}

bool LPlayerBaseDlg::CmPlay() {
    LSoundSource source = info_.OpenSource();
    if (source->GetError() != sndErrNone) return false;
    if (time_.GetMS() != 0) source.Seek(time_);
    sampleRate_ = source->GetSampleRate();
    const bool started = output_.Start(source);
    paused_ = false;
    view_.ControlsChanged();
    return started;
}

void LPlayerBaseDlg::SetTime(LSoundTime time) {
    if (time.GetMS() < 0) time = LSoundTime(0);
    time_ = time;
    view_.SetTimeText(TimeText(time));
    const int length = length_.GetMS();
    view_.SetSlider(length > 0 ? static_cast<int>(int64_t{time.GetMS()} * 100 / length) : 0);
    const int cursor = time.GetSamples(sampleRate_);
    wave_.SetCursor(cursor);
    wave_.SetFrame(std::max(0, cursor - sampleRate_), 2 * sampleRate_);
    view_.CursorChanged();
}

void LPlayerBaseDlg::Command(int id, int value) {
    switch (id) {
    case pcPlay:
        CmPlay();
        break;
    case pcPause:
        if (!output_.IsPlaying()) break;
        output_.Stop();
        paused_ = true;
        view_.ControlsChanged();
        break;
    case pcStop:
        output_.Stop();
        paused_ = false;
        SetTime(LSoundTime(0));
        view_.ControlsChanged();
        break;
    case pcStart:
        SetTime(LSoundTime(0));
        if (output_.IsPlaying()) CmPlay();
        break;
    case pcEnd:
        if (output_.IsPlaying()) {
            SetTime(LSoundTime(length_.GetMS() - kEndPlayingMs));
            CmPlay();
        } else {
            SetTime(length_);
        }
        break;
    case pcPlayEnd:
        SetTime(LSoundTime(length_.GetMS() - kPlayEndMs));
        CmPlay();
        break;
    case pcBackKey:
    case pcBackDown:
    case pcBackDown2:
        ScanStart(true);
        break;
    case pcForwardKey:
    case pcForwardDown:
    case pcForwardDown2:
        ScanStart(false);
        break;
    case pcBackUp:
    case pcForwardUp:
    case pcForwardUp2:
        ScanStop();
        break;
    case pcSlider: {
        const bool playing = output_.IsPlaying();
        SetTime(LSoundTime(static_cast<int32_t>(value * 0.01 * length_.GetMS())));
        if (playing) CmPlay();
        break;
    }
    case pcVolume:
        output_.SetPlayVolume(LDB(static_cast<int8_t>(std::clamp(value, -127, 127))));
        break;
    case pcDevice: {
        device_ = LSoundPlayDevice(value);
        LSettingSetSoundPlayDevice("Player", "Device", device_);
        const bool playing = output_.IsPlaying();
        output_.Stop();
        output_.SetDevice(device_);
        if (playing) CmPlay();
        break;
    }
    case pcClose:
        view_.Close();
        break;
    default:
        break;
    }
}

void LPlayerBaseDlg::ScanStart(bool back) {
    if (scan_ != Scan::None) return;
    bool slow = false;
    if (output_.IsPlaying()) {
        afterScan_ = AfterScan::PlayOn;
    } else if (paused_) {
        afterScan_ = AfterScan::StayPaused;
        slow = true;
    } else {
        afterScan_ = AfterScan::StayStopped;
    }
    output_.Stop();
    LSoundSource source = info_.OpenSource();
    if (source->GetError() != sndErrNone) return;
    source.Seek(LSoundTime(std::max(0, time_.GetMS())));
    const ScanSpeeds speeds = back ? (slow ? kBackSlow : kBackFast) : (slow ? kForwardSlow : kForwardFast);
    LSoundSource staged = LSPSpeed(speeds.start, speeds.end, LSoundTime(kScanRampMs)).OpenSource(source);
    scan_ = back ? Scan::Back : Scan::Forward;
    if (!output_.Start(staged)) scan_ = Scan::None;
    view_.ControlsChanged();
}

void LPlayerBaseDlg::ScanStop() {
    if (scan_ == Scan::None) return;
    scan_ = Scan::None;
    output_.Stop();
    switch (afterScan_) {
    case AfterScan::StayPaused:
        paused_ = true;
        break;
    case AfterScan::PlayOn:
        CmPlay();
        break;
    case AfterScan::StayStopped:
        paused_ = false;
        break;
    }
    view_.ControlsChanged();
}

void LPlayerBaseDlg::spntfTime(LSoundTime time, long) {
    SetTime(time);
}

void LPlayerBaseDlg::spntfLevel(const LDBMC& level, long) {
    if (output_.IsPlaying()) view_.SetLevel(level);
}

void LPlayerBaseDlg::spntfStop(long) {
    view_.ClearLevel();
    view_.ControlsChanged();
    ScanStop();
}

LVNPlayDlg::LVNPlayDlg(LVinoraPlayerInfo& info, LPlayerOutput& output, LPlayerView& view,
                       SplitRequest split, ReloadList reload)
    : LPlayerBaseDlg(info, output, view), split_(std::move(split)), reload_(std::move(reload)) {}

void LVNPlayDlg::InitDialog() {
    std::error_code error;
    if (!std::filesystem::exists(info_.path, error)) {
        char text[512];
        std::snprintf(text, sizeof text,
                      "This music file path: %s doesn't exist! It must have been removed by "
                      "another program.",
                      info_.path.c_str());
        UserInteraction().ShowMessage(kProgramName, text, LMessageButtons::Ok);
        if (reload_) reload_();
        return;
    }
    if (!OpenFile()) return;
    view_.SetTrackLengthText("Track Length: " + TimeText(length_));
    points_.clear();
    selected_ = -1;
    view_.SplitPointsChanged();
    SetTime(LSoundTime(0));
    CmPlay();
}

void LVNPlayDlg::Command(int id, int value) {
    switch (id) {
    case pcAddCursorPoint:
        CmAddCursorPoint();
        break;
    case pcRemovePoint:
        CmRemovePoint();
        break;
    case pcSplit:
        CmSplit();
        break;
    default:
        LPlayerBaseDlg::Command(id, value);
        break;
    }
}

void LVNPlayDlg::OnWaveClick(int x) {
    wave_.SetCursor(wave_.FrameAtX(x));
    view_.CursorChanged();
}

void LVNPlayDlg::SelectPoint(int index) {
    selected_ = index >= 0 && index < static_cast<int>(points_.size()) ? index : -1;
}

void LVNPlayDlg::CmAddCursorPoint() {
    const int cursor = wave_.GetCursor();
    const char* refusal = nullptr;
    if (cursor <= 0)
        refusal = "Sorry, you can't add a cursor at the start because splitting here would only "
                  "create an empty track.";
    else if (cursor == endFrame_)
        refusal = "Sorry, you can't add a cursor at the end because splitting here would only "
                  "create an empty track.";
    if (refusal) {
        UserInteraction().ShowMessage("Add Cursor Point", refusal, LMessageButtons::Ok);
        return;
    }
    if (cursor > endFrame_) return;
    const std::string text = TimeText(LSoundTime::FromSamples(cursor, sampleRate_));
    const auto same = [&text](const std::string& point) {
        return strcasecmp(point.c_str(), text.c_str()) == 0;
    };
    if (std::any_of(points_.begin(), points_.end(), same)) return;
    points_.push_back(text);
    selected_ = static_cast<int>(points_.size()) - 1;
    view_.SplitPointsChanged();
}

void LVNPlayDlg::CmRemovePoint() {
    if (selected_ < 0) return;
    points_.erase(points_.begin() + selected_);
    selected_ = points_.empty() ? -1 : 0;
    view_.SplitPointsChanged();
}

std::vector<int> LVNPlayDlg::SplitFrames() const {
    std::vector<int> frames;
    for (const std::string& point : points_) {
        LSoundTime time;
        time.SetText(point.c_str());
        frames.push_back(time.GetSamples(sampleRate_));
    }
    return frames;
}

void LVNPlayDlg::CmSplit() {
    if (points_.empty()) {
        view_.ShowSplitTip("Please add one or more split points");
        return;
    }
    std::vector<int> positions = SplitFrames();
    std::sort(positions.begin(), positions.end());
    if (split_) split_(info_.path, positions);
}
