#include "drives/VirtualDisc.h"

#include "platform/AtomicFile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

struct MediaName {
    LDiscMediaKind kind;
    const char* name;
};

constexpr MediaName kMediaNames[] = {
    {LDiscMediaKind::CDR, "cd-r"},       {LDiscMediaKind::CDRW, "cd-rw"},
    {LDiscMediaKind::DVDR, "dvd-r"},     {LDiscMediaKind::DVDRW, "dvd-rw"},
    {LDiscMediaKind::DVDPlusR, "dvd+r"}, {LDiscMediaKind::DVDPlusRW, "dvd+rw"},
    {LDiscMediaKind::BDR, "bd-r"},       {LDiscMediaKind::BDRE, "bd-re"},
    {LDiscMediaKind::None, "none"},
};

// What a disc loaded as "used" already holds: one minute of audio.
constexpr uint32_t kUsedBlocks = 4500;

bool ParseMedia(const std::string& name, LDiscMediaKind& kind) {
    for (const MediaName& entry : kMediaNames) {
        if (name == entry.name) {
            kind = entry.kind;
            return true;
        }
    }
    return false;
}

bool ParseNumber(const std::string& text, int64_t& value) {
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || number < 0) return false;
    value = number;
    return true;
}

const char* StatusName(LVirtualDisc::Status status) {
    switch (status) {
    case LVirtualDisc::Status::Blank: return "blank";
    case LVirtualDisc::Status::Incomplete: return "incomplete";
    case LVirtualDisc::Status::Complete: return "complete";
    }
    return "blank";
}

// Tracks as "START+SIZE/SESSION" separated by spaces.
bool ParseTracks(const std::string& text, std::vector<LVirtualTrack>& tracks) {
    std::istringstream list(text);
    for (std::string item; list >> item;) {
        const size_t plus = item.find('+');
        const size_t slash = item.find('/');
        int64_t start = 0, size = 0, session = 0;
        if (plus == std::string::npos || slash == std::string::npos || slash < plus ||
            !ParseNumber(item.substr(0, plus), start) ||
            !ParseNumber(item.substr(plus + 1, slash - plus - 1), size) ||
            !ParseNumber(item.substr(slash + 1), session))
            return false;
        tracks.push_back({uint32_t(start), uint32_t(size), uint32_t(session)});
    }
    return true;
}

// The layout lines of a state file; a file without them (written before the drive kept a
// layout) reads as a disc without closed tracks.
bool ParseLayout(std::map<std::string, std::string>& values, LVirtualDisc::State& state,
                 int64_t& sessions, int64_t& firstTrack) {
    if (!values.count("sessions")) return true;
    std::vector<LVirtualTrack> open;
    if (!ParseNumber(values["sessions"], sessions) ||
        !ParseNumber(values["first-track"], firstTrack) ||
        !ParseTracks(values["tracks"], state.tracks) || !ParseTracks(values["open-track"], open))
        return false;
    if (!open.empty()) {
        state.trackOpen = true;
        state.trackStart = open[0].start;
        state.trackReserved = open[0].size;
    }
    const std::string& format = values["format"];
    state.format = format == "complete"  ? LVirtualFormat::Complete
                   : format == "started" ? LVirtualFormat::Started
                                         : LVirtualFormat::None;
    return true;
}

std::string LayoutText(const LVirtualDisc::State& state) {
    std::ostringstream text;
    text << "sessions=" << state.sessions << "\nfirst-track=" << state.sessionFirstTrack
         << "\ntracks=";
    for (size_t i = 0; i < state.tracks.size(); ++i) {
        const LVirtualTrack& track = state.tracks[i];
        text << (i ? " " : "") << track.start << "+" << track.size << "/" << track.session;
    }
    text << "\nopen-track=";
    if (state.trackOpen)
        text << state.trackStart << "+" << state.trackReserved << "/" << state.sessions + 1;
    const char* format = state.format == LVirtualFormat::Complete  ? "complete"
                         : state.format == LVirtualFormat::Started ? "started"
                                                                   : "none";
    text << "\nformat=" << format << "\n";
    return text.str();
}

} // namespace

const char* VirtualMediaName(LDiscMediaKind kind) {
    for (const MediaName& entry : kMediaNames)
        if (entry.kind == kind) return entry.name;
    return "none";
}

uint32_t VirtualDefaultCapacity(LDiscMediaKind kind) {
    switch (kind) {
    case LDiscMediaKind::CDR:
    case LDiscMediaKind::CDRW: return 359847;
    case LDiscMediaKind::BDR:
    case LDiscMediaKind::BDRE: return 12219392;
    case LDiscMediaKind::None: return 0;
    default: return 2295104;
    }
}

