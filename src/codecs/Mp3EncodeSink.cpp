#include "codecs/Mp3EncodeSink.h"

#include "codecs/Mp3EncodeCommand.h"
#include "codecs/Pipe16Sink.h"
#include "platform/Log.h"

LSoundSink OpenMp3Sink(const char* path, const LMp3EncodeSettings& settings, int sampleRate,
                       unsigned char channels) {
    char command[kMp3CommandLineSize];
    int sinkRate = 0;
    unsigned char sinkChannels = 0;
    if (!Mp3CreateEncoderCommandLine(command, sinkRate, sinkChannels, path, settings, sampleRate,
                                     channels)) {
        LOGERROR("The MP3 encoder is not installed");
        return LSoundSink();
    }
    return LSoundSink(new LPipe16Sink(command, sinkRate, sinkChannels, path));
}
