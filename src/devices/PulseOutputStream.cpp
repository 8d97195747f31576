#include "devices/PulseOutputStream.h"

#include "devices/PulseDeviceList.h"

#include <algorithm>

namespace {

constexpr pa_usec_t kTargetLatency = 80 * PA_USEC_PER_MSEC;
constexpr pa_usec_t kTickInterval = 10 * PA_USEC_PER_MSEC;
constexpr int kMaxVolume = 2048;

} // namespace

std::unique_ptr<LSoundOutputStream>
LPulseOutputStream::Open(std::shared_ptr<LPulseConnection> connection, uint32_t index,
                         int sampleRate, int channels, Completion completion, void* user,
                         std::string& error) {
    LPulseDeviceDetails sink;
    if (index != kDefaultSoundOutputId && !LPulseFindSink(*connection, index, sink)) {
        error = "There is no sound output device " + std::to_string(index) + ".";
        return nullptr;
    }
    if (sampleRate < 1 || sampleRate > static_cast<int>(PA_RATE_MAX) || channels < 1 ||
        channels > static_cast<int>(PA_CHANNELS_MAX) || !completion) {
        error = "The sound output cannot play " + std::to_string(channels) + " channels at " +
                std::to_string(sampleRate) + " Hz.";
        return nullptr;
    }
    pa_sample_spec sampleFormat;
    sampleFormat.format = PA_SAMPLE_S16NE;
    sampleFormat.rate = static_cast<uint32_t>(sampleRate);
    sampleFormat.channels = static_cast<uint8_t>(channels);
    std::unique_ptr<LPulseOutputStream> stream(
        new LPulseOutputStream(std::move(connection), sampleFormat, completion, user));
    if (!stream->Connect(sink.name.empty() ? nullptr : sink.name.c_str(), error)) return nullptr;
    return stream;
}

LPulseOutputStream::LPulseOutputStream(std::shared_ptr<LPulseConnection> connection,
                                       const pa_sample_spec& sampleFormat, Completion completion,
                                       void* user)
    : connection_(std::move(connection)), sampleFormat_(sampleFormat),
      frameBytes_(pa_frame_size(&sampleFormat)), completion_(completion), user_(user) {}

LPulseOutputStream::~LPulseOutputStream() {
    Close();
}

bool LPulseOutputStream::Connect(const char* sinkName, std::string& error) {
    LPulseWaiter waiter;
    {
        const LPulseLock lock(connection_->Loop());
        stream_ = pa_stream_new(connection_->Context(), "Vinora playback", &sampleFormat_, nullptr);
        if (!stream_) {
            error = "The sound server refused a playback stream: " + connection_->LastError() + ".";
            return false;
        }
        connecting_ = &waiter;
        pa_stream_set_state_callback(stream_, OnState, this);
        pa_stream_set_write_callback(stream_, OnRequest, this);
        pa_stream_set_latency_update_callback(stream_, OnTiming, this);
        pa_stream_set_underflow_callback(stream_, OnUnderflow, this);
        pa_buffer_attr attributes;
        attributes.maxlength = attributes.prebuf = attributes.minreq = static_cast<uint32_t>(-1);
        attributes.fragsize = static_cast<uint32_t>(-1);
        attributes.tlength =
            static_cast<uint32_t>(pa_usec_to_bytes(kTargetLatency, &sampleFormat_));
        const auto flags = static_cast<pa_stream_flags_t>(
            PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE);
        if (pa_stream_connect_playback(stream_, sinkName, &attributes, flags, nullptr, nullptr) < 0)
            waiter.Done();
    }
    waiter.Wait(LPulseConnection::kTimeout);
    const LPulseLock lock(connection_->Loop());
    connecting_ = nullptr;
    if (pa_stream_get_state(stream_) != PA_STREAM_READY) {
        error = std::string("The sound output \"") + (sinkName ? sinkName : "default") +
                "\" could not be opened: " + connection_->LastError() + ".";
        return false;
    }
    ApplyVolume();
    tick_ = pa_context_rttime_new(connection_->Context(), pa_rtclock_now() + kTickInterval, OnTick,
                                  this);
    return true;
}

