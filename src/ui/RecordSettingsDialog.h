#pragma once

#include "record/RecordSettings.h"
#include "record/SoundRecordDeviceChoice.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

// The recording options: input device and source, volume, track splitting, tones, the
// minimum length and the copy folder.
class LRecordSettingsDialog : public QDialog {
public:
    explicit LRecordSettingsDialog(QWidget* parent);

    void accept() override;

private:
    void FillInputs();

    LRecordSettings settings_;
    LSoundRecordDeviceChoice choice_;
    QComboBox* device_;
    QComboBox* input_;
    QSpinBox* volume_;
    QSpinBox* splitTime_;
    QCheckBox* audioOnly_;
    QCheckBox* autoSplit_;
    QCheckBox* playback_;
    QCheckBox* recordTone_;
    QCheckBox* stoppedTone_;
    QCheckBox* useMinTime_;
    QLineEdit* minTime_;
    QCheckBox* makeCopy_;
    QLineEdit* copyFolder_;
};
