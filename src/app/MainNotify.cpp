#include "app/MainNotify.h"

#include <utility>

MainNotify gMainNotify;

namespace {

constexpr std::size_t kMaxText = 259;

std::string Cut(const char* text) {
    return std::string(text).substr(0, kMaxText);
}

} // namespace

void MainNotify::SetTarget(LMainNotifyTarget* target, LMainThreadQueue* queue) {
    std::lock_guard guard(mutex_);
    // Posts still on their way to the old target find nothing.
    if (target_) *target_ = nullptr;
    target_ = target ? std::make_shared<LMainNotifyTarget*>(target) : nullptr;
    queue_ = queue;
}

void MainNotify::SetStatusText(const char* text) {
    std::lock_guard guard(mutex_);
    statusText_ = Cut(text);
}

std::string MainNotify::GetStatusText() const {
    std::lock_guard guard(mutex_);
    return statusText_;
}

void MainNotify::NotifyFile(const char* name) {
    Post(WM_NOTIFY_FILE, Cut(name), 0);
}

void MainNotify::NotifyAdd(const char* path) {
    Post(WM_NOTIFY_ADD, Cut(path), 0);
}

void MainNotify::NotifyProgress(double fraction) {
    std::string text;
    int percent;
    {
        std::lock_guard guard(mutex_);
        if (!target_ || !queue_) return;
        percent = static_cast<int>(fraction * 100);
        if (percent > 100) percent %= 100;
        if (percent == lastPercent_) return;
        lastPercent_ = percent;
        text = statusText_;
    }
    Post(WM_NOTIFY_PROGRESS, std::move(text), percent);
}

void MainNotify::Post(int message, std::string text, int value) {
    std::lock_guard guard(mutex_);
    if (!target_ || !queue_) return;
    // The target is read on the main thread, where SetTarget is called.
    queue_->Post([target = target_, message, text = std::move(text), value] {
        if (*target) (*target)->OnMainNotify(message, text, value);
    });
}