bool IsRewritable(LDiscMediaKind kind) {
    return kind == LDiscMediaKind::CDRW || kind == LDiscMediaKind::DVDRW ||
           kind == LDiscMediaKind::DVDPlusRW || kind == LDiscMediaKind::BDRE;
}

bool LVirtualBurnerOptions::Parse(const std::string& text, LVirtualBurnerOptions& out,
                                  std::string& error) {
    LVirtualBurnerOptions options;
    options.text = text;
    const size_t colon = text.find(':');
    if (colon == std::string::npos || !ParseMedia(text.substr(0, colon), options.media)) {
        error = "the setting must start with the media (cd-r, cd-rw, dvd-r, dvd-rw, dvd+r, "
                "dvd+rw, bd-r, bd-re or none) and a colon";
        return false;
    }
    std::stringstream rest(text.substr(colon + 1));
    std::getline(rest, options.path, ',');
    if (options.path.empty()) {
        error = "the setting names no path";
        return false;
    }
    for (std::string option; std::getline(rest, option, ',');) {
        const size_t equals = option.find('=');
        const std::string name = option.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
        int64_t number = 0;
        const bool isNumber = equals != std::string::npos && ParseNumber(value, number);
        if (name == "used" && equals == std::string::npos) options.used = true;
        else if (name == "open" && equals == std::string::npos) options.open = true;
        else if (name == "no-write12" && equals == std::string::npos) options.noWrite12 = true;
        else if (name == "no-streaming" && equals == std::string::npos) options.noStreaming = true;
        else if (name == "capacity" && isNumber && number <= UINT32_MAX) options.capacity = number;
        else if (name == "slow" && isNumber && number <= 60000) options.slowMs = unsigned(number);
        else if (name == "write-error" && isNumber) options.writeError = number;
        else if (name == "verify-error" && isNumber) options.verifyError = number;
        else if (name == "not-ready" && isNumber && number <= 1000) options.notReady = unsigned(number);
        else {
            error = "unknown option \"" + option + "\"";
            return false;
        }
    }
    out = std::move(options);
    return true;
}

LVirtualDisc::LVirtualDisc(LVirtualBurnerOptions options)
    : options_(std::move(options)), writeError_(options_.writeError), notReady_(options_.notReady) {
    state_.trayOpen = options_.open;
    FillNew(state_, options_.media, options_.used);
    if (options_.capacity >= 0) state_.capacity = uint32_t(options_.capacity);
    Load();
}

void LVirtualDisc::FillNew(State& state, LDiscMediaKind kind, bool used) {
    const bool trayOpen = state.trayOpen;
    state = {};
    state.media = kind;
    state.trayOpen = trayOpen;
    state.capacity = VirtualDefaultCapacity(kind);
    if (!used || kind == LDiscMediaKind::None) return;
    state.status = Status::Complete;
    state.used = kUsedBlocks;
    state.tracks = {{0, kUsedBlocks, 1}};
    state.sessions = 1;
    if (kind == LDiscMediaKind::DVDPlusRW || kind == LDiscMediaKind::BDRE)
        state.format = LVirtualFormat::Complete;
}

void LVirtualDisc::Load() {
    std::ifstream file(options_.path + ".state");
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos) values[line.substr(0, equals)] = line.substr(equals + 1);
    }
    if (values["setting"] != options_.text) return;
    State state;
    int64_t used = 0, capacity = 0, sessions = 0, firstTrack = 1;
    if (!ParseMedia(values["media"], state.media) || !ParseNumber(values["used"], used) ||
        !ParseNumber(values["capacity"], capacity) ||
        !ParseLayout(values, state, sessions, firstTrack))
        return;
    state.trayOpen = values["tray"] == "open";
    state.status = values["status"] == "complete"     ? Status::Complete
                   : values["status"] == "incomplete" ? Status::Incomplete
                                                      : Status::Blank;
    state.used = uint32_t(used);
    state.capacity = uint32_t(capacity);
    state.sessions = uint32_t(sessions);
    state.sessionFirstTrack = uint32_t(firstTrack);
    state_ = std::move(state);
}

void LVirtualDisc::SaveAndNotify(std::unique_lock<std::mutex>& lock) {
    std::ostringstream text;
    text << "setting=" << options_.text << "\nmedia=" << VirtualMediaName(state_.media)
         << "\ntray=" << (state_.trayOpen ? "open" : "closed")
         << "\nstatus=" << StatusName(state_.status) << "\nused=" << state_.used
         << "\ncapacity=" << state_.capacity << "\n"
         << LayoutText(state_);
    const std::string content = text.str();
    LAtomicFile file(options_.path + ".state");
    if (file.IsOpen() && file.File().Write(content.data(), content.size()))
        file.Commit(kFileMode, false);
    lock.unlock();
    std::list<std::function<void()>> calls;
    {
        std::lock_guard watchLock(watchers_->mutex);
        calls = watchers_->calls;
    }
    for (const auto& call : calls) call();
}

