#include "devices/VirtualSpeaker.h"

#include "codecs/WaveFile.h"
#include "devices/VirtualDeviceSetting.h"

#include <algorithm>

namespace {

constexpr int kMaxVolume = 2048;
constexpr int kMaxChannels = 8;
constexpr int kMaxRate = 768000;

} // namespace

std::unique_ptr<LSoundOutputStream> LVirtualSpeaker::Open(int sampleRate, int channels,
                                                          Completion completion, void* user,
                                                          std::string& error) {
    if (sampleRate < 1 || sampleRate > kMaxRate || channels < 1 || channels > kMaxChannels ||
        !completion) {
        error = "The Virtual Speaker cannot play " + std::to_string(channels) + " channels at " +
                std::to_string(sampleRate) + " Hz.";
        return nullptr;
    }
    LVirtualDeviceSetting setting;
    if (!LReadVirtualDeviceSetting("VINORA_VIRTUAL_SPEAKER", setting, error)) return nullptr;
    LSoundSink sink;
    if (!setting.path.empty()) {
        sink = LWaveFile::OpenSinkPCM(setting.path.c_str(), sampleRate,
                                      static_cast<unsigned char>(channels), 16, 0);
        if (sink->IsFailed()) {
            error = "The Virtual Speaker cannot write \"" + setting.path + "\".";
            return nullptr;
        }
    }
    return std::make_unique<LVirtualSpeaker>(sink, sampleRate, channels, setting.speed, completion,
                                             user);
}

LVirtualSpeaker::LVirtualSpeaker(LSoundSink sink, int sampleRate, int channels, double speed,
                                 Completion completion, void* user)
    : sink_(std::move(sink)), rate_(sampleRate), channels_(channels), speed_(speed),
      completion_(completion), user_(user), pieceFrames_(std::max(1, sampleRate / 100)),
      work_(static_cast<size_t>(pieceFrames_) * channels), thread_([this] { Run(); }) {}

LVirtualSpeaker::~LVirtualSpeaker() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        wake_.notify_all();
    }
    thread_.join();
    sink_.Close();
}

bool LVirtualSpeaker::Play(const int16_t* samples, int frames, void* tag) {
    if (!samples || frames <= 0) return false;
    const std::lock_guard lock(mutex_);
    if (count_ == kQueueSize) return false;
    queue_[(head_ + count_) % kQueueSize] = {samples, frames, tag};
    ++count_;
    wake_.notify_all();
    return true;
}

void LVirtualSpeaker::Pause() {
    const std::lock_guard lock(mutex_);
    paused_ = true;
    wake_.notify_all();
}

void LVirtualSpeaker::Resume() {
    const std::lock_guard lock(mutex_);
    paused_ = false;
    wake_.notify_all();
}

void LVirtualSpeaker::Quiet() {
    std::unique_lock lock(mutex_);
    WaitForCompletion(lock);
    if (count_ == 0 || headPlayed_ == 0) return;
    head_ = (head_ + 1) % kQueueSize;
    --count_;
    headPlayed_ = 0;
    ++headSerial_;
    wake_.notify_all();
}

void LVirtualSpeaker::Flush() {
    std::unique_lock lock(mutex_);
    WaitForCompletion(lock);
    if (count_ > 0 && headPlayed_ == 0) ++headSerial_;
    count_ = count_ > 0 && headPlayed_ > 0 ? 1 : 0;
    wake_.notify_all();
}

void LVirtualSpeaker::WaitForCompletion(std::unique_lock<std::mutex>& lock) {
    if (std::this_thread::get_id() != thread_.get_id())
        wake_.wait(lock, [this] { return !completing_; });
}

void LVirtualSpeaker::SetVolume(int left, int right) {
    const std::lock_guard lock(mutex_);
    volume_[0] = std::clamp(left, 0, kMaxVolume);
    volume_[1] = std::clamp(right, 0, kMaxVolume);
}

void LVirtualSpeaker::Run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        const auto playable = [this] { return stopping_ || (count_ > 0 && !paused_); };
        if (!playable()) {
            // Time stood still while there was nothing to play.
            wake_.wait(lock, playable);
            clockStart_ = std::chrono::steady_clock::now();
            framesSinceStart_ = 0;
        }
        if (stopping_) return;

        const Entry entry = queue_[head_];
        const uint64_t serial = headSerial_;
        const int frames = std::min(pieceFrames_, entry.frames - headPlayed_);
        if (frames > 0) {
            TakePiece(entry, frames);
            headPlayed_ += frames;
            framesSinceStart_ += frames;
            lock.unlock();
            sink_->Write(work_.data(), frames);
            lock.lock();
            if (speed_ > 0) {
                const std::chrono::duration<double> due(static_cast<double>(framesSinceStart_) /
                                                        (rate_ * speed_));
                wake_.wait_until(
                    lock,
                    clockStart_ +
                        std::chrono::duration_cast<std::chrono::steady_clock::duration>(due),
                    [this, serial] { return stopping_ || paused_ || headSerial_ != serial; });
            }
            if (stopping_) return;
        }
        // Quiet or Flush may have dropped the buffer meanwhile, and a pause holds a finished
        // buffer back until the time it took has passed.
        if (headSerial_ != serial || paused_ || headPlayed_ < entry.frames) continue;
        head_ = (head_ + 1) % kQueueSize;
        --count_;
        headPlayed_ = 0;
        ++headSerial_;
        completing_ = true;
        lock.unlock();
        completion_(user_, entry.tag);
        lock.lock();
        completing_ = false;
        wake_.notify_all();
    }
}

void LVirtualSpeaker::TakePiece(const Entry& entry, int frames) {
    const int16_t* in = entry.samples + static_cast<size_t>(headPlayed_) * channels_;
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels_; ++c) {
            const int volume = volume_[std::min(c, 1)];
            const int value = std::clamp(*in++ * volume / 256, -32768, 32767);
            work_[static_cast<size_t>(f) * channels_ + c] = value * 16;
        }
}
