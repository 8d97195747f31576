#include "ui/RestoreSwitchBoxes.h"

#include <QCheckBox>

namespace {

const char* Text(bool LRestoreChoices::*member) {
    if (member == &LRestoreChoices::dcOffset) return "Remove &DC offset";
    if (member == &LRestoreChoices::highPass) return "&High-pass filter (removes rumble)";
    if (member == &LRestoreChoices::clickPop) return "Remove &clicks and pops";
    if (member == &LRestoreChoices::noiseReduce) return "&Noise reduction";
    if (member == &LRestoreChoices::equalization)
        return "RIAA &equalization (direct phono connection)";
    return "N&ormalize the volume";
}

} // namespace

LRestoreSwitchBoxes::LRestoreSwitchBoxes(QWidget* parent) {
    for (const LRestoreSwitch& step : RestoreSwitches())
        boxes_.push_back(new QCheckBox(Text(step.member), parent));
}

void LRestoreSwitchBoxes::Show(const LRestoreChoices& choices) {
    const auto steps = RestoreSwitches();
    for (size_t i = 0; i < steps.size(); ++i) boxes_[i]->setChecked(choices.*steps[i].member);
}

void LRestoreSwitchBoxes::Store(LRestoreChoices& choices) const {
    const auto steps = RestoreSwitches();
    for (size_t i = 0; i < steps.size(); ++i) choices.*steps[i].member = boxes_[i]->isChecked();
}

QCheckBox* LRestoreSwitchBoxes::Box(bool LRestoreChoices::*member) const {
    const auto steps = RestoreSwitches();
    for (size_t i = 0; i < steps.size(); ++i)
        if (steps[i].member == member) return boxes_[i];
    return nullptr;
}
