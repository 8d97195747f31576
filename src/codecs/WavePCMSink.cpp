#include "codecs/WavePCMSink.h"

#include "codecs/WaveFileFormat.h"

#include <cstring>

size_t WriteHeaderWave(const LRawFileDataSoundSinkBase& sink, bool final, uint8_t* out) {
    using Header = LWaveFileFormat::WAVEOUTFILEHDR;
    const Header header(sink.GetChannels(), sink.GetSampleRate(), sink.GetBytesPerSample() * 8,
                        final ? sink.GetDataBytes() : Header::kUnknownDataBytes);
    std::memcpy(out, header.bytes, Header::kSize);
    return Header::kSize;
}
