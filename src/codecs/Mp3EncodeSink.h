#pragma once

#include "codecs/Mp3EncodeSettings.h"
#include "sound/SoundSink.h"

// A sink that encodes what it is given into the MP3 file at `path`, through the encoder
// component with the settings' command line. Its rate and channel count are those the
// encoder is given (see Mp3CreateEncoderCommandLine), so they may differ from the source's;
// the pump converts. The file is complete once the last handle is released; when the encoder
// failed there is no file then. An error sink (error 1) when the encoder is not installed.
LSoundSink OpenMp3Sink(const char* path, const LMp3EncodeSettings& settings, int sampleRate,
                       unsigned char channels);
