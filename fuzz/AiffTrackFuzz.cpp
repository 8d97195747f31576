// Feeds arbitrary bytes to the audio CD track reader: the AIFF chunk walk and the producer that
// turns the samples into CD frames.
#include "FuzzFile.h"

#include "disc/AudioCDTrackFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = FuzzFilePath(data, size);
    LAudioTrackRef track;
    if (path.empty() || !ParseAiffTrack(path, track))
        return 0;
    TrackLengthBlocks(track);
    std::vector<uint8_t> out(4 * kAudioBlockBytes);
    if (sampleTrackProducerCallback(track, kProducerPreBurn, nullptr) == 0) {
        LTrackProductionInfo info{out.data(), uint32_t(out.size()), 0};
        for (int i = 0; i < 4 && sampleTrackProducerCallback(track, kProducerProduce, &info) == 0 &&
                        info.producedBytes > 0;
             ++i) {
        }
    }
    sampleTrackProducerCallback(track, kProducerPostBurn, nullptr);
    return 0;
}
