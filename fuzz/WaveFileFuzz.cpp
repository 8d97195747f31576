// Feeds arbitrary bytes to the wave file reader: the RIFF chunk walk, the PCM and IMA ADPCM
// sources and the codec name lookup.
#include "FuzzFile.h"

#include "codecs/WaveFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = FuzzFilePath(data, size);
    if (path.empty())
        return 0;
    FuzzExerciseSource(LWaveFile::OpenSource(path.c_str()), 1 << 16);
    char name[260];
    LGetWaveFileCodecName(name, path.c_str());
    return 0;
}
