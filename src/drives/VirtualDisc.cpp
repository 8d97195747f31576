#include "drives/VirtualDisc.h"

#include "platform/AtomicFile.h"

#include <cstdlib>
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
    : options_(std::move(options)), media_(options_.media), trayOpen_(options_.open),
      writeError_(options_.writeError), notReady_(options_.notReady) {
    capacity_ = options_.capacity >= 0 ? uint32_t(options_.capacity) : VirtualDefaultCapacity(media_);
    if (options_.used && media_ != LDiscMediaKind::None) {
        status_ = Status::Complete;
        used_ = kUsedBlocks;
    }
    Load();
}

void LVirtualDisc::Load() {
    std::ifstream file(options_.path + ".state");
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos) values[line.substr(0, equals)] = line.substr(equals + 1);
    }
    if (values["setting"] != options_.text) return;
    int64_t used = 0;
    int64_t capacity = 0;
    LDiscMediaKind media = LDiscMediaKind::None;
    if (!ParseMedia(values["media"], media) || !ParseNumber(values["used"], used) ||
        !ParseNumber(values["capacity"], capacity))
        return;
    media_ = media;
    trayOpen_ = values["tray"] == "open";
    status_ = values["status"] == "complete"     ? Status::Complete
              : values["status"] == "incomplete" ? Status::Incomplete
                                                 : Status::Blank;
    used_ = uint32_t(used);
    capacity_ = uint32_t(capacity);
}

void LVirtualDisc::SaveAndNotify(std::unique_lock<std::mutex>& lock) {
    std::ostringstream text;
    text << "setting=" << options_.text << "\nmedia=" << VirtualMediaName(media_)
         << "\ntray=" << (trayOpen_ ? "open" : "closed") << "\nstatus=" << StatusName(status_)
         << "\nused=" << used_ << "\ncapacity=" << capacity_ << "\n";
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
    return media_;
}

bool LVirtualDisc::TrayOpen() const {
    std::lock_guard lock(mutex_);
    return trayOpen_;
}

bool LVirtualDisc::Present() const {
    std::lock_guard lock(mutex_);
    return !trayOpen_ && media_ != LDiscMediaKind::None;
}

LVirtualDisc::Status LVirtualDisc::DiscStatus() const {
    std::lock_guard lock(mutex_);
    return status_;
}

uint32_t LVirtualDisc::UsedBlocks() const {
    std::lock_guard lock(mutex_);
    return used_;
}

uint32_t LVirtualDisc::Capacity() const {
    std::lock_guard lock(mutex_);
    return capacity_;
}

uint32_t LVirtualDisc::FreeBlocks() const {
    std::lock_guard lock(mutex_);
    if (status_ == Status::Complete || used_ >= capacity_) return 0;
    return capacity_ - used_;
}

bool LVirtualDisc::Erasable() const {
    std::lock_guard lock(mutex_);
    return IsRewritable(media_);
}

bool LVirtualDisc::TakeNotReady() {
    std::lock_guard lock(mutex_);
    if (notReady_ == 0) return false;
    --notReady_;
    return true;
}

void LVirtualDisc::Insert(LDiscMediaKind kind, bool used) {
    std::unique_lock lock(mutex_);
    media_ = kind;
    trayOpen_ = false;
    status_ = used ? Status::Complete : Status::Blank;
    used_ = used ? kUsedBlocks : 0;
    capacity_ = VirtualDefaultCapacity(kind);
    SaveAndNotify(lock);
}

void LVirtualDisc::Remove() {
    std::unique_lock lock(mutex_);
    media_ = LDiscMediaKind::None;
    trayOpen_ = true;
    status_ = Status::Blank;
    used_ = 0;
    capacity_ = 0;
    SaveAndNotify(lock);
}

void LVirtualDisc::SetTrayOpen(bool open) {
    std::unique_lock lock(mutex_);
    trayOpen_ = open;
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
    used_ += blocks;
    status_ = status;
    SaveAndNotify(lock);
}

void LVirtualDisc::MakeBlank() {
    std::unique_lock lock(mutex_);
    used_ = 0;
    status_ = Status::Blank;
    SaveAndNotify(lock);
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
