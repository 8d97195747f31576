#include "ui/DevicePicker.h"

#include <QComboBox>
#include <QHBoxLayout>

LDevicePicker::LDevicePicker(QWidget* parent, std::function<void()> changed)
    : QWidget(parent), changed_(std::move(changed)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    device_ = new QComboBox(this);
    input_ = new QComboBox(this);
    device_->setAccessibleName("Recording device");
    input_->setAccessibleName("Input");
    device_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    layout->addWidget(device_, 2);
    layout->addWidget(input_, 1);
    connect(device_, &QComboBox::activated, this, [this](int index) {
        choice_.deviceSelected = index;
        LSoundRecordDeviceChanged(choice_);
        FillInputs();
        changed_();
    });
    connect(input_, &QComboBox::activated, this, [this](int index) {
        choice_.inputSelected = index;
        changed_();
    });
}

void LDevicePicker::SetDevice(const LSoundRecordDevice& device) {
    LSoundRecordDeviceInit(choice_, device);
    device_->clear();
    for (const std::string& name : choice_.devices)
        device_->addItem(QString::fromStdString(name));
    device_->setCurrentIndex(choice_.deviceSelected);
    FillInputs();
}

LSoundRecordDevice LDevicePicker::Device() const {
    return LSoundRecordDeviceApply(choice_);
}

void LDevicePicker::FillInputs() {
    input_->clear();
    for (const std::string& name : choice_.inputs)
        input_->addItem(QString::fromStdString(name));
    input_->setCurrentIndex(choice_.inputSelected);
    input_->setEnabled(!choice_.inputs.empty());
}
