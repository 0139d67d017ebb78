#include "PulseAudioCapture.h"

#include <pulse/pulseaudio.h>

#include <chrono>
#include <cstring>

namespace tosvar {

namespace {

struct SourceEntry {
    std::string name;
    std::string description;
    bool isMonitor = false;
};

// One connection to the server with its own event thread. Every libpulse
// call on it is made under the thread's lock (`Locked`).
class PulseConnection {
public:
    static Expected<std::unique_ptr<PulseConnection>> open(const std::string& applicationName) {
        std::unique_ptr<PulseConnection> c(new PulseConnection());
        c->loop_ = pa_threaded_mainloop_new();
        if (!c->loop_) return Error{"cannot start a sound connection"};
        c->context_ = pa_context_new(pa_threaded_mainloop_get_api(c->loop_), applicationName.c_str());
        if (!c->context_) return Error{"cannot start a sound connection"};
        pa_context_set_state_callback(
            c->context_, [](pa_context*, void* loop) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop*>(loop), 0); },
            c->loop_);
        if (pa_context_connect(c->context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            return Error{std::string("no sound server: ") + pa_strerror(pa_context_errno(c->context_))};
        if (pa_threaded_mainloop_start(c->loop_) < 0) return Error{"cannot start a sound connection"};
        c->running_ = true;
        const Locked lock(*c);
        for (;;) {
            const pa_context_state_t state = pa_context_get_state(c->context_);
            if (state == PA_CONTEXT_READY) break;
            if (!PA_CONTEXT_IS_GOOD(state))
                return Error{std::string("no sound server: ") + pa_strerror(pa_context_errno(c->context_))};
            pa_threaded_mainloop_wait(c->loop_);
        }
        return c;
    }

    ~PulseConnection() {
        if (running_) pa_threaded_mainloop_stop(loop_);
        if (context_) {
            pa_context_disconnect(context_);
            pa_context_unref(context_);
        }
        if (loop_) pa_threaded_mainloop_free(loop_);
    }

    struct Locked {
        explicit Locked(PulseConnection& c) : loop(c.loop_) { pa_threaded_mainloop_lock(loop); }
        ~Locked() { pa_threaded_mainloop_unlock(loop); }
        pa_threaded_mainloop* loop;
    };

    pa_context* context() const { return context_; }
    pa_threaded_mainloop* loop() const { return loop_; }

    // Waits, with the lock held, until the operation is done.
    void await(pa_operation* operation) {
        if (!operation) return;
        while (pa_operation_get_state(operation) == PA_OPERATION_RUNNING) pa_threaded_mainloop_wait(loop_);
        pa_operation_unref(operation);
    }

    struct ServerNames {
        std::string defaultSource;
        std::string defaultSink;
    };
    ServerNames serverNames() {
        const Locked lock(*this);
        struct Query {
            PulseConnection* self;
            ServerNames names;
        } query{this, {}};
        await(pa_context_get_server_info(
            context_,
            [](pa_context*, const pa_server_info* info, void* data) {
                auto* q = static_cast<Query*>(data);
                if (info && info->default_source_name) q->names.defaultSource = info->default_source_name;
                if (info && info->default_sink_name) q->names.defaultSink = info->default_sink_name;
                pa_threaded_mainloop_signal(q->self->loop_, 0);
            },
            &query));
        return query.names;
    }

    std::vector<SourceEntry> sources() {
        const Locked lock(*this);
        struct Query {
            PulseConnection* self;
            std::vector<SourceEntry> entries;
        } query{this, {}};
        await(pa_context_get_source_info_list(
            context_,
            [](pa_context*, const pa_source_info* info, int, void* data) {
                auto* q = static_cast<Query*>(data);
                if (info)
                    q->entries.push_back({info->name, info->description ? info->description : info->name,
                                          info->monitor_of_sink != PA_INVALID_INDEX});
                pa_threaded_mainloop_signal(q->self->loop_, 0);
            },
            &query));
        return query.entries;
    }

    std::string monitorOfSink(const std::string& sink) {
        const Locked lock(*this);
        struct Query {
            PulseConnection* self;
            std::string monitor;
        } query{this, {}};
        await(pa_context_get_sink_info_by_name(
            context_, sink.c_str(),
            [](pa_context*, const pa_sink_info* info, int, void* data) {
                auto* q = static_cast<Query*>(data);
                if (info && info->monitor_source_name) q->monitor = info->monitor_source_name;
                pa_threaded_mainloop_signal(q->self->loop_, 0);
            },
            &query));
        return query.monitor;
    }

private:
    PulseConnection() = default;

    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    bool running_ = false;
};

const SourceEntry* findMicrophone(const std::vector<SourceEntry>& sources, const std::string& name) {
    for (const SourceEntry& s : sources)
        if (s.name == name && !s.isMonitor) return &s;
    return nullptr;
}

// Stamps chunks with the media clock. A chunk began as long before now as
// the sound still waiting to be read lasts, itself included (a source may
// hand over a burst at once). Between chunks the sound card's steady clock
// is trusted: times follow from the frames counted since an anchor, unless
// they drift from the measured ones by more than a tenth of a second (the
// server paused the source, data was lost); then the measured time anchors
// anew.
class ChunkClock {
public:
    MediaTime stamp(std::int64_t frames, std::int64_t framesWaiting, int rate) {
        const MediaTime measured = mediaClockNow() - MediaTime(framesWaiting * 1'000'000 / rate);
        const MediaTime counted = anchor_ + MediaTime(counted_ * 1'000'000 / rate);
        if (!started_ || std::chrono::abs(measured - counted) > std::chrono::milliseconds(100)) {
            anchor_ = measured;
            counted_ = 0;
            started_ = true;
        }
        const MediaTime time = anchor_ + MediaTime(counted_ * 1'000'000 / rate);
        counted_ += frames;
        return time;
    }

private:
    bool started_ = false;
    MediaTime anchor_{0};
    std::int64_t counted_ = 0;
};

class PulseAudioStream final : public AudioCaptureStream {
public:
    PulseAudioStream(std::unique_ptr<PulseConnection> connection, pa_sample_spec spec,
                     std::function<void(AudioChunk)> onChunk)
        : connection_(std::move(connection)), spec_(spec), onChunk_(std::move(onChunk)) {}

