#include "play/SoundPlayerLLQT.h"

#include "jobs/Thread.h"
#include "jobs/ThreadPriority.h"
#include "platform/Log.h"
#include "sound/AudioBuffer.h"
#include "sound/ConvertRateChannels.h"
#include "sound/SampleFormat.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <thread>

// The output takes 16-bit samples in native byte order, written here as little-endian.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr int kLargest16BitSample = 524272;
// Mean square of a full-scale square wave: the 0 dB of the buffer levels.
constexpr double kFullScaleMeanSquare = 8388608.0;
constexpr unsigned int kCompletionWaitMs = 100;

} // namespace

LSoundPlayerLLQT::~LSoundPlayerLLQT() {
    Stop();
}

bool LSoundPlayerLLQT::Init(LSoundSource& source, unsigned short flags, LThread* notifier) {
    const LSoundSource taken = source;
    Stop();
    if (taken->GetError() != sndErrNone) return false;
    notifier_ = notifier;
    flags_ = flags;
    source_ = taken;
    if (source_->GetSampleRate() > kMaxSampleRate)
        LSPConvertSourceRateChannels(kMaxSampleRate, source_->GetChannels(), source_);
    if (source_->GetError() != sndErrNone || !OpenChannel()) {
        Stop();
        return false;
    }
    channels_ = std::max<unsigned char>(source_->GetChannels(), 1);
    bufferFrames_ = std::clamp(source_->GetSampleRate() / 10, kMinBufferFrames, kMaxBufferFrames);

    const int slice = bufferFrames_ * channels_;
    work_ = std::make_unique<int[]>(static_cast<size_t>(slice));
    sampleMemory_ = std::make_unique<int16_t[]>(static_cast<size_t>(slice) * kBufferCount);
    for (int i = 0; i < kBufferCount; ++i) {
        WaveHeader& header = headers_[i];
        header.byteLength = slice * static_cast<int>(sizeof(int16_t));
        header.samples = sampleMemory_.get() + static_cast<size_t>(i) * slice;
        header.frames = 0;
        header.levels = LDBMC();
        header.endPosition = 0;
    }
    ResetRing();
    return true;
}

// Opens the channel for the source's format on the chosen device, else on the default output.
// An output that accepts another rate or channel count gets the source converted to it.
bool LSoundPlayerLLQT::OpenChannel() {
    const int rate = source_->GetSampleRate();
    const int channels = std::max<unsigned char>(source_->GetChannels(), 1);
    std::string error;
    const uint32_t id = device_.GetSoundComponent();
    if (id != kDefaultSoundOutputId) {
        channel_ = OpenSoundOutput(id, rate, channels, &OnPlayed, this, error);
        if (!channel_)
            LOGWARN("Cannot open the sound output \"%s\" (%s); playing on the default output",
                    device_.GetName().c_str(), error.c_str());
    }
    if (!channel_)
        channel_ = OpenSoundOutput(kDefaultSoundOutputId, rate, channels, &OnPlayed, this, error);
    if (!channel_) {
        LOGERROR("Cannot open the sound output (%s)", error.c_str());
        return false;
    }
    if (channel_->GetSampleRate() != rate || channel_->GetChannels() != channels) {
        const auto outChannels = static_cast<unsigned char>(channel_->GetChannels());
        LSPConvertSourceRateChannels(channel_->GetSampleRate(), outChannels, source_);
        if (source_->GetError() != sndErrNone ||
            source_->GetSampleRate() != channel_->GetSampleRate() ||
            source_->GetChannels() != outChannels)
            return false;
    }
    return true;
}

void LSoundPlayerLLQT::ResetRing() {
    for (WaveHeader& header : headers_) {
        header.free = true;
        header.played = true;
    }
    writeIndex_ = 0;
    playIndex_ = 0;
}

void LSoundPlayerLLQT::Start() {
    if (!channel_) return;
    state_ = kStateStarted;
    if (flags_ & kStartPaused) Post(kCommandPause);
    position_ = source_->GetPositionSample();
    lastLevel_ = LDB::kSilence;
    ResetRing();
    Post(kCommandVolume, static_cast<unsigned int>(ChannelVolume(volume_)));
    HandlePendingEvents();
}

void LSoundPlayerLLQT::Stop() {
    if (state_ != 0) {
        Post(kCommandStop);
        HandlePendingEvents();
    }
    position_ = 0;
    state_ = 0;
    channel_.reset();
    for (WaveHeader& header : headers_) {
        header.samples = nullptr;
        header.frames = 0;
        header.byteLength = 0;
    }
    ResetRing();
    work_.reset();
    sampleMemory_.reset();
    source_.Close();
}

void LSoundPlayerLLQT::Cue() {
    const uint16_t state = state_;
    if (state == 0) return;
    if (state & kStateCued) {
        if (state & kStatePaused) {
            Post(kCommandResumeCue);
            HandlePendingEvents();
        }
        return;
    }
    source_->Seek(position_);
    WriteBuffer(source_->GetEndSample() - position_);
    state_ = state | kStateStarted | kStateCued;
}

void LSoundPlayerLLQT::PrepareSeek() {
    Post(kCommandPrepareSeek);
    HandlePendingEvents();
}

void LSoundPlayerLLQT::Seek(int frame) {
    if (!(state_ & kStateStarted)) return;
    position_ = frame;
    ResetRing();
    played_.Signal();
    Post(kCommandSeek);
    HandlePendingEvents();
}

