#include "ui/EncoderSettingsDialogs.h"

#include "app/Mp3EncodeDlg.h"
#include "app/WaveEncodeDlg.h"
#include "jobs/UserInteraction.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

template <std::size_t N>
QComboBox* List(const char* const (&items)[N], const char* name, QWidget* parent) {
    auto* list = new QComboBox(parent);
    for (const char* item : items) list->addItem(item);
    list->setAccessibleName(name);
    return list;
}

void Select(QComboBox* list, const std::string& text) {
    if (list->findText(QString::fromStdString(text)) < 0) list->addItem(QString::fromStdString(text));
    list->setCurrentText(QString::fromStdString(text));
}

QDialogButtonBox* OkCancel(QDialog& dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

} // namespace

bool LEditMp3EncoderSettings(QWidget* parent) {
    LMp3EncodeSettings record;
    LMp3EncodeDlg logic(record);
    QDialog dialog(parent);
    dialog.setWindowTitle(LMp3EncodeDlg::kTitle);
    auto* layout = new QVBoxLayout(&dialog);

    auto* cbrBox = new QGroupBox(&dialog);
    auto* cbrForm = new QFormLayout(cbrBox);
    auto* cbr = new QRadioButton("&Constant Bitrate (CBR)", cbrBox);
    auto* cbrRate = List(LMp3EncodeDlg::kBitRateItems, "Bitrate", cbrBox);
    auto* highQuality = new QCheckBox("&High quality", cbrBox);
    cbrForm->addRow(cbr);
    cbrForm->addRow("&Bitrate (kbps):", cbrRate);
    cbrForm->addRow(highQuality);
    layout->addWidget(cbrBox);

    auto* vbrBox = new QGroupBox(&dialog);
    auto* vbrForm = new QFormLayout(vbrBox);
    auto* vbr = new QRadioButton("&Variable Bitrate (VBR)", vbrBox);
    auto* vbrMin = List(LMp3EncodeDlg::kBitRateItems, "Minimum bitrate", vbrBox);
    auto* vbrMax = List(LMp3EncodeDlg::kBitRateItems, "Maximum bitrate", vbrBox);
    auto* quality = List(LMp3EncodeDlg::kQualityItems, "Quality", vbrBox);
    vbrForm->addRow(vbr);
    vbrForm->addRow("M&inimum Bitrate (kbps):", vbrMin);
    vbrForm->addRow("M&aximum Bitrate (kbps):", vbrMax);
    vbrForm->addRow("&Quality:", quality);
    layout->addWidget(vbrBox);

    auto* otherBox = new QGroupBox("Other", &dialog);
    auto* otherForm = new QFormLayout(otherBox);
    auto* stereo = List(LMp3EncodeDlg::kStereoItems, "Stereo encoding", otherBox);
    auto* crc = new QCheckBox("Include C&RC to detect errors", otherBox);
    otherForm->addRow("&Stereo Encoding:", stereo);
    otherForm->addRow(crc);
    layout->addWidget(otherBox);

    const auto show = [&] {
        cbr->setChecked(logic.IsConstantBitRate());
        vbr->setChecked(!logic.IsConstantBitRate());
        Select(cbrRate, logic.GetCbrBitRate());
        Select(vbrMin, logic.GetVbrMinBitRate());
        Select(vbrMax, logic.GetVbrMaxBitRate());
        highQuality->setChecked(logic.GetHighQuality());
        quality->setCurrentIndex(logic.GetQualityItem());
        stereo->setCurrentIndex(logic.GetStereoItem());
        crc->setChecked(logic.GetErrorProtection());
        for (QWidget* control : {static_cast<QWidget*>(cbrRate), static_cast<QWidget*>(highQuality)})
            control->setEnabled(logic.IsCbrEnabled());
        for (QWidget* control : {vbrMin, vbrMax, quality}) control->setEnabled(logic.IsVbrEnabled());
    };
    // The two choices sit in separate boxes: one group keeps them exclusive.
    auto* mode = new QButtonGroup(&dialog);
    mode->addButton(cbr);
    mode->addButton(vbr);
    QObject::connect(cbr, &QRadioButton::toggled, &dialog, [&](bool on) {
        logic.SetConstantBitRate(on);
        show();
    });
    show();

    auto* buttons = OkCancel(dialog);
    auto* defaults = buttons->addButton("Restore &Defaults", QDialogButtonBox::ResetRole);
    QObject::connect(defaults, &QPushButton::clicked, &dialog, [&] {
        logic.RestoreDefaults();
        show();
    });
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        logic.SetCbrBitRate(cbrRate->currentText().toStdString());
        logic.SetVbrMinBitRate(vbrMin->currentText().toStdString());
        logic.SetVbrMaxBitRate(vbrMax->currentText().toStdString());
        logic.SetHighQuality(highQuality->isChecked());
        logic.SetQualityItem(quality->currentIndex());
        logic.SetStereoItem(stereo->currentIndex());
        logic.SetErrorProtection(crc->isChecked());
        if (logic.Ok(UserInteraction())) {
            dialog.accept();
        } else if (logic.GetInvalidControl() == LMp3EncodeDlg::invalidVbrMax) {
            vbrMax->setFocus();
        }
    });
    layout->addWidget(buttons);
    return dialog.exec() == QDialog::Accepted;
}

bool LEditWaveEncoderSettings(QWidget* parent) {
    LWaveFileFormat record = LWaveFileFormat::LoadWavCodecFile(44100, 2);
    LWaveEncodeDlg logic(&record);
    QDialog dialog(parent);
    dialog.setWindowTitle("WAV Encoder");
    auto* form = new QFormLayout(&dialog);
    auto* preset = List(LWaveEncodeDlg::kPresetItems, "Preset", &dialog);
    auto* encoding = List(LWaveEncodeDlg::kEncodingItems, "Encoding", &dialog);
    auto* rate = List(_szStandardSampleRatesList, "Sample rate", &dialog);
    rate->insertItem(0, LWaveEncodeDlg::kAuto);
    auto* channels = List(LWaveEncodeDlg::kChannelItems, "Channels", &dialog);
    form->addRow("&Preset:", preset);
    form->addRow("&Encoding:", encoding);
    form->addRow("Sample &rate (Hz):", rate);
    form->addRow("&Channels:", channels);
    bool showing = false;
    const auto show = [&] {
        showing = true;
        preset->setCurrentIndex(logic.GetPreset());
        encoding->setCurrentIndex(logic.GetEncoding());
        Select(rate, logic.GetRateText());
        channels->setCurrentIndex(logic.GetChannelItem());
        encoding->setEnabled(logic.IsEncodingEnabled());
        rate->setEnabled(logic.IsRateEnabled());
        channels->setEnabled(logic.IsChannelsEnabled());
        showing = false;
    };
    const auto read = [&] {
        if (showing) return;
        logic.SetPreset(preset->currentIndex());
        logic.SetEncoding(encoding->currentIndex());
        logic.SetRateText(rate->currentText().toStdString());
        logic.SetChannelItem(channels->currentIndex());
        show();
    };
    for (QComboBox* list : {preset, encoding, rate, channels})
        QObject::connect(list, &QComboBox::currentIndexChanged, &dialog, read);
    show();
    auto* buttons = OkCancel(dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        logic.Apply(record);
        if (!record.SaveToWavCodecFile()) {
            UserInteraction().ShowError("The wave format could not be stored.");
            return;
        }
        dialog.accept();
    });
    form->addRow(buttons);
    return dialog.exec() == QDialog::Accepted;
}
