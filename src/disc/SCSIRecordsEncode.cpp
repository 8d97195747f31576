#include "disc/SCSIRecords.h"

#include "disc/SCSIBytes.h"

#include <cstring>

void WriteParamModePage::Encode(uint8_t (&page)[kSize]) const {
    std::memset(page, 0, sizeof page);
    page[0] = 0x05;
    page[1] = kSize - 2;
    page[2] = static_cast<uint8_t>(bufferUnderrunFree << 6 | linkSizeValid << 5 | testWrite << 4 |
                                   (writeType & 0x0F));
    page[3] = static_cast<uint8_t>(multiSession << 6 | fixedPacket << 5 | copy << 4 |
                                   (trackMode & 0x0F));
    page[4] = dataBlockType & 0x0F;
    page[5] = linkSize;
    page[7] = applicationCode & 0x3F;
    page[8] = sessionFormat;
    MMCPut32(page + 10, packetSize);
    MMCPut16(page + 14, audioPause);
    std::memcpy(page + 16, mediaCatalogNumber, 16);
    std::memcpy(page + 32, isrc, 16);
    std::memcpy(page + 48, subHeader, 4);
    std::memcpy(page + 52, vendorSpecific, 4);
}

void SFormat::Encode(uint8_t (&list)[kSize]) const {
    std::memset(list, 0, sizeof list);
    list[1] = headerFlags;
    MMCPut16(list + 2, 8);
    MMCPut32(list + 4, descriptor.blocks);
    list[8] = static_cast<uint8_t>(descriptor.formatType << 2);
    MMCPut24(list + 9, descriptor.parameter);
}

void LStreamingDescriptor::Encode(uint8_t (&list)[kSize]) const {
    std::memset(list, 0, sizeof list);
    list[0] = flags;
    MMCPut32(list + 4, startSector);
    MMCPut32(list + 8, endSector);
    MMCPut32(list + 12, readSize);
    MMCPut32(list + 16, readTime);
    MMCPut32(list + 20, writeSize);
    MMCPut32(list + 24, writeTime);
}