    ~PulseAudioStream() override { stop(); }

    std::optional<Error> connect(const std::string& source) {
        const PulseConnection::Locked lock(*connection_);
        stream_ = pa_stream_new(connection_->context(), "Recording", &spec_, nullptr);
        if (!stream_) return Error{"cannot record sound"};
        pa_stream_set_state_callback(
            stream_,
            [](pa_stream*, void* loop) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop*>(loop), 0); },
            connection_->loop());
        pa_stream_set_read_callback(
            stream_, [](pa_stream*, std::size_t, void* self) { static_cast<PulseAudioStream*>(self)->read(); }, this);
        pa_buffer_attr attributes;
        std::memset(&attributes, 0xff, sizeof attributes); // the server's choice for all but the fragment
        attributes.fragsize = static_cast<std::uint32_t>(pa_usec_to_bytes(20'000, &spec_));
        if (pa_stream_connect_record(stream_, source.c_str(), &attributes, PA_STREAM_ADJUST_LATENCY) < 0)
            return Error{std::string("cannot record sound: ") + pa_strerror(pa_context_errno(connection_->context()))};
        for (;;) {
            const pa_stream_state_t state = pa_stream_get_state(stream_);
            if (state == PA_STREAM_READY) return std::nullopt;
            if (!PA_STREAM_IS_GOOD(state))
                return Error{std::string("cannot record sound: ") +
                             pa_strerror(pa_context_errno(connection_->context()))};
            pa_threaded_mainloop_wait(connection_->loop());
        }
    }

    void stop() override {
        if (!connection_) return;
        {
            const PulseConnection::Locked lock(*connection_);
            if (stream_) {
                pa_stream_set_read_callback(stream_, nullptr, nullptr);
                pa_stream_set_state_callback(stream_, nullptr, nullptr);
                pa_stream_disconnect(stream_);
                pa_stream_unref(stream_);
                stream_ = nullptr;
            }
        }
        connection_.reset(); // stops the event thread: no chunk comes after this
    }

private:
    // On the event thread, with its lock held.
    void read() {
        const void* data = nullptr;
        std::size_t bytes = 0;
        const std::size_t frameBytes = pa_frame_size(&spec_);
        for (std::size_t waiting; (waiting = pa_stream_readable_size(stream_)) > 0 && waiting != std::size_t(-1);) {
            if (pa_stream_peek(stream_, &data, &bytes) < 0 || bytes == 0) return;
            if (data) {
                AudioChunk chunk;
                chunk.channels = spec_.channels;
                chunk.sampleRate = static_cast<int>(spec_.rate);
                chunk.samples.resize(bytes / sizeof(float));
                std::memcpy(chunk.samples.data(), data, chunk.samples.size() * sizeof(float));
                chunk.time = clock_.stamp(chunk.frameCount(), static_cast<std::int64_t>(waiting / frameBytes),
                                          chunk.sampleRate);
                onChunk_(std::move(chunk));
            }
            pa_stream_drop(stream_);
        }
    }

    std::unique_ptr<PulseConnection> connection_;
    pa_sample_spec spec_;
    std::function<void(AudioChunk)> onChunk_;
    pa_stream* stream_ = nullptr;
    ChunkClock clock_;
};

} // namespace

std::vector<AudioInputDevice> PulseAudioCapture::microphones() {
    Expected<std::unique_ptr<PulseConnection>> connection = PulseConnection::open(applicationName_);
    if (!connection) return {};
    std::vector<AudioInputDevice> devices;
    for (const SourceEntry& s : (*connection)->sources())
        if (!s.isMonitor) devices.push_back({s.name, s.description});
    return devices;
}

bool PulseAudioCapture::hasDefaultMicrophone() {
    Expected<std::unique_ptr<PulseConnection>> connection = PulseConnection::open(applicationName_);
    if (!connection) return false;
    return findMicrophone((*connection)->sources(), (*connection)->serverNames().defaultSource) != nullptr;
}

Expected<std::unique_ptr<AudioCaptureStream>> PulseAudioCapture::start(const AudioCaptureRequest& request,
                                                                       std::function<void(AudioChunk)> onChunk) {
    if (request.channels < 1 || request.channels > static_cast<int>(PA_CHANNELS_MAX) || request.sampleRate < 1)
        return Error{"unsupported sound format"};
    Expected<std::unique_ptr<PulseConnection>> connection = PulseConnection::open(applicationName_);
    if (!connection) return connection.error();
    const PulseConnection::ServerNames names = (*connection)->serverNames();
    std::string source;
    if (request.source == AudioSourceKind::microphone) {
        const std::vector<SourceEntry> sources = (*connection)->sources();
        if (request.deviceID && findMicrophone(sources, *request.deviceID)) {
            source = *request.deviceID;
        } else if (findMicrophone(sources, names.defaultSource)) {
            source = names.defaultSource;
        } else {
            return Error{"no microphone"};
        }
    } else {
        source = (*connection)->monitorOfSink(names.defaultSink);
        if (source.empty()) return Error{"no sound output to record"};
    }
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32LE, static_cast<std::uint32_t>(request.sampleRate),
                              static_cast<std::uint8_t>(request.channels)};
    auto stream = std::make_unique<PulseAudioStream>(std::move(connection).value(), spec, std::move(onChunk));
    if (std::optional<Error> error = stream->connect(source)) return *error;
    return std::unique_ptr<AudioCaptureStream>(std::move(stream));
}

} // namespace tosvar
