#pragma once

class QWidget;

// The encoder settings windows: "MP3 Encoder Settings" and "WAV Encoder". Each stores the
// user's choices on OK and returns whether it did.
bool LEditMp3EncoderSettings(QWidget* parent);
bool LEditWaveEncoderSettings(QWidget* parent);
