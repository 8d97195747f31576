// The virtual MMC drive's answers about itself and the disc: disc and track information,
// capacities, TOC and ATIP, disc structure, features, speeds and mode pages.
#include "drives/VirtualMMCDrive.h"

#include "disc/SCSIBytes.h"

#include <algorithm>
#include <initializer_list>

namespace {

using State = LVirtualDisc::State;

constexpr LSenseBytes kGood{0, 0, 0};
constexpr LSenseBytes kInvalidField{5, 0x24, 0x00};
constexpr LSenseBytes kInvalidParameter{5, 0x26, 0x00};
constexpr LSenseBytes kIncompatibleMedium{5, 0x30, 0x02};
constexpr uint32_t kBlockLength = 2048;
constexpr uint32_t kCDLeadInOffset = 150;  // block 0 of a CD is at 00:02:00
constexpr uint32_t kDVDFirstSector = 0x030000;
constexpr uint32_t kBDFirstSector = 0x100000;
constexpr uint32_t kAtipLeadIn = 0x00611A42; // 97:26:66, the lead-in of a common blank

// A CD address as 00 MM SS FF.
uint32_t MSF(uint32_t block) {
    const uint32_t frames = block + kCDLeadInOffset;
    return (frames / 4500) << 16 | (frames / 75 % 60) << 8 | frames % 75;
}

// Kilobytes per second of "1x", and the write speeds offered, in "x".
struct Speeds {
    uint32_t unit;
    std::vector<uint32_t> factors;
    uint32_t readFactor;
};

Speeds SpeedsOf(LDiscMediaKind media) {
    switch (media) {
    case LDiscMediaKind::CDR:
    case LDiscMediaKind::CDRW: return {177, {4, 8, 16, 24, 48}, 48};
    case LDiscMediaKind::BDR:
    case LDiscMediaKind::BDRE: return {4495, {2, 4, 6}, 8};
    default: return {1385, {2, 4, 8, 16}, 16};
    }
}

// One track as READ TRACK INFORMATION describes it.
struct TrackView {
    uint32_t number = 0;
    uint32_t session = 0;
    uint32_t start = 0;
    uint32_t size = 0;
    uint32_t nextWritable = 0;
    uint32_t free = 0;
    uint32_t recorded = 0; // blocks written in it
    bool nextWritableValid = false;
    bool reserved = false;
};

// The tracks of a sequential disc: the closed ones, the open one, and the invisible track
// that the free area forms until the disc is finalised. A track written without reservation
// is itself the invisible track, grown from its start.
std::vector<TrackView> SequentialTracks(const State& state) {
    std::vector<TrackView> tracks;
    for (const LVirtualTrack& track : state.tracks)
        tracks.push_back({uint32_t(tracks.size() + 1), track.session, track.start, track.size, 0,
                          0, track.size, false, false});
    if (state.status == LVirtualDisc::Status::Complete) return tracks;
    const uint32_t session = state.sessions + 1;
    uint32_t freeStart = state.used;
    if (state.trackOpen && state.trackReserved) {
        const uint32_t end = state.trackStart + state.trackReserved;
        tracks.push_back({uint32_t(tracks.size() + 1), session, state.trackStart,
                          state.trackReserved, state.used, end - state.used,
                          state.used - state.trackStart, true, true});
        freeStart = end;
    }
    const uint32_t start = state.trackOpen && !state.trackReserved ? state.trackStart : freeStart;
    const uint32_t free = state.capacity > freeStart ? state.capacity - freeStart : 0;
    tracks.push_back({uint32_t(tracks.size() + 1), session, start,
                      state.capacity > start ? state.capacity - start : 0, freeStart, free,
                      freeStart - start, true, false});
    return tracks;
}

// A DVD+RW or BD-RE: one track over the whole disc.
TrackView RandomTrack(const State& state) {
    return {1, 1, 0, state.capacity, 0, state.capacity, state.used, false, false};
}

bool RandomBlank(const State& state) {
    return state.format == LVirtualFormat::None && state.used == 0;
}

} // namespace

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadDiscInformation(Call& call) {
    if (call.cdb[1] & 0x07) return kInvalidField;
    const State& state = call.state;
    std::vector<uint8_t> reply(34, 0);
    MMCPut16(&reply[0], 32);
    uint8_t discStatus = 0, lastSessionState = 0;
    uint32_t sessions = 1, firstInLast = 1, lastInLast = 1;
    uint32_t leadIn = 0, leadOut = 0;
    if (!Sequential(state.media)) {
        if (!RandomBlank(state)) discStatus = 2, lastSessionState = 3;
        // Background format: 0 none, 1 started and not complete, 3 complete.
        reply[7] = state.format == LVirtualFormat::Complete  ? 3
                   : state.format == LVirtualFormat::Started ? 1
                                                             : 0;
    } else {
        const std::vector<TrackView> tracks = SequentialTracks(state);
        const bool complete = state.status == LVirtualDisc::Status::Complete;
        const bool blank = state.status == LVirtualDisc::Status::Blank && !state.trackOpen &&
                           state.tracks.empty();
        discStatus = blank ? 0 : complete ? 2 : 1;
        const bool sessionStarted = tracks.size() > state.sessionFirstTrack || state.trackOpen;
        lastSessionState = complete ? 3 : (sessionStarted ? 1 : 0);
        sessions = complete ? state.sessions : state.sessions + 1;
        firstInLast = state.sessionFirstTrack;
        lastInLast = uint32_t(tracks.size());
        const uint32_t sessionStart = tracks[std::min<size_t>(firstInLast, tracks.size()) - 1].start;
        if (complete)
            leadIn = leadOut = 0xFFFFFFFF;
        else if (IsCD(state.media))
            leadIn = blank ? kAtipLeadIn : MSF(sessionStart), leadOut = MSF(state.capacity);
        else
            leadIn = sessionStart, leadOut = state.capacity;
    }
    reply[2] = static_cast<uint8_t>(IsRewritable(state.media) << 4 | lastSessionState << 2 |
                                    discStatus);
    reply[3] = 1;
    reply[4] = uint8_t(sessions), reply[9] = uint8_t(sessions >> 8);
    reply[5] = uint8_t(firstInLast), reply[10] = uint8_t(firstInLast >> 8);
    reply[6] = uint8_t(lastInLast), reply[11] = uint8_t(lastInLast >> 8);
    reply[7] |= 0x20; // unrestricted use
    MMCPut32(&reply[16], leadIn);
    MMCPut32(&reply[20], leadOut);
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadTrackInformation(Call& call) {
    const State& state = call.state;
    const uint8_t addressType = call.cdb[1] & 0x03;
    const uint32_t number = MMCGet32(call.cdb + 2);
    const std::vector<TrackView> tracks =
        Sequential(state.media) ? SequentialTracks(state) : std::vector<TrackView>{RandomTrack(state)};
    const bool invisible = Sequential(state.media) && state.status != LVirtualDisc::Status::Complete;
    const TrackView* found = nullptr;
    for (const TrackView& track : tracks) {
        const bool byNumber = addressType == 1 && (track.number == number ||
                                                   (number == 255 && invisible &&
                                                    &track == &tracks.back()));
        const bool byAddress = addressType == 0 && number >= track.start &&
                               number - track.start < track.size;
        if (byNumber || byAddress) found = &track;
        if (found) break;
    }
    if (!found) return kInvalidField;
    const TrackView& track = *found;
    std::vector<uint8_t> reply(36, 0);
    MMCPut16(&reply[0], 34);
    reply[2] = uint8_t(track.number), reply[32] = uint8_t(track.number >> 8);
    reply[3] = uint8_t(track.session), reply[33] = uint8_t(track.session >> 8);
    reply[5] = IsCD(state.media) ? 0x04 : 0x05; // a data track (recorded incrementally on DVD)
    const bool blank = track.recorded == 0;
    reply[6] = static_cast<uint8_t>(track.reserved << 7 | blank << 6 | (blank ? 0x0F : 0x01));
    reply[7] = static_cast<uint8_t>((track.recorded ? 0x02 : 0) | track.nextWritableValid);
    MMCPut32(&reply[8], track.start);
    MMCPut32(&reply[12], track.nextWritableValid ? track.nextWritable : 0);
    MMCPut32(&reply[16], track.free);
    MMCPut32(&reply[20], IsCD(state.media) ? 0 : 16);
    MMCPut32(&reply[24], track.size);
    MMCPut32(&reply[28], track.recorded ? track.start + track.recorded - 1 : 0);
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadFormatCapacities(Call& call) {
    const State& state = call.state;
    const bool present = !state.trayOpen && state.media != LDiscMediaKind::None;
    std::vector<uint8_t> reply(12, 0);
    uint8_t type = 3; // no disc
    uint32_t blocks = state.capacity;
    if (present && Sequential(state.media)) {
        const bool complete = state.status == LVirtualDisc::Status::Complete;
        type = complete ? 2 : 1;
        if (complete) blocks = state.used;
    } else if (present) {
        type = RandomBlank(state) ? 1 : 2;
    }
    MMCPut32(&reply[4], blocks);
    reply[8] = type;
    MMCPut24(&reply[9], kBlockLength);
    auto add = [&](uint8_t formatType, uint32_t parameter) {
        const size_t at = reply.size();
        reply.resize(at + 8);
        MMCPut32(&reply[at], state.capacity);
        reply[at + 4] = static_cast<uint8_t>(formatType << 2);
        MMCPut24(&reply[at + 5], parameter);
    };
    if (present && state.media == LDiscMediaKind::DVDPlusRW) add(0x26, 0);
    if (present && state.media == LDiscMediaKind::BDRE) {
        add(0x00, 0x3000); // full format with the default spare areas
        add(0x30, 0x3000);
    }
    reply[3] = static_cast<uint8_t>(reply.size() - 4);
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadTocPmaAtip(Call& call) {
    const State& state = call.state;
    const bool msf = call.cdb[1] & 0x02;
    const uint8_t format = call.cdb[2] & 0x0F;
    std::vector<uint8_t> reply(4, 0);
    auto address = [&](uint32_t block) { return msf ? MSF(block) : block; };
    auto add = [&](uint8_t track, uint32_t start) {
        const uint8_t entry[8] = {0, 0x14, track, 0};
        reply.insert(reply.end(), entry, entry + 8);
        MMCPut32(&reply[reply.size() - 4], address(start));
    };
    if (format == 4) {
        if (!IsCD(state.media)) return kInvalidField;
        reply.resize(28, 0);
        reply[4] = 0x50;
        reply[6] = state.media == LDiscMediaKind::CDRW ? 0xC0 : 0x80;
        MMCPut24(&reply[8], kAtipLeadIn);
        MMCPut24(&reply[12], MSF(state.capacity));
    } else if (format == 0 || format == 1) {
        if (state.tracks.empty()) return kInvalidField;
        const LVirtualTrack& last = state.tracks.back();
        if (format == 0) {
            reply[2] = 1;
            reply[3] = uint8_t(state.tracks.size());
            for (size_t i = 0; i < state.tracks.size(); ++i)
                add(uint8_t(i + 1), state.tracks[i].start);
            add(0xAA, last.start + last.size);
        } else {
            reply[2] = 1;
            reply[3] = uint8_t(last.session);
            size_t first = state.tracks.size() - 1;
            while (first > 0 && state.tracks[first - 1].session == last.session) --first;
            add(uint8_t(first + 1), state.tracks[first].start);
        }
    } else {
        return kInvalidField;
    }
    MMCPut16(&reply[0], uint16_t(reply.size() - 2));
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadDiscStructure(Call& call) {
    const State& state = call.state;
    if (IsCD(state.media)) return kIncompatibleMedium;
    const bool bluRay = IsBluRay(state.media);
    if ((call.cdb[1] & 0x0F) != (bluRay ? 1 : 0) || call.cdb[7] != 0) return kInvalidField;
    std::vector<uint8_t> reply(4 + 2048, 0);
    MMCPut16(&reply[0], 2050);
    struct Book {
        LDiscMediaKind media;
        uint8_t book;
        uint8_t layerType;
    };
    static constexpr Book kBooks[] = {
        {LDiscMediaKind::DVDR, 0x21, 0x02},      {LDiscMediaKind::DVDRW, 0x32, 0x04},
        {LDiscMediaKind::DVDPlusRW, 0x92, 0x04}, {LDiscMediaKind::DVDPlusR, 0xA1, 0x02},
        {LDiscMediaKind::BDR, 0x01, 0x02},       {LDiscMediaKind::BDRE, 0x01, 0x04},
    };
    for (const Book& book : kBooks) {
        if (book.media != state.media) continue;
        reply[4] = book.book;
        reply[6] = book.layerType;
    }
    reply[5] = 0x0F; // 120 mm, no maximum rate given
    reply[7] = 0x10;
    const uint32_t first = bluRay ? kBDFirstSector : kDVDFirstSector;
    // A sequential disc describes its whole recordable area; a rewritable one the area that
    // holds data, so that an unused one has none.
    const uint32_t blocks = Sequential(state.media) ? state.capacity : state.used;
    MMCPut24(&reply[9], first);
    MMCPut24(&reply[13], first + blocks - 1);
    Reply(call, reply, MMCGet16(call.cdb + 8));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReadCapacity(Call& call) {
    if (call.state.used == 0) return kIncompatibleMedium;
    std::vector<uint8_t> reply(8, 0);
    MMCPut32(&reply[0], call.state.used - 1);
    MMCPut32(&reply[4], kBlockLength);
    Reply(call, reply, reply.size());
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::GetConfiguration(Call& call) {
    const State& state = call.state;
    const uint16_t profile = ProfileOf(state);
    const bool bluRay = BluRayDrive();
    struct Feature {
        uint16_t code;
        bool current;
        std::vector<uint8_t> data;
    };
    std::vector<uint8_t> profiles;
    std::vector<uint16_t> list = {0x2B, 0x1B, 0x1A, 0x14, 0x13, 0x11, 0x10, 0x0A, 0x09, 0x08};
    if (bluRay) list.insert(list.begin(), {0x43, 0x41, 0x40});
    for (uint16_t each : list) {
        const uint8_t entry[4] = {uint8_t(each >> 8), uint8_t(each), uint8_t(each == profile), 0};
        profiles.insert(profiles.end(), entry, entry + 4);
    }
    const LDiscMediaKind media = profile ? state.media : LDiscMediaKind::None;
    std::vector<Feature> features = {
        {0x0000, true, profiles},
        {0x0001, true, {0, 0, 0, 2, 1, 0, 0, 0}},     // ATAPI, reports disc changes
        {0x0003, true, {0x29, 0, 0, 0}},               // a tray that locks and ejects
        {0x0027, media == LDiscMediaKind::CDRW, {0, 0, 0, 0}},
        {0x002A, media == LDiscMediaKind::DVDPlusRW, {1, 0, 0, 0}},
        {0x002B, media == LDiscMediaKind::DVDPlusR, {1, 0, 0, 0}},
        {0x002F, IsDVDMinus(media), {0x46, 0, 0, 0}}, // buffer under-run free, test, DVD-RW
        {0x003A, false, {0, 0, 0, 0}},                 // no DVD+RW DL writing
        {0x003B, false, {1, 0, 0, 0}},
    };
    if (bluRay) {
        std::vector<uint8_t> classes(0x28, 0);
        classes[5] = classes[21] = 0x02; // BD-RE and BD-R class 0, version 1
        features.push_back({0x0041, IsBluRay(media), classes});
    }
    const uint8_t requestType = call.cdb[1] & 0x03;
    const uint16_t first = MMCGet16(call.cdb + 2);
    std::vector<uint8_t> reply(8, 0);
    MMCPut16(&reply[6], profile);
    for (const Feature& feature : features) {
        const bool wanted = requestType == 2 ? feature.code == first
                            : requestType == 1 ? feature.code >= first && feature.current
                                               : feature.code >= first;
        if (!wanted) continue;
        const bool persistent = feature.code <= 0x0003;
        const uint8_t head[4] = {uint8_t(feature.code >> 8), uint8_t(feature.code),
                                 static_cast<uint8_t>(persistent << 1 | feature.current),
                                 uint8_t(feature.data.size())};
        reply.insert(reply.end(), head, head + 4);
        reply.insert(reply.end(), feature.data.begin(), feature.data.end());
    }
    MMCPut32(&reply[0], uint32_t(reply.size() - 4));
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::GetPerformance(Call& call) {
    const State& state = call.state;
    const bool present = !state.trayOpen && state.media != LDiscMediaKind::None;
    const Speeds speeds = SpeedsOf(present ? state.media : disc_->Options().media);
    const uint32_t fastest = speeds.unit * speeds.factors.back();
    std::vector<uint8_t> reply(8, 0);
    auto add = [&](std::initializer_list<uint32_t> fields) {
        for (uint32_t field : fields) {
            reply.resize(reply.size() + 4);
            MMCPut32(&reply[reply.size() - 4], field);
        }
    };
    const uint8_t type = call.cdb[10];
    if (type == 3) {
        // Write speed descriptors: flags, end block, read and write speed.
        if (present)
            for (uint32_t factor : speeds.factors)
                add({0, state.capacity, speeds.unit * speeds.readFactor, speeds.unit * factor});
    } else if (type == 0) {
        // Nominal performance: start block, start speed, end block, end speed.
        add({0, fastest, state.capacity, fastest});
    } else {
        return kInvalidField;
    }
    MMCPut32(&reply[0], uint32_t(reply.size() - 4));
    Reply(call, reply, size_t{MMCGet16(call.cdb + 8)} * 16 + 8);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ModeSense(Call& call) {
    const uint8_t page = call.cdb[2] & 0x3F;
    std::vector<uint8_t> capabilities(0x1E, 0);
    capabilities[0] = 0x2A;
    capabilities[1] = 0x1C;
    capabilities[2] = 0x3B; // reads CD-R, CD-RW, Mode 2, DVD-ROM, DVD-R
    capabilities[3] = 0x17; // writes CD-R, CD-RW, DVD-R; test writes
    capabilities[6] = 0x29; // a tray that locks and ejects
    const uint16_t cdFastest = uint16_t(177 * 48);
    MMCPut16(&capabilities[8], cdFastest);
    MMCPut16(&capabilities[12], 2048);
    MMCPut16(&capabilities[18], cdFastest);
    MMCPut16(&capabilities[20], cdFastest);
    std::vector<uint8_t> reply(8, 0);
    reply[2] = 0; // medium type
    auto add = [&](const std::vector<uint8_t>& bytes) {
        reply.insert(reply.end(), bytes.begin(), bytes.end());
    };
    if (page == 0x05 || page == 0x3F) add(writePage_);
    if (page == 0x08 || page == 0x3F) add(cachingPage_);
    if (page == 0x2A || page == 0x3F) add(capabilities);
    if (reply.size() == 8) return kInvalidField;
    MMCPut16(&reply[0], uint16_t(reply.size() - 2));
    Reply(call, reply, MMCGet16(call.cdb + 7));
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ModeSelect(Call& call) {
    if (!(call.cdb[1] & 0x10)) return kInvalidField;
    const size_t length = MMCGet16(call.cdb + 7);
    const uint8_t* list = Sent(call, length);
    if (!list || length < 10) return kInvalidField;
    const size_t at = 8 + MMCGet16(list + 6);
    if (at + 2 > length || at + 2 + list[at + 1] > length) return kInvalidParameter;
    const uint8_t* page = list + at;
    const size_t size = size_t{page[1]} + 2;
    const uint8_t code = page[0] & 0x3F;
    if (code == 0x08) {
        cachingPage_.assign(page, page + std::min(size, cachingPage_.size()));
        cachingPage_.resize(0x0C);
        return kGood;
    }
    if (code != 0x05 || size < 0x34) return kInvalidParameter;
    const uint8_t writeType = page[2] & 0x0F;
    const uint8_t blockType = page[4] & 0x0F;
    const LDiscMediaKind media = call.state.trayOpen ? LDiscMediaKind::None : call.state.media;
    // Block types 4 to 7, 14 and 15 are reserved or vendor's; DVD-R/RW record only
    // incrementally or at once, in 2048-byte blocks.
    const bool reservedBlock = (blockType >= 4 && blockType <= 7) || blockType >= 14;
    if (writeType > 3 || reservedBlock) return kInvalidParameter;
    if (IsDVDMinus(media) && ((writeType != 0 && writeType != 2) || blockType != 8))
        return kInvalidParameter;
    writePage_.assign(page, page + std::min<size_t>(size, 0x38));
    writePage_.resize(0x38);
    writePage_[0] = 0x05;
    writePage_[1] = 0x36;
    return kGood;
}