void LSoundPlayerLLQT::Restart() {
    LThread* notifier = notifier_;
    if (!(state_ & kStateStarted) || !notifier) return;
    notifier->StopThreadNow();
    LSoundSource source = source_;
    const int position = position_;
    const unsigned short flags = flags_;
    Stop();
    source->Seek(position);
    if (!Init(source, flags, notifier)) return;
    Start();
    notifier->Start(ThreadPriority::kNormal);
}

void LSoundPlayerLLQT::Standby() {
    if (channel_) channel_->Pause();
}

void LSoundPlayerLLQT::WriteBuffer(int frames) {
    const int position = source_->GetPositionSample();
    frames = std::min(frames, bufferFrames_);
    if (frames < 1 || !channel_) return;
    WaveHeader& header = headers_[writeIndex_];
    source_->Read(work_.get(), frames);
    ComputeLevels(header, frames);

    const int count = frames * channels_;
    int* work = work_.get();
    for (int i = 0; i < count; ++i)
        work[i] = std::clamp(work[i], -kLargest16BitSample, kLargest16BitSample);
    ConvertSamplesOut<LSF16>(header.samples, work, count);

    header.frames = frames;
    header.endPosition = position + frames;
    // Busy before it is queued: the output may finish it before Play returns.
    header.free = false;
    header.played = false;
    if (!channel_->Play(header.samples, header.frames, &header)) header.played = true;
    writeIndex_ = (writeIndex_ + 1) % kBufferCount;
}

void LSoundPlayerLLQT::ComputeLevels(WaveHeader& header, int frames) {
    header.levels.count = channels_;
    for (unsigned char c = 0; c < channels_; ++c) {
        if (GetBufferPeakChan(c, work_.get(), frames, channels_) == 0) {
            header.levels.values[c] = static_cast<int8_t>(kNoSignalLevel);
            continue;
        }
        const unsigned int meanSquare =
            static_cast<unsigned int>(GetBufferMeanSquareChan(c, work_.get(), frames, channels_));
        const double db =
            meanSquare == 0 ? -127.0 : 10.0 * std::log10(meanSquare / kFullScaleMeanSquare);
        header.levels.values[c] = static_cast<int8_t>(std::clamp(std::lround(db), -127L, 127L));
    }
}

// Runs on the output's thread: takes no lock, touches only the header, the position, the
// level and the signal.
void LSoundPlayerLLQT::OnPlayed(void* user, void* tag) {
    auto* self = static_cast<LSoundPlayerLLQT*>(user);
    auto* header = static_cast<WaveHeader*>(tag);
    self->position_ = header->endPosition;
    self->lastLevel_ = header->levels.GetMonoDB();
    header->played = true;
    self->played_.Signal();
}

bool LSoundPlayerLLQT::WaitForEmptyBuffer() {
    for (;;) {
        if (!notifier_ || notifier_->IsToStop() || state_ == 0) return false;
        played_.Reset();
        // Only a queued buffer is waited for: a free one has nothing in it yet.
        WaveHeader& header = headers_[playIndex_];
        if (!header.free && header.played) {
            header.free = true;
            playIndex_ = (playIndex_ + 1) % kBufferCount;
            return true;
        }
        notifier_->ProcessWaitSignal(played_, kCompletionWaitMs);
        std::this_thread::yield();
    }
}

bool LSoundPlayerLLQT::IsNextBufferReady() const {
    return headers_[writeIndex_].free;
}

bool LSoundPlayerLLQT::PlayRemainingBuffer() const {
    return !headers_[(writeIndex_ + kBufferCount - 1) % kBufferCount].played;
}

void LSoundPlayerLLQT::Post(Command command, unsigned int parameter) {
    commands_.AddMessage(command, parameter, 0);
}

void LSoundPlayerLLQT::HandlePendingEvents() {
    int message = 0;
    unsigned int parameter = 0;
    unsigned int unused = 0;
    while (commands_.GetMessage(message, parameter, unused)) {
        switch (message) {
        case kCommandVolume:
            if (channel_)
                channel_->SetVolume(static_cast<int>(parameter), static_cast<int>(parameter));
            break;
        case kCommandStop:
            if (channel_) {
                channel_->Quiet();
                channel_->Flush();
            }
            state_ = 0;
            break;
        case kCommandPause:
            if (channel_) channel_->Pause();
            state_ |= kStatePaused;
            break;
        case kCommandResumeCue:
            if (channel_) channel_->Resume();
            state_ &= static_cast<uint16_t>(~kStatePaused);
            break;
        case kCommandPrepareSeek:
            if (channel_) {
                channel_->Pause();
                channel_->Quiet();
                channel_->Flush();
            }
            break;
        case kCommandSeek:
            // A layer paused by its owner stays paused; otherwise the output goes on.
            if (channel_ && !(state_ & kStatePaused)) channel_->Resume();
            break;
        case kCommandRestart:
            Restart();
            break;
        }
    }
}

void LSoundPlayerLLQT::SetDevice(const LSoundPlayDevice& device) {
    if (device == device_) return;
    device_ = device;
    if (notifier_ && (state_ & kStateStarted)) {
        Post(kCommandRestart);
        HandlePendingEvents();
    }
}

void LSoundPlayerLLQT::SetVolume(LDB db) {
    volume_ = db;
    Post(kCommandVolume, static_cast<unsigned int>(ChannelVolume(db)));
    HandlePendingEvents();
}

int LSoundPlayerLLQT::ChannelVolume(LDB db) {
    return std::clamp(256 + 5 * static_cast<int>(db), 0, 2048);
}

LDBMC LSoundPlayerLLQT::GetDB() const {
    LDBMC level;
    level.count = 1;
    level.values[0] = lastLevel_.load();
    return level;
}
