#include "devices/VirtualTurntable.h"

#include "codecs/AudioFileSource.h"
#include "devices/DemoSide.h"
#include "devices/VirtualDeviceSetting.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>

namespace {

constexpr double kUnityGain = 1.25;
constexpr double kMaxGain = 8;

// Like a record that keeps turning, the file goes on where the last recording left it: a
// turntable closed before the end of its file leaves the file here for the next one opened with
// the same setting (a session stops and starts the recorder between tracks).
struct ParkedSide {
    std::mutex mutex;
    std::string key;
    std::optional<LSoundSource> source;
};

ParkedSide& Parked() {
    static ParkedSide parked;
    return parked;
}

} // namespace

std::unique_ptr<LSoundInputStream> LVirtualTurntable::Open(std::string& error) {
    LVirtualDeviceSetting setting;
    if (!LReadVirtualDeviceSetting("VINORA_VIRTUAL_TURNTABLE", setting, error)) return nullptr;
    const char* key = std::getenv("VINORA_VIRTUAL_TURNTABLE");
    const std::string parkKey = key ? key : "";
    {
        ParkedSide& parked = Parked();
        const std::lock_guard lock(parked.mutex);
        if (parked.source && parked.key == parkKey) {
            LSoundSource source = *parked.source;
            parked.source.reset();
            return std::make_unique<LVirtualTurntable>(source, setting.speed, parkKey);
        }
    }
    if (setting.path.empty())
        return std::make_unique<LVirtualTurntable>(LSoundSource(new LDemoSide), setting.speed,
                                                   parkKey);
    LSoundSource source = LOpenAudioFileSource(setting.path.c_str());
    if (source->GetError() != sndErrNone) {
        error = "The Virtual Turntable cannot play \"" + setting.path +
                "\": " + LSoundErrorText(source->GetError()) + ".";
        return nullptr;
    }
    return std::make_unique<LVirtualTurntable>(source, setting.speed, parkKey);
}

LVirtualTurntable::LVirtualTurntable(LSoundSource source, double speed, std::string parkKey)
    : source_(std::move(source)), rate_(source_->GetSampleRate()),
      channels_(source_->GetChannels()), speed_(speed),
      work_(static_cast<size_t>(kReadFrames) * channels_), parkKey_(std::move(parkKey)),
      thread_([this] { Run(); }) {}

LVirtualTurntable::~LVirtualTurntable() {
    Stop();
    ParkedSide& parked = Parked();
    const std::lock_guard lock(parked.mutex);
    parked.key = parkKey_;
    if (exhausted_)
        parked.source.reset();
    else
        parked.source = source_;
}

bool LVirtualTurntable::SetInputGain(double gain) {
    if (!(gain >= 0 && gain <= kMaxGain)) return false;
    gain_ = static_cast<int>(std::lround(gain / kUnityGain * 65536));
    return true;
}

bool LVirtualTurntable::Record(int16_t* buffer, int samples, Completion completion, void* user) {
    if (!buffer || !completion || samples <= 0 || samples % channels_ != 0) return false;
    const std::lock_guard lock(mutex_);
    if (stopping_ || armed_) return false;
    armed_ = buffer;
    armedSamples_ = samples;
    completion_ = completion;
    user_ = user;
    if (!clockRunning_) {
        clockRunning_ = true;
        clockStart_ = std::chrono::steady_clock::now();
    }
    wake_.notify_all();
    return true;
}

void LVirtualTurntable::Release(int16_t* buffer) {
    const std::lock_guard lock(mutex_);
    if (buffer == unreleased_) {
        unreleased_ = nullptr;
        wake_.notify_all();
    }
}

void LVirtualTurntable::Stop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        wake_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

void LVirtualTurntable::GiveBack(int frames) {
    if (!exhausted_) source_->Seek(std::max(source_->GetPositionSample() - frames, 0));
}

void LVirtualTurntable::Run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        // A buffer still unread by the consumer is never written into.
        wake_.wait(lock, [this] { return stopping_ || (armed_ && armed_ != unreleased_); });
        if (stopping_) return;
        int16_t* const buffer = armed_;
        const int samples = armedSamples_;
        const Completion completion = completion_;
        void* const user = user_;

        lock.unlock();
        const bool end = Fill(buffer, samples);
        lock.lock();

        framesDelivered_ += samples / channels_;
        if (speed_ > 0) {
            const std::chrono::duration<double> due(static_cast<double>(framesDelivered_) /
                                                    (rate_ * speed_));
            const auto deadline =
                clockStart_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(due);
            wake_.wait_until(lock, deadline, [this] { return stopping_; });
        } else {
            wake_.wait(lock, [this] { return stopping_ || !unreleased_; });
        }
        if (stopping_) {
            // The buffer was never delivered: the next turntable on this file plays it.
            if (!end) source_->Seek(source_->GetPositionSample() - samples / channels_);
            return;
        }
        armed_ = nullptr;
        if (speed_ == 0) unreleased_ = buffer;
        if (end) ended_ = true;

        lock.unlock();
        completion(user, buffer);
        lock.lock();
    }
}

bool LVirtualTurntable::Fill(int16_t* buffer, int samples) {
    const int frames = samples / channels_;
    const int64_t gain = gain_;
    for (int done = 0; done < frames;) {
        const int count = std::min(frames - done, kReadFrames);
        int16_t* out = buffer + static_cast<size_t>(done) * channels_;
        const int values = count * channels_;
        if (exhausted_) {
            std::fill(out, out + values, int16_t{0});
        } else {
            source_->Read(work_.data(), count);
            for (int i = 0; i < values; ++i) {
                const int64_t scaled = (work_[i] * gain + 32768) >> 16;
                out[i] =
                    static_cast<int16_t>(std::clamp<int64_t>((scaled + 8) >> 4, -32768, 32767));
            }
            exhausted_ = source_->GetPositionSample() >= source_->GetEndSample();
        }
        done += count;
    }
    return exhausted_;
}