void LPulseOutputStream::Close() {
    const LPulseLock lock(connection_->Loop());
    count_ = 0;
    if (tick_) {
        pa_threaded_mainloop_get_api(connection_->Loop())->time_free(tick_);
        tick_ = nullptr;
    }
    if (!stream_) return;
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_set_write_callback(stream_, nullptr, nullptr);
    pa_stream_set_latency_update_callback(stream_, nullptr, nullptr);
    pa_stream_set_underflow_callback(stream_, nullptr, nullptr);
    pa_stream_disconnect(stream_);
    pa_stream_unref(stream_);
    stream_ = nullptr;
}

void LPulseOutputStream::OnState(pa_stream* stream, void* user) {
    auto* self = static_cast<LPulseOutputStream*>(user);
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (self->connecting_ && (state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state)))
        self->connecting_->Done();
}

void LPulseOutputStream::OnRequest(pa_stream*, size_t, void* user) {
    static_cast<LPulseOutputStream*>(user)->Pump();
}

void LPulseOutputStream::OnTiming(pa_stream*, void* user) {
    auto* self = static_cast<LPulseOutputStream*>(user);
    self->Pump();
    self->CompletePlayed();
}

void LPulseOutputStream::OnUnderflow(pa_stream* stream, void* user) {
    // The play position lags the server's read position by the sink's latency, so once the
    // server has run out of data the position never reaches the end of what was written. All of
    // it has been heard when that latency has passed.
    auto* self = static_cast<LPulseOutputStream*>(user);
    const pa_timing_info* timing = pa_stream_get_timing_info(stream);
    if (!timing || timing->write_index_corrupt) return;
    self->drainedIndex_ = timing->write_index;
    self->drainedAt_ = pa_rtclock_now() + std::max(timing->sink_usec, kTickInterval);
}

void LPulseOutputStream::OnTick(pa_mainloop_api*, pa_time_event* event, const struct timeval*,
                                void* user) {
    auto* self = static_cast<LPulseOutputStream*>(user);
    self->Pump();
    self->CompletePlayed();
    pa_context_rttime_restart(self->connection_->Context(), event,
                              pa_rtclock_now() + kTickInterval);
}

bool LPulseOutputStream::Play(const int16_t* samples, int frames, void* tag) {
    if (!samples || frames <= 0) return false;
    const LPulseLock lock(connection_->Loop());
    if (!stream_ || count_ == kQueueSize || pa_stream_get_state(stream_) != PA_STREAM_READY)
        return false;
    At(count_) = {samples, static_cast<size_t>(frames) * frameBytes_, tag, 0, 0, 0};
    ++count_;
    Pump();
    return true;
}

