#pragma once

// The published IMA ADPCM tables: 89 step sizes and the step index change of each 4-bit code.
extern const int _LIMAStepTable[89];
extern const int _LIMAIndexTab4[16];

// The IMA ADPCM decoder state: the predicted sample and the index of the current step size.
class LIMAADPCM {
public:
    // Starts a block: its header holds the first sample and the step index (above 88 is 88).
    void Reset(int predictor, int stepIndex);
    // Decodes one 4-bit code; returns the sample in the internal scale (16 units per step).
    int DecodeSample(unsigned char code);

    int GetPredictor() const { return predictor_; }
    int GetStepIndex() const { return stepIndex_; }

private:
    int predictor_ = 0;
    int stepIndex_ = 0;
};
