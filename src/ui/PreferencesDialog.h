#pragma once

#include "app/Preferences.h"
#include "ui/RestoreSwitchBoxes.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <string>

class LDBDisplay2;
class LDevicePicker;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;

// The preferences: the general page and the "Audio Settings" page in one tabbed sheet, stored
// together on OK.
class LPreferencesDialog : public QDialog {
public:
    // `setOutputFolder` hands the recordings folder to the main window (false: refused).
    LPreferencesDialog(QWidget* parent, const std::string& outputFolder,
                       std::function<bool(const std::string&)> setOutputFolder);

    QTabWidget* Tabs() const { return tabs_; }
    void accept() override;
    void done(int result) override;

private:
    QWidget* GeneralPage(const std::string& outputFolder);
    QWidget* AudioPage();

    LGeneralPage general_;
    LAudioSettingsPage audio_;
    QTabWidget* tabs_;
    QCheckBox* deleteFiles_;
    QComboBox* outputFolder_;
    LDevicePicker* device_;
    QSpinBox* volume_;
    LDBDisplay2* meter_;
    QCheckBox* recordTone_;
    QCheckBox* useMinTime_;
    QSpinBox* minTime_;
    QComboBox* source_;
    QComboBox* speed_;
    QLineEdit* copyFolder_;
    QPushButton* browse_;
    QCheckBox* makeCopy_;
    QComboBox* amp_;
    QSpinBox* noiseFloor_;
    QComboBox* format_;
    std::unique_ptr<LRestoreSwitchBoxes> tools_;
};
