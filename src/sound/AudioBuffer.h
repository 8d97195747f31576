#pragma once

#include "sound/DB.h"

// Helpers over interleaved buffers of internal samples (32-bit, 16 units per 16-bit step).

void ClearAudioBuffer(int* buffer, int frames, unsigned char channels);
void ClearAudioBuffer(int* buffer, int count);

// Largest absolute value over all samples.
int GetBufferPeak(const int* buffer, int frames, unsigned char channels);
int GetBufferPeakChan(unsigned char channel, const int* buffer, int frames, unsigned char channels);

// Mean of (x >> 5)^2, computed without 64-bit arithmetic.
unsigned int GetBufferMeanSquare(const int* buffer, int frames, unsigned char channels);
int GetBufferMeanSquareChan(unsigned char channel, const int* buffer, int frames,
                            unsigned char channels);

// Peak level, 0 dB = 131,072, and mean-square level, 0 dB = 8,388,626.
LDB GetBufferPeakDBChan(unsigned char channel, const int* buffer, int frames,
                        unsigned char channels);
LDB GetBufferRMSDBChan(unsigned char channel, const int* buffer, int frames,
                       unsigned char channels);

// Each sample becomes (gain * x) >> 9; 512 is unity.
void GainAudioBufferQuick(int gain, int* buffer, int count);