void LPulseOutputStream::Pump() {
    if (!stream_ || pa_stream_get_state(stream_) != PA_STREAM_READY) return;
    // Where a buffer ends up in the stream is only known while the write index is; after a
    // flush it is not until the server's next timing report.
    const pa_timing_info* timing = pa_stream_get_timing_info(stream_);
    if (!timing || timing->write_index_corrupt) return;
    size_t writable = pa_stream_writable_size(stream_);
    if (writable == static_cast<size_t>(-1)) return;
    writable -= writable % frameBytes_;
    bool wrote = false, unwritten = false;
    for (int i = 0; i < count_; ++i) {
        Entry& entry = At(i);
        if (entry.written == entry.bytes) continue;
        if (writable == 0) {
            unwritten = true;
            break;
        }
        const size_t bytes = std::min(entry.bytes - entry.written, writable);
        if (entry.written == 0) entry.start = timing->write_index;
        if (pa_stream_write(stream_, reinterpret_cast<const char*>(entry.samples) + entry.written,
                            bytes, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return;
        entry.written += bytes;
        writable -= bytes;
        wrote = true;
        if (entry.written == entry.bytes)
            entry.end = timing->write_index;
        else
            unwritten = true;
    }
    // With nothing more to come for now, what was written plays even when it is less than the
    // server waits for before it starts.
    if (wrote && !unwritten && !corked_) LPulseForget(pa_stream_trigger(stream_, nullptr, nullptr));
}

int64_t LPulseOutputStream::PlayedBytes() const {
    pa_usec_t time = 0;
    if (!stream_ || pa_stream_get_time(stream_, &time) < 0) return -1;
    return static_cast<int64_t>(pa_usec_to_bytes(time, &sampleFormat_));
}

void LPulseOutputStream::CompletePlayed() {
    const int64_t played = PlayedBytes();
    const bool drained = drainedIndex_ >= 0 && pa_rtclock_now() >= drainedAt_;
    // A completion may queue, quiet or flush buffers; the head is looked at afresh each time.
    while (count_ > 0 && At(0).written == At(0).bytes &&
           (At(0).end <= played || (drained && At(0).end <= drainedIndex_))) {
        void* const tag = At(0).tag;
        head_ = (head_ + 1) % kQueueSize;
        --count_;
        completion_(user_, tag);
    }
}

void LPulseOutputStream::Pause() {
    const LPulseLock lock(connection_->Loop());
    if (!stream_) return;
    corked_ = true;
    LPulseForget(pa_stream_cork(stream_, 1, nullptr, nullptr));
}

void LPulseOutputStream::Resume() {
    const LPulseLock lock(connection_->Loop());
    if (!stream_) return;
    corked_ = false;
    LPulseForget(pa_stream_cork(stream_, 0, nullptr, nullptr));
    // Audio held back below the start threshold would otherwise wait for more.
    if (count_ > 0 && At(count_ - 1).written == At(count_ - 1).bytes)
        LPulseForget(pa_stream_trigger(stream_, nullptr, nullptr));
}

void LPulseOutputStream::Quiet() {
    const LPulseLock lock(connection_->Loop());
    if (!stream_ || count_ == 0 || At(0).written == 0) return;
    head_ = (head_ + 1) % kQueueSize;
    --count_;
    for (int i = 0; i < count_; ++i)
        At(i).written = 0;
    FlushServer();
}

void LPulseOutputStream::Flush() {
    const LPulseLock lock(connection_->Loop());
    if (!stream_ || count_ == 0) return;
    // The buffer being heard keeps playing from where it is; the rest are dropped.
    const int64_t played = PlayedBytes();
    Entry& head = At(0);
    const bool started = head.written > 0 && played > head.start;
    count_ = started ? 1 : 0;
    if (started) {
        const auto heard = static_cast<size_t>(std::min<int64_t>(played - head.start, head.bytes));
        head.written = heard - heard % frameBytes_;
    }
    FlushServer();
}

void LPulseOutputStream::FlushServer() {
    drainedIndex_ = -1;
    LPulseForget(pa_stream_flush(stream_, nullptr, nullptr));
    Pump();
}

void LPulseOutputStream::SetVolume(int left, int right) {
    const LPulseLock lock(connection_->Loop());
    volume_[0] = std::clamp(left, 0, kMaxVolume);
    volume_[1] = std::clamp(right, 0, kMaxVolume);
    if (stream_) ApplyVolume();
}

void LPulseOutputStream::ApplyVolume() {
    pa_cvolume volume;
    volume.channels = sampleFormat_.channels;
    for (int c = 0; c < sampleFormat_.channels; ++c)
        volume.values[c] = pa_sw_volume_from_linear(volume_[std::min(c, 1)] / 256.0);
    LPulseForget(pa_context_set_sink_input_volume(
        connection_->Context(), pa_stream_get_index(stream_), &volume, nullptr, nullptr));
}
