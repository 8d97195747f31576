#pragma once

#include "restore/RestoreChoices.h"

#include <vector>

class QCheckBox;
class QWidget;

// The six restoration switches as check boxes, for the setup wizard and the preferences alike.
// Each box is bound to its member of LRestoreChoices.
class LRestoreSwitchBoxes {
public:
    explicit LRestoreSwitchBoxes(QWidget* parent);

    void Show(const LRestoreChoices& choices);
    void Store(LRestoreChoices& choices) const;
    // The boxes in the order of RestoreSwitches(), to be placed by the page.
    const std::vector<QCheckBox*>& Boxes() const { return boxes_; }
    QCheckBox* Box(bool LRestoreChoices::*member) const;

private:
    std::vector<QCheckBox*> boxes_;
};