LDiscMediaKind LVirtualDisc::Media() const {
    std::lock_guard lock(mutex_);
    return state_.media;
}

bool LVirtualDisc::TrayOpen() const {
    std::lock_guard lock(mutex_);
    return state_.trayOpen;
}

bool LVirtualDisc::Present() const {
    std::lock_guard lock(mutex_);
    return !state_.trayOpen && state_.media != LDiscMediaKind::None;
}

LVirtualDisc::Status LVirtualDisc::DiscStatus() const {
    std::lock_guard lock(mutex_);
    return state_.status;
}

uint32_t LVirtualDisc::UsedBlocks() const {
    std::lock_guard lock(mutex_);
    return state_.used;
}

uint32_t LVirtualDisc::Capacity() const {
    std::lock_guard lock(mutex_);
    return state_.capacity;
}

uint32_t LVirtualDisc::FreeBlocks() const {
    std::lock_guard lock(mutex_);
    if (state_.status == Status::Complete || state_.used >= state_.capacity) return 0;
    return state_.capacity - state_.used;
}

bool LVirtualDisc::Erasable() const {
    std::lock_guard lock(mutex_);
    return IsRewritable(state_.media);
}

bool LVirtualDisc::TakeNotReady() {
    std::lock_guard lock(mutex_);
    if (notReady_ == 0) return false;
    --notReady_;
    return true;
}

void LVirtualDisc::ArmNotReady() {
    std::lock_guard lock(mutex_);
    notReady_ = options_.notReady;
}

LVirtualDisc::State LVirtualDisc::GetState() const {
    std::lock_guard lock(mutex_);
    return state_;
}

void LVirtualDisc::SetState(const State& state, bool save) {
    std::unique_lock lock(mutex_);
    state_ = state;
    if (save) SaveAndNotify(lock);
}

void LVirtualDisc::Insert(LDiscMediaKind kind, bool used) {
    std::unique_lock lock(mutex_);
    state_.trayOpen = false;
    FillNew(state_, kind, used);
    SaveAndNotify(lock);
}

void LVirtualDisc::Remove() {
    std::unique_lock lock(mutex_);
    state_.trayOpen = true;
    FillNew(state_, LDiscMediaKind::None, false);
    SaveAndNotify(lock);
}

void LVirtualDisc::SetTrayOpen(bool open) {
    std::unique_lock lock(mutex_);
    state_.trayOpen = open;
    SaveAndNotify(lock);
}

void LVirtualDisc::FailWriteAt(int64_t block) {
    std::lock_guard lock(mutex_);
    writeError_ = block;
}

int64_t LVirtualDisc::WriteErrorBlock() const {
    std::lock_guard lock(mutex_);
    return writeError_;
}

void LVirtualDisc::Written(uint32_t blocks, Status status) {
    std::unique_lock lock(mutex_);
    if (status == Status::Complete) {
        state_.sessionFirstTrack = uint32_t(state_.tracks.size()) + 1;
        state_.tracks.push_back({state_.used, blocks, state_.sessions + 1});
        ++state_.sessions;
    }
    state_.used += blocks;
    state_.status = status;
    SaveAndNotify(lock);
}

void LVirtualDisc::MakeBlank() {
    std::unique_lock lock(mutex_);
    const LVirtualFormat format = state_.format;
    const uint32_t capacity = state_.capacity;
    FillNew(state_, state_.media, false);
    state_.format = format;
    state_.capacity = capacity;
    SaveAndNotify(lock);
}

void LVirtualDisc::EraseContent() {
    std::error_code ignored;
    std::filesystem::remove(options_.path + ".bin", ignored);
    std::filesystem::remove(options_.path + ".cue", ignored);
    if (std::filesystem::exists(options_.path, ignored))
        std::filesystem::resize_file(options_.path, 0, ignored);
    MakeBlank();
}

std::shared_ptr<void> LVirtualDisc::Watch(std::function<void()> changed) {
    std::lock_guard lock(watchers_->mutex);
    auto entry = watchers_->calls.insert(watchers_->calls.end(), std::move(changed));
    std::weak_ptr<Watchers> weak = watchers_;
    return std::shared_ptr<void>(nullptr, [weak, entry](void*) {
        if (auto watchers = weak.lock()) {
            std::lock_guard lock(watchers->mutex);
            watchers->calls.erase(entry);
        }
    });
}
