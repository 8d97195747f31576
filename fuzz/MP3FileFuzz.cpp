// Feeds arbitrary bytes to the MP3 decoder: tag skipping, the header search, the VBR header,
// side information, scale factors, Huffman data, the bit reservoir and seeking.
#include "FuzzFile.h"

#include "codecs/MP3File.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = FuzzFilePath(data, size);
    if (path.empty())
        return 0;
    // One frame from the start, then the seeks: the decoder itself has a target of its own, fed
    // from memory. The codec name is left out: it only opens the same source again.
    FuzzExerciseSource(LMP3File::OpenSource(path.c_str()), 2 * 1152);
    return 0;
}
