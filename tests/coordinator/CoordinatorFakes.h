#pragma once

#include "CaptureCoordinator.h"

#include "FakePasteboard.h"
#include "FakeScreenCapturePermission.h"
#include "InMemoryDefaultsStore.h"
#include "PngDecoder.h"
#include "PngEncoder.h"
#include "VirtualMainQueue.h"
#include "WorkerPool.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace tosvar::fakes {

struct Sink final : CaptureOutputSink {
    std::vector<std::pair<Bytes, bool>> images;
    std::vector<std::filesystem::path> media;
    std::optional<std::filesystem::path> last;
    const std::optional<std::filesystem::path>& lastWrittenURL() const override { return last; }
    void deliver(const Bytes& png, bool copy) override {
        images.emplace_back(png, copy);
        if (onDelivered) onDelivered({png, std::nullopt, copy, std::nullopt});
    }
    void deliver(const std::filesystem::path& file) override {
        media.push_back(file);
        if (onDelivered) onDelivered({file, file, true, std::nullopt});
    }
};

struct Region final : RegionScreenshotController {
    std::function<void(const RegionAnnotationOutcome&)> pendingCapture;
    std::function<void(const std::optional<std::string>&)> pendingText;
    std::function<void(const Bytes&, const Rect&)> pendingTranslate;
    std::function<void(const Rect&, std::optional<std::uint32_t>)> pendingScroll;
    std::function<void(const Rect&, std::optional<std::uint32_t>)> pendingRecording;
    int captures = 0;
    void capture(std::function<void(const RegionAnnotationOutcome&)> onResult) override {
        ++captures;
        pendingCapture = std::move(onResult);
    }
    void captureText(std::function<void(const std::optional<std::string>&)> onText) override { pendingText = std::move(onText); }
    void translateRegion(std::function<void(const Bytes&, const Rect&)> onImage) override { pendingTranslate = std::move(onImage); }
    void pickScrollRegion(std::function<void(const Rect&, std::optional<std::uint32_t>)> onPicked) override {
        pendingScroll = std::move(onPicked);
    }
    void pickRecordingRegion(std::function<void(const Rect&, std::optional<std::uint32_t>)> onPicked) override {
        pendingRecording = std::move(onPicked);
    }
};

struct Recording final : RecordingController {
    State current = State::idle;
    std::vector<std::string> calls;
    State state() const override { return current; }
    void beginInteractive() override { calls.push_back("beginInteractive"); }
    void abortCountdown() override { calls.push_back("abortCountdown"); }
    void stopAndDeliver() override { calls.push_back("stopAndDeliver"); }
    void togglePause() override { calls.push_back("togglePause"); }
    void arm(const RecordingTarget& target, RecordingFormat format, bool) override {
        calls.push_back(format == RecordingFormat::gif ? "arm gif" : "arm mp4");
        armed.push_back(target);
    }
    std::vector<RecordingTarget> armed;
};

struct Audio final : AudioRecordingController {
    State current = State::idle;
    std::vector<std::string> calls;
    State state() const override { return current; }
    void start(const AppSettings&) override { calls.push_back("start"); }
    void stop(Ending) override { calls.push_back("stop"); }
    void togglePause() override { calls.push_back("togglePause"); }
    void confirmDiscard(std::function<void(bool)> completion) override { completion(true); }
};

struct HUD final : AudioRecordingHUD {
    std::vector<std::string> calls;
    void show(std::function<void()>, std::function<void()>, std::function<void()>) override { calls.push_back("show"); }
    void close() override { calls.push_back("close"); }
    void setPaused(bool paused) override { calls.push_back(paused ? "paused" : "running"); }
    void setElapsed(double) override {}
    void report(float) override {}
    void storeFrameAndClose() override { calls.push_back("storeFrameAndClose"); }
};

struct Presentation final : PresentationController {
    bool active = false;
    bool isActive() const override { return active; }
    void start(int) override { active = true; }
    void stop() override { active = false; }
    void toggleAnnotate() override {}
};

struct Scroll final : ScrollCaptureController {
    std::vector<Rect> started;
    std::function<void(const ScrollCaptureResult&)> completion;
    void start(const Rect& rect, std::optional<std::uint32_t>, std::function<void(const ScrollCaptureResult&)> done) override {
        started.push_back(rect);
        completion = std::move(done);
    }
};

struct Translation final : RegionTranslationController {
    bool available = true;
    std::vector<std::string> notes;
    int cardsShown = 0;
    bool isAvailable() const override { return available; }
    std::string unavailableReasonKey() const override { return "translation.unavailable"; }
    void note(const std::string& line) override { notes.push_back(line); }
    void dismissTransientCards() override {}
    void presentCard(const Bytes&, const Rect&) override { ++cardsShown; }
};

