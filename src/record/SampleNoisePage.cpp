#include "record/SampleNoisePage.h"

#include "jobs/UserInteraction.h"
#include "platform/ProgramInfo.h"
#include "platform/Settings.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kRate = 44100;
const char* const kSection = "Settings";

} // namespace

LSampleNoisePage::LSampleNoisePage(LSampleNoiseView& view) : view_(view), recorder_(this) {
    storedFloor_ = LUserSettingGet<int>(kSection, "dBNoiseFloor", -25);
    custom_ = LUserSettingGet<bool>(kSection, "CustomNoiseFloor", false);
    status_ = custom_ ? kCustomNoiseFloorText : LNoiseFloorText(storedFloor_);
    lastSet_ = LLastNoiseFloorText();
}

LSampleNoisePage::~LSampleNoisePage() {
    recorder_.Stop();
}

bool LSampleNoisePage::StartRecorder() {
    recorder_.Stop();
    inputEnded_ = false;
    recorder_.GetLowLevel().SetDevice(
        device_.value_or(LSettingGetSoundRecordDevice(kSection, "SoundInDevice")));
    recorder_.GetLowLevel().SetVolume(
        static_cast<int8_t>(std::clamp(LUserSettingGet<int>("Recording", "Volume", -20), -127, 127)));
    sink_ = LSoundSinkStub{kRate, 2}.OpenSink();
    return recorder_.Start(sink_, LSoundTime(216'000'000), LDB::kSilence, LSoundTime(0),
                           paced_ ? srfPaced : 0);
}

void LSampleNoisePage::CmMeasure() {
    // Without input no level would ever arrive and the measurement would never end.
    if (inputEnded_) {
        UserInteraction().ShowMessage(kProgramName,
                                      "The sound input has stopped, so there is nothing to "
                                      "measure. Check the input, then open this page again to "
                                      "restart it.",
                                      LMessageButtons::Ok);
        return;
    }
    measure_.Start(sink_->GetPosition());
    view_.Refresh();
}

bool LSampleNoisePage::CmOk(bool custom, int floor) {
    LUserSettingSet<bool>(kSection, "CustomNoiseFloor", custom);
    if (!custom) return true;
    if (LIsUnusualNoiseFloor(floor) &&
        UserInteraction().ShowMessage(kProgramName, kUnusualNoiseFloorQuestion,
                                      LMessageButtons::OkCancel) != LMessageAnswer::Ok)
        return false;
    LUserSettingSet<int>(kSection, "dBNoiseFloor", floor);
    return true;
}

void LSampleNoisePage::srntfStop(long) {
    inputEnded_ = true;
    if (!measure_.IsMeasuring()) return;
    measure_.Cancel();
    status_ = custom_ ? kCustomNoiseFloorText : LNoiseFloorText(storedFloor_);
    view_.Refresh();
    UserInteraction().ShowMessage(kProgramName,
                                  "The sound input stopped before the noise floor could be "
                                  "measured. Check the input and measure again.",
                                  LMessageButtons::Ok);
}

void LSampleNoisePage::srntfLevel(const LDBMC& levels, long) {
    view_.Levels(levels);
    char text[64];
    std::snprintf(text, sizeof text, "Current Volume Level: %d dB", static_cast<int>(levels.GetMonoDB()));
    levelText_ = text;
    switch (measure_.OnLevel(levels, sink_->GetPosition(), kRate)) {
    case LNoiseFloorMeasure::State::Idle:
        break;
    case LNoiseFloorMeasure::State::Sampling:
        status_ = kNoiseSamplingText;
        break;
    case LNoiseFloorMeasure::State::Done:
        status_ = LNoiseFloorText(measure_.Floor());
        storedFloor_ = measure_.Floor();
        view_.Refresh();
        if (measure_.SignalDetected() && !LUserSettingGet<bool>(kSection, "dBNoiseFloorWarning", false)) {
            const bool never = UserInteraction().ShowWarningWithCheck(
                kNoiseFloorWarningTitle, kNoiseFloorWarningText, kNoiseFloorWarningCheck);
            LUserSettingSet<bool>(kSection, "dBNoiseFloorWarning", never);
        }
        break;
    }
    view_.Refresh();
}
