#include "record/SoundRecLLQT.h"

#include "devices/SoundDevices.h"
#include "platform/Log.h"
#include "sound/ConvertRateChannels.h"

#include <algorithm>

namespace {

// A buffer is a tenth of a second, and never shorter than this.
constexpr int kMinBufferFrames = 20;
// How long a wait for the device lasts before it is simply waited for again.
constexpr unsigned int kDataWaitMs = 25000;

} // namespace

LSoundRecLLQT::LSoundRecLLQT() {
    char name[kSoundDeviceNameSize];
    int index = 0;
    if (GetDefaultSoundRecordDevice(index, name)) device_ = LSoundRecordDevice(name, 0);
}

LSoundRecLLQT::~LSoundRecLLQT() {
    Close();
}

double LSoundRecLLQT::GetRecordGain(LDB volume) {
    const double gain = (volume + 36) / 48.0 + 0.5;
    return std::max(static_cast<int>(gain * 65536.0), 0) / 65536.0;
}

bool LSoundRecLLQT::Open(LSoundSink& sink) {
    if (!bufferA_.empty()) return true;
    uint32_t id = 0;
    if (!device_.GetId(id)) {
        error_ = "the sound input device is not connected";
        return false;
    }
    const int channels = std::max<int>(sink->GetChannels(), 1);
    std::unique_ptr<LSoundInputStream> stream =
        OpenSoundInput(id, sink->GetSampleRate(), channels, error_);
    if (!stream) return false;
    if (stream->GetSampleRate() < 1 || stream->GetChannels() < 1 || stream->GetChannels() > 255) {
        error_ = "the sound input device offers no usable format";
        return false;
    }
    LSoundSink converted = sink;
    LSinkConvertRateChannels(stream->GetSampleRate(),
                             static_cast<unsigned char>(stream->GetChannels()), converted);
    if (converted->IsFailed()) {
        error_ = "the sound input's format cannot be converted to the recording's";
        return false;
    }
    stream->SelectInputSource(device_.GetInput());

    sink = converted;
    stream_ = std::move(stream);
    sampleRate_ = stream_->GetSampleRate();
    channels_ = stream_->GetChannels();
    frames_ = std::max(sampleRate_ / 10, kMinBufferFrames);
    bufferA_.assign(static_cast<size_t>(GetSamples()), 0);
    bufferB_.assign(static_cast<size_t>(GetSamples()), 0);
    error_.clear();
    return true;
}

void LSoundRecLLQT::_SetRecordVolume() {
    stream_->SetInputGain(GetRecordGain(volume_));
}

bool LSoundRecLLQT::Start() {
    if (!stream_) return false;
    stopping_ = false;
    readyA_ = false;
    readyB_ = false;
    ended_ = false;
    dataReady_.Reset();
    _SetRecordVolume();
    return stream_->Record(bufferA_.data(), GetSamples(), Completion, this);
}

// Runs on the device's thread: hands the full buffer over and records into the other one.
void LSoundRecLLQT::Completion(void* user, int16_t* buffer) {
    LSoundRecLLQT& self = *static_cast<LSoundRecLLQT*>(user);
    if (self.stopping_.exchange(false)) return;
    const bool ended = self.stream_->HasEnded();
    // Re-arming a buffer the reader has not taken yet means the reader fell a whole buffer
    // behind: that audio is lost (counted, and logged by the reader) rather than read later
    // out of order.
    if (buffer == self.bufferA_.data()) {
        self.endedA_ = ended;
        self.sequenceA_ = ++self.sequence_;
        if (self.readyB_.exchange(false)) ++self.overruns_;
        self.stream_->Record(self.bufferB_.data(), self.GetSamples(), Completion, user);
        self.readyA_ = true;
    } else {
        self.endedB_ = ended;
        self.sequenceB_ = ++self.sequence_;
        if (self.readyA_.exchange(false)) ++self.overruns_;
        self.stream_->Record(self.bufferA_.data(), self.GetSamples(), Completion, user);
        self.readyB_ = true;
    }
    self.dataReady_.Signal();
}

void LSoundRecLLQT::Convert(std::vector<int16_t>& buffer, std::atomic<bool>& ended, int* out) {
    std::transform(buffer.begin(), buffer.end(), out, [](int16_t value) { return value * 16; });
    ended_ = ended;
    stream_->Release(buffer.data());
}

bool LSoundRecLLQT::WaitForDataAndRead(LThread& thread, int* out) {
    for (;;) {
        if (thread.IsToStop()) return false;
        dataReady_.Reset();
        if (const int lost = overruns_.exchange(0))
            LOGWARN("The recording fell behind the sound input: %d buffer(s) of audio were lost",
                    lost);
        // The older of two full buffers first.
        if (readyA_ && (!readyB_ || sequenceA_ < sequenceB_)) {
            readyA_ = false;
            Convert(bufferA_, endedA_, out);
            return true;
        }
        if (readyB_) {
            readyB_ = false;
            Convert(bufferB_, endedB_, out);
            return true;
        }
        if (thread.ProcessWaitSignal(dataReady_, kDataWaitMs) == WAIT_STOPPED) return false;
    }
}

void LSoundRecLLQT::Close() {
    if (stream_) {
        stream_->Stop();
        stream_->GiveBack(frames_ * (int{readyA_} + int{readyB_}));
        stream_.reset();
    }
    readyA_ = readyB_ = false;
    stopping_ = false;
    bufferA_ = {};
    bufferB_ = {};
}
