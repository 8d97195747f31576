#include "record/InputMeter.h"

#include <algorithm>

LInputMeter::LInputMeter(std::function<void(const LDBMC&)> levels)
    : levels_(std::move(levels)), recorder_(this) {}

LInputMeter::~LInputMeter() {
    recorder_.Stop();
}

bool LInputMeter::Start(const LSoundRecordDevice& device, int volume) {
    recorder_.Stop();
    recorder_.GetLowLevel().SetDevice(device);
    recorder_.GetLowLevel().SetVolume(static_cast<int8_t>(std::clamp(volume, -127, 127)));
    sink_ = LSoundSinkStub{44100, 2}.OpenSink();
    return recorder_.Start(sink_, LSoundTime(216'000'000), LDB::kSilence, LSoundTime(0), 0);
}

void LInputMeter::Stop() {
    recorder_.Stop();
    LDBMC silence;
    silence.count = 2;
    silence.values[0] = silence.values[1] = LDB::kSilence;
    levels_(silence);
}

void LInputMeter::srntfLevel(const LDBMC& levels, long) {
    levels_(levels);
}
