#pragma once

#include "codecs/Mp3EncodeSettings.h"
#include "jobs/UserInteraction.h"

#include <string>

// What the "MP3 Encoder Settings" dialog does, without the window: the values of its controls,
// which of them can be changed, "Restore Defaults", the checks on OK and what OK stores. A view
// shows the controls and forwards the user's choices; messages go through the user
// interaction.
//
// Controls: the "Constant Bitrate (CBR)" choice with its "Bitrate (kbps):" list and the
// high-quality check box, enabled only while CBR is chosen; the "Variable Bitrate (VBR)"
// choice with its "Minimum Bitrate (kbps):", "Maximum Bitrate (kbps):" and "Quality:" lists,
// enabled only while VBR is chosen; under "Other" the "Stereo Encoding" list and the check box
// "Include CRC to detect errors".
class LMp3EncodeDlg {
public:
    static constexpr const char* kTitle = "MP3 Encoder Settings";
    static constexpr int kWidth = 540;
    static constexpr int kHeight = 400;
    static constexpr const char* kBitRateItems[] = {"8",   "16",  "24",  "32",  "40",  "48",
                                                    "56",  "64",  "80",  "96",  "112", "128",
                                                    "160", "192", "224", "256", "320"};
    static constexpr const char* kQualityItems[] = {"0 (Highest)", "1", "2", "3", "4",
                                                    "5",           "6", "7", "8", "9 (Lowest)"};
    static constexpr const char* kStereoItems[] = {"Stereo", "Joint", "Force", "Mono"};

    static constexpr const char* kRangeTooWideText =
        "Your VBR Minimum and Maximum Bitrates are too far apart, which will cause problems "
        "with the encoder. You must raise the minimum rate above 32 or the maximum rate below "
        "160.";
    static constexpr const char* kMaxBelowMinText =
        "Your VBR Maximum Bitrate cannot be smaller than the Minimum Bitrate.";

    // The control OK found wrong, for the view to mark.
    enum InvalidControl { invalidNone, invalidVbrMax };

    // Shows the record's values; OK stores into it.
    explicit LMp3EncodeDlg(LMp3EncodeSettings& record);

    bool IsConstantBitRate() const { return constantBitRate_; }
    void SetConstantBitRate(bool cbr) { constantBitRate_ = cbr; }
    bool IsCbrEnabled() const { return constantBitRate_; }
    bool IsVbrEnabled() const { return !constantBitRate_; }

    // Bit rates as the lists show them, one of kBitRateItems (or a stored rate not in it).
    const std::string& GetCbrBitRate() const { return cbrBitRate_; }
    void SetCbrBitRate(const std::string& text) { cbrBitRate_ = text; }
    const std::string& GetVbrMinBitRate() const { return vbrMinBitRate_; }
    void SetVbrMinBitRate(const std::string& text) { vbrMinBitRate_ = text; }
    const std::string& GetVbrMaxBitRate() const { return vbrMaxBitRate_; }
    void SetVbrMaxBitRate(const std::string& text) { vbrMaxBitRate_ = text; }

    bool GetHighQuality() const { return highQuality_; }
    void SetHighQuality(bool on) { highQuality_ = on; }
    // Index into kQualityItems.
    int GetQualityItem() const { return qualityItem_; }
    void SetQualityItem(int item) { qualityItem_ = item; }
    // Index into kStereoItems.
    int GetStereoItem() const { return stereoItem_; }
    void SetStereoItem(int item) { stereoItem_ = item; }
    bool GetErrorProtection() const { return errorProtection_; }
    void SetErrorProtection(bool on) { errorProtection_ = on; }

    // CBR at 128 kbps with high quality, VBR from 32 to 128 kbps at quality 4, no CRC, "Joint".
    void RestoreDefaults();

    // OK: reads the controls back. A VBR range the encoder cannot keep, or one whose maximum is
    // below its minimum, is refused with a message and the dialog stays open (false).
    // Otherwise the record gets the values and is stored as the user's settings (true).
    bool Ok(LUserInteraction& user);
    InvalidControl GetInvalidControl() const { return invalidControl_; }

private:
    void Show(const LMp3EncodeSettings& values);

    LMp3EncodeSettings& record_;
    bool constantBitRate_ = true;
    std::string cbrBitRate_;
    bool highQuality_ = true;
    std::string vbrMinBitRate_;
    std::string vbrMaxBitRate_;
    int qualityItem_ = 4;
    int stereoItem_ = 0;
    bool errorProtection_ = false;
    InvalidControl invalidControl_ = invalidNone;
};
