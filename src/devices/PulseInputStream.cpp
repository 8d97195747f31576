#include "devices/PulseInputStream.h"

#include <algorithm>

namespace {

constexpr double kUnityGain = 1.25;
constexpr double kMaxGain = 8;
// The server hands over what it recorded every 10 ms.
constexpr pa_usec_t kFragment = 10 * PA_USEC_PER_MSEC;

} // namespace

std::unique_ptr<LSoundInputStream>
LPulseInputStream::Open(std::shared_ptr<LPulseConnection> connection, uint32_t index,
                        int sampleRate, int channels, std::string& error) {
    LPulseDeviceDetails source;
    if (!LPulseFindSource(*connection, index, source)) {
        error = "There is no sound input device " + std::to_string(index) + ".";
        return nullptr;
    }
    pa_sample_spec sampleFormat;
    sampleFormat.format = PA_SAMPLE_S16NE;
    sampleFormat.rate =
        static_cast<uint32_t>(std::clamp(sampleRate, 1, static_cast<int>(PA_RATE_MAX)));
    sampleFormat.channels =
        static_cast<uint8_t>(std::clamp(channels, 1, static_cast<int>(PA_CHANNELS_MAX)));
    std::unique_ptr<LPulseInputStream> stream(
        new LPulseInputStream(std::move(connection), index, std::move(source), sampleFormat));
    if (!stream->Connect(error)) return nullptr;
    return stream;
}

LPulseInputStream::LPulseInputStream(std::shared_ptr<LPulseConnection> connection, uint32_t index,
                                     LPulseDeviceDetails source, const pa_sample_spec& sampleFormat)
    : connection_(std::move(connection)), sourceIndex_(index), source_(std::move(source)),
      sampleFormat_(sampleFormat) {}

LPulseInputStream::~LPulseInputStream() {
    Stop();
}

bool LPulseInputStream::Connect(std::string& error) {
    LPulseWaiter waiter;
    {
        const LPulseLock lock(connection_->Loop());
        stream_ =
            pa_stream_new(connection_->Context(), "Vinora recording", &sampleFormat_, nullptr);
        if (!stream_) {
            error =
                "The sound server refused a recording stream: " + connection_->LastError() + ".";
            return false;
        }
        connecting_ = &waiter;
        pa_stream_set_state_callback(stream_, OnState, this);
        pa_stream_set_read_callback(stream_, OnRead, this);
        pa_buffer_attr attributes;
        attributes.maxlength = static_cast<uint32_t>(-1);
        attributes.fragsize = static_cast<uint32_t>(pa_usec_to_bytes(kFragment, &sampleFormat_));
        attributes.tlength = attributes.prebuf = attributes.minreq = static_cast<uint32_t>(-1);
        if (pa_stream_connect_record(stream_, source_.name.c_str(), &attributes,
                                     PA_STREAM_ADJUST_LATENCY) < 0)
            waiter.Done();
    }
    waiter.Wait(LPulseConnection::kTimeout);
    const LPulseLock lock(connection_->Loop());
    connecting_ = nullptr;
    if (pa_stream_get_state(stream_) == PA_STREAM_READY) return true;
    error = "The sound input \"" + source_.name +
            "\" could not be opened: " + connection_->LastError() + ".";
    return false;
}

void LPulseInputStream::OnState(pa_stream* stream, void* user) {
    auto* self = static_cast<LPulseInputStream*>(user);
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (self->connecting_ && (state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state)))
        self->connecting_->Done();
}

void LPulseInputStream::OnRead(pa_stream* stream, size_t, void* user) {
    auto* self = static_cast<LPulseInputStream*>(user);
    const void* data = nullptr;
    size_t bytes = 0;
    while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &bytes) == 0) {
        if (bytes == 0) break;
        // A hole in the recording (data missing) counts as silence.
        self->Take(static_cast<const int16_t*>(data), bytes / sizeof(int16_t));
        pa_stream_drop(stream);
    }
}

void LPulseInputStream::Take(const int16_t* samples, size_t count) {
    while (count > 0 && armed_) {
        const size_t take = std::min(count, static_cast<size_t>(armedSamples_ - filled_));
        int16_t* out = armed_ + filled_;
        if (samples) {
            std::copy(samples, samples + take, out);
            samples += take;
        } else {
            std::fill(out, out + take, int16_t{0});
        }
        count -= take;
        filled_ += static_cast<int>(take);
        if (filled_ < armedSamples_) return;
        int16_t* const full = armed_;
        armed_ = nullptr;
        completion_(user_, full);
    }
}

bool LPulseInputStream::SelectInputSource(int index) {
    if (source_.ports.empty()) return index == 0;
    if (index < 0 || index >= static_cast<int>(source_.ports.size())) return false;
    const char* port = source_.ports[index].c_str();
    return LPulseRunForSuccess(
        *connection_, [&](pa_context* context, pa_context_success_cb_t done, void* user) {
            return pa_context_set_source_port_by_index(context, sourceIndex_, port, done, user);
        });
}

bool LPulseInputStream::SetInputGain(double gain) {
    if (!(gain >= 0 && gain <= kMaxGain)) return false;
    pa_cvolume volume;
    pa_cvolume_set(&volume, static_cast<unsigned>(source_.channels),
                   pa_sw_volume_from_linear(gain / kUnityGain));
    return LPulseRunForSuccess(*connection_, [&](pa_context* context, pa_context_success_cb_t done,
                                                 void* user) {
        return pa_context_set_source_volume_by_index(context, sourceIndex_, &volume, done, user);
    });
}

bool LPulseInputStream::Record(int16_t* buffer, int samples, Completion completion, void* user) {
    if (!buffer || !completion || samples <= 0 || samples % sampleFormat_.channels != 0)
        return false;
    const LPulseLock lock(connection_->Loop());
    if (!stream_ || armed_) return false;
    armed_ = buffer;
    armedSamples_ = samples;
    filled_ = 0;
    completion_ = completion;
    user_ = user;
    return true;
}

void LPulseInputStream::Stop() {
    const LPulseLock lock(connection_->Loop());
    armed_ = nullptr;
    if (!stream_) return;
    pa_stream_set_read_callback(stream_, nullptr, nullptr);
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_disconnect(stream_);
    pa_stream_unref(stream_);
    stream_ = nullptr;
}
