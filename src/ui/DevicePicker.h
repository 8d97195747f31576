#pragma once

#include "record/SoundRecordDeviceChoice.h"

#include <QWidget>

#include <functional>

class QComboBox;

// The recording device and its input as two lists side by side.
class LDevicePicker : public QWidget {
public:
    // `changed` runs when the user picks another device or input.
    LDevicePicker(QWidget* parent, std::function<void()> changed);
    void SetDevice(const LSoundRecordDevice& device);
    LSoundRecordDevice Device() const;

private:
    void FillInputs();

    std::function<void()> changed_;
    LSoundRecordDeviceChoice choice_;
    QComboBox* device_;
    QComboBox* input_;
};
