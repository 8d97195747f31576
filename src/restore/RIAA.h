#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/SoundSource.h"

#include <array>

// The RIAA playback curve, and the mapping between the equaliser's drawing (x: frequency over a
// given width up to 20 kHz; y: 256 at +6 dB, linear in amplitude) and levels. Each helper returns
// PROCESS_FAILED without computing when the job is to stop.

// freqHz = x / width of 20 kHz; fails for x < 0.
LProcessResult ProcessMapPixelXToFrequency(LProcessInterface& progress, int x, int& freqHz,
                                           unsigned long width);
// The RIAA playback level: +6 dB at 0 Hz, -13.911 dB at 1 kHz; fails for a negative frequency.
LProcessResult ProcessMapFrequencyToDB(LProcessInterface& progress, int freqHz, double& dB);
// The Q24 amplitude of dB rounded to whole decibels (-127..127).
LProcessResult ProcessMapDBToAmplitude(LProcessInterface& progress, double dB, int& amplitude);
// y = amplitude / amplitude(+6 dB) * 256, kept to eight bits; a negative amplitude leaves y.
LProcessResult ProcessMapAmplitudeToPixelY(LProcessInterface& progress, int amplitude,
                                           unsigned char& y);
LProcessResult ProcessMapDBToPixelY(LProcessInterface& progress, double dB, unsigned char& y);

// The RIAA curve as equaliser gain bytes at a sample rate.
LProcessResult ProcessRIAACurve(LProcessInterface& progress, int rate,
                                std::array<unsigned char, 2048>& curve);

// Chain step: replaces the source by the RIAA equaliser on it followed by a gain of +14 dB.
LProcessResult ProcessRIAAEqCalculate(LProcessInterface& progress, LSoundSource& source);