struct Stickers final : PinnedImageManager {
    struct Sticker {
        PinnedContentPayload payload;
        std::optional<Rect> frame;
        bool key = false;
        double dx = 0, dy = 0;
    };
    std::map<StickerID, Sticker> stickers;
    std::vector<StickerID> order;
    std::function<void(const AnnotationResult&, const Rect&)> editing;
    double editingScale = 0;
    StickerID createSticker(const PinnedContentPayload& payload, const std::optional<Rect>& frame, bool) override {
        const StickerID id = order.size() + 1;
        stickers[id] = {payload, frame};
        order.push_back(id);
        return id;
    }
    void show(StickerID id, bool mayBecomeKey) override { stickers[id].key = mayBecomeKey; }
    void moveBy(StickerID id, double dx, double dy) override {
        stickers[id].dx += dx;
        stickers[id].dy += dy;
    }
    std::optional<Rect> frame(StickerID id) const override { return stickers.at(id).frame; }
    void publishSnapshot(StickerID) override {}
    void notifyListChanged() override {}
    void beginEditing(StickerID, double scale, std::function<void(const AnnotationResult&, const Rect&)> onResult) override {
        editingScale = scale;
        editing = std::move(onResult);
    }
    bool isEditorReady(StickerID) const override { return true; }
    void toggleTranslateMode(StickerID) override {}
};

struct Cards final : CaptureCardController {
    std::map<CaptureCardHandle, CaptureCardItem> shown;
    std::vector<CaptureCardHandle> dismissed;
    CaptureCardHandle show(const CaptureCardItem& item, const AppSettings&, const std::optional<ScreenInfo>&) override {
        const CaptureCardHandle handle = shown.size() + 1;
        shown[handle] = item;
        return handle;
    }
    void update(CaptureCardHandle handle, const CaptureCardItem& item) override { shown[handle] = item; }
    void dismiss(CaptureCardHandle handle, bool) override { dismissed.push_back(handle); }
};

// Draws a "shadow" as a 1-pixel margin, so a decorated image is 2 pixels
// wider than its original; remembers the thread it ran on.
struct Shadow final : DropShadowDecorating {
    mutable std::mutex mutex;
    mutable std::vector<std::thread::id> threads;
    bool fail = false;
    std::optional<Bytes> decoratePNG(const Bytes& png, double) const override {
        {
            std::lock_guard lock(mutex);
            threads.push_back(std::this_thread::get_id());
        }
        const auto image = PngDecoder::decode(png);
        if (fail || !image) return std::nullopt;
        MutableImage framed(image->width() + 2, image->height() + 2);
        framed.fill(image->pixel(0, 0)); // keeps decorated images of different captures apart
        return PngEncoder::encode(std::move(framed).freeze()).value();
    }
};

// Finishes after its seconds of virtual time. What happened to it is kept in
// `record`, which outlives the countdown the coordinator releases.
struct Countdown final : RecordingCountdown {
    struct Record {
        int seconds = 0;
        bool cancelled = false;
    };
    MainQueue& queue;
    std::shared_ptr<Record> record;
    TimerHandle timer;
    Countdown(MainQueue& q, std::shared_ptr<Record> r) : queue(q), record(std::move(r)) {}
    void run(std::function<void()> onFinished) override { timer = queue.after(record->seconds, std::move(onFinished)); }
    void cancel() override {
        record->cancelled = true;
        timer.cancel();
    }
};

struct Recognizer final : TextRecognition {
    int requests = 0;
    std::optional<std::string> answer = std::string("Hello");
    void recognizeTextForCard(const Bytes&, std::function<void(const std::optional<std::string>&)> completion) override {
        ++requests;
        completion(answer);
    }
};

struct FullScreen final : FullScreenCapture {
    std::optional<FullScreenGrab> grab;
    void captureScreenUnderCursor(std::function<void(const std::optional<FullScreenGrab>&)> completion) override {
        completion(grab);
    }
};

struct Saver final : AnnotationFileSaver {
    int saves = 0;
    void save(const Bytes&) override { ++saves; }
};

struct Thumbnailer final : MediaThumbnailer {
    std::optional<Bytes> firstFramePNG(const std::filesystem::path&) const override { return Bytes{1}; }
};

struct Screens final : ScreenLayout {
    std::vector<ScreenInfo> list{{Rect(0, 0, 1440, 900), Rect(0, 0, 1440, 875), 2},
                                 {Rect(1440, 0, 1920, 1080), Rect(1440, 0, 1920, 1050), 1}};
    Point mouse{100, 100};
    std::vector<ScreenInfo> screens() const override { return list; }
    Point mouseLocation() const override { return mouse; }
};

struct Desk final : Workspace {
    int beeps = 0;
    std::vector<std::filesystem::path> opened, revealed;
    void open(const std::filesystem::path& f) override { opened.push_back(f); }
    void reveal(const std::filesystem::path& f) override { revealed.push_back(f); }
    void beep() override { ++beeps; }
};

struct NoAlerts final : AlertPresenting {
    AlertResponse run(const AlertRequest&, void*) override { return {0, false}; }
};
struct NoTrash final : FileTrash {
    std::optional<Error> moveToTrash(const std::filesystem::path&) override { return std::nullopt; }
};

} // namespace tosvar::fakes
