// The session's life on virtual time, with displays whose freeze comes at
// once, late or never, and overlays that only record what is asked of them.
#include "FakeScreenCapturePermission.h"
#include "RegionScreenshotSession.h"
#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <set>
#include <thread>

namespace tosvar {
namespace {

// Grabs that come at once, wait for the test's word, or fail, by display.
struct ScriptedDisplays final : DisplayCapturing {
    enum class Behaviour { immediate, gated, failing };
    std::map<double, Behaviour> byLeftEdge;
    std::promise<void> open;
    std::shared_future<void> gate = open.get_future().share();
    std::mutex mutex;
    int grabs = 0;

    std::optional<CapturedDisplay> capture(const ScreenInfo& screen) override {
        Behaviour behaviour = Behaviour::immediate;
        {
            std::lock_guard lock(mutex);
            ++grabs;
            if (auto found = byLeftEdge.find(screen.frame.minX()); found != byLeftEdge.end()) behaviour = found->second;
        }
        if (behaviour == Behaviour::gated) gate.wait();
        if (behaviour == Behaviour::failing) return std::nullopt;
        MutableImage image(static_cast<int>(screen.frame.width()), static_cast<int>(screen.frame.height()));
        return CapturedDisplay{std::move(image).freeze(), screen, 1};
    }
};

struct RecordingOverlay final : RegionOverlay {
    ScreenInfo screen;
    std::optional<CapturedDisplay> frozen;
    RegionOverlayCallbacks callbacks;
    bool shown = false, key = false, orderedOut = false, hoverSeeded = false;
    std::vector<std::string>* events = nullptr;

    void attachFrozen(const CapturedDisplay& display) override { frozen = display; }
    bool isFrozen() const override { return frozen.has_value(); }
    void show() override { shown = true; }
    void orderOut() override {
        orderedOut = true;
        events->push_back("out " + std::to_string(static_cast<int>(screen.frame.minX())));
    }
    void makeKey() override {
        key = true;
        events->push_back("key " + std::to_string(static_cast<int>(screen.frame.minX())));
    }
    bool isKey() const override { return key; }
    void addWindowImages(const std::map<std::uint32_t, ImageBuffer>&) override {}
    void seedInitialHover() override { hoverSeeded = true; }
};

struct RecordingOverlays final : RegionOverlayFactory {
    std::vector<RecordingOverlay*> made; // owned by the session while it stands
    std::vector<std::string> events;
    std::unique_ptr<RegionOverlay> make(const ScreenInfo& screen, const std::optional<CapturedDisplay>& frozen, ScreenshotOverlayMode,
                                        RegionOverlayCallbacks callbacks) override {
        auto overlay = std::make_unique<RecordingOverlay>();
        overlay->screen = screen;
        overlay->frozen = frozen;
        overlay->callbacks = std::move(callbacks);
        overlay->events = &events;
        made.push_back(overlay.get());
        return overlay;
    }
};

struct Layout final : ScreenLayout {
    std::vector<ScreenInfo> list{{{0, 0, 800, 600}, {0, 0, 800, 600}, 1}, {{800, 0, 640, 480}, {800, 0, 640, 480}, 1}};
    Point mouse{900, 100};
    std::vector<ScreenInfo> screens() const override { return list; }
    Point mouseLocation() const override { return mouse; }
};

struct Windows final : WindowListing {
    std::vector<WindowInfo> list;
    std::vector<WindowInfo> onScreenWindows() override { return list; }
};

class SessionTest : public ::testing::Test {
protected:
    ~SessionTest() override { joinAll(); }

    std::shared_ptr<RegionScreenshotSession> make() {
        return RegionScreenshotSession::make({displays, layout, windows, overlays, permission, queue,
                                              [this](std::function<void()> work) {
                                                  std::lock_guard lock(threadsMutex);
                                                  threads.emplace_back(std::move(work));
                                              },
                                              [this] { ++beeps; }, [this](std::string_view key, double) { toasts.emplace_back(key); }, 4242});
    }
    void joinAll() {
        for (;;) {
            std::vector<std::thread> running;
            {
                std::lock_guard lock(threadsMutex);
                running.swap(threads);
            }
            if (running.empty()) return;
            for (auto& t : running) t.join();
        }
    }
    // Lets every grab finish and the main queue take their results.
    void settle() {
        joinAll();
        queue.runUntilIdle();
        joinAll();
        queue.runUntilIdle();
    }

    std::shared_ptr<ScriptedDisplays> displays = std::make_shared<ScriptedDisplays>();
    Layout layout;
    Windows windows;
    RecordingOverlays overlays;
    FakeScreenCapturePermission permission;
    VirtualMainQueue queue;
    std::mutex threadsMutex;
    std::vector<std::thread> threads;
    int beeps = 0;
    std::vector<std::string> toasts;
};

TEST_F(SessionTest, AnEarlyFreezeShowsFrozenAtOnceAndTheRestAttachWhenTheyLand) {
    auto session = make();
    int results = 0;
    session->capture([&](const RegionAnnotationOutcome&) { ++results; });
    ASSERT_EQ(overlays.made.size(), 2u);
    EXPECT_TRUE(overlays.made[1]->isFrozen()) << "the display under the pointer, within the deadline";
    EXPECT_TRUE(overlays.made[1]->hoverSeeded);
    EXPECT_TRUE(overlays.made[0]->shown);
    EXPECT_FALSE(overlays.made[1]->key) << "the keyboard waits for the freeze";
    settle();
    EXPECT_TRUE(overlays.made[0]->isFrozen());
    EXPECT_TRUE(overlays.made[1]->key);
    EXPECT_EQ(results, 0);
}

TEST_F(SessionTest, ALateFreezeIsAttachedWhenItComesAndAFailedDisplayLosesItsOverlay) {
    displays->byLeftEdge = {{800, ScriptedDisplays::Behaviour::gated}, {0, ScriptedDisplays::Behaviour::failing}};
    auto session = make();
    session->capture([](const RegionAnnotationOutcome&) {});
    ASSERT_EQ(overlays.made.size(), 2u);
    EXPECT_FALSE(overlays.made[1]->isFrozen()) << "past 80 ms the overlay shows over the live screen";
    displays->open.set_value();
    settle();
    EXPECT_TRUE(overlays.made[1]->isFrozen());
    EXPECT_EQ(session->overlayCount(), 1u);
    EXPECT_TRUE(overlays.made[1]->key);
}

TEST_F(SessionTest, ANeverFreezingScreenEndsTheSessionWithABeepAndAToast) {
    displays->byLeftEdge = {{0, ScriptedDisplays::Behaviour::failing}, {800, ScriptedDisplays::Behaviour::failing}};
    auto session = make();
    int cancelled = 0;
    session->capture([&](const RegionAnnotationOutcome& outcome) { cancelled += outcome.result.finishedValue() == nullptr; });
    settle();
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(toasts, (std::vector<std::string>{"screenshot.freeze.failed"}));
    EXPECT_FALSE(session->isActive());
}

TEST_F(SessionTest, OneResultPerSessionAndASecondRequestDuringItDoesNothing) {
    auto session = make();
    int results = 0, texts = 0;
    session->capture([&](const RegionAnnotationOutcome&) { ++results; });
    session->captureText([&](const std::optional<std::string>&) { ++texts; });
    ASSERT_EQ(overlays.made.size(), 2u) << "no second set of overlays";
    RegionOverlayCallbacks callbacks = overlays.made[0]->callbacks;
    callbacks.onFinish({AnnotationResult::finished({1, 2, 3}, AnnotationAction::copy), Rect(0, 0, 10, 10), true, 1});
    callbacks.onFinish({AnnotationResult::cancelled(), std::nullopt, true, 1});
    EXPECT_EQ(results, 1);
    EXPECT_EQ(texts, 0);
    EXPECT_FALSE(session->isActive());
    settle();
    EXPECT_FALSE(session->isActive()) << "late freezes find the session gone";
    session->captureText([&](const std::optional<std::string>&) { ++texts; });
    EXPECT_TRUE(session->isActive()) << "a new session starts at once";
}

TEST_F(SessionTest, ACancelBeforeTheFreezeLandsLeavesNothingBehind) {
    displays->byLeftEdge = {{800, ScriptedDisplays::Behaviour::gated}, {0, ScriptedDisplays::Behaviour::gated}};
    auto session = make();
    int cancelled = 0;
    session->capture([&](const RegionAnnotationOutcome& outcome) { cancelled += outcome.result.finishedValue() == nullptr; });
    session->cancel();
    EXPECT_EQ(cancelled, 1);
    EXPECT_FALSE(session->isActive());
    const std::size_t eventsAtCancel = overlays.events.size();
    displays->open.set_value();
    settle();
    queue.advance(3);
    EXPECT_EQ(overlays.events.size(), eventsAtCancel) << "no key focus and no overlay afterwards";
}

TEST_F(SessionTest, AFreezeStillPendingAfterTwoSecondsGrantsTheKeyboard) {
    displays->byLeftEdge = {{800, ScriptedDisplays::Behaviour::gated}, {0, ScriptedDisplays::Behaviour::gated}};
    auto session = make();
    session->capture([](const RegionAnnotationOutcome&) {});
    queue.advance(1.9);
    EXPECT_FALSE(overlays.made[1]->key);
    queue.advance(0.2);
    EXPECT_TRUE(overlays.made[1]->key) << "the display under the pointer";
    displays->open.set_value();
    settle();
}

TEST_F(SessionTest, AModeSwitchEndsThroughTheSessionLevelCallback) {
    auto session = make();
    int annotations = 0;
    std::optional<Rect> scrolled;
    session->onScrollCaptureRequested = [&](const Rect& rect, std::optional<std::uint32_t>) { scrolled = rect; };
    session->capture([&](const RegionAnnotationOutcome&) { ++annotations; });
    overlays.made[1]->callbacks.onScrollRegion(Rect(10, 10, 100, 100), std::nullopt);
    EXPECT_EQ(scrolled, Rect(10, 10, 100, 100));
    EXPECT_EQ(annotations, 0);
    settle();
}

TEST_F(SessionTest, AnOpenMenuIsFrozenBeforeAnythingShows) {
    windows.list = {{77, 1000, WindowLevel::menu, 1, {850, 80, 120, 200}}};
    auto session = make();
    session->capture([](const RegionAnnotationOutcome&) {});
    ASSERT_EQ(overlays.made.size(), 2u);
    EXPECT_TRUE(overlays.made[0]->isFrozen());
    EXPECT_TRUE(overlays.made[1]->isFrozen());
    EXPECT_TRUE(overlays.made[1]->key) << "the keyboard at once, on the display under the pointer";
    EXPECT_TRUE(threads.empty()) << "nothing deferred";
}

TEST_F(SessionTest, WhereGrabsSeeTheOverlaysEveryDisplayIsFrozenBeforeAnyShowsAndWithoutOurToasts) {
    std::optional<int> grabsWhenChromeHid;
    auto session = RegionScreenshotSession::make({displays, layout, windows, overlays, permission, queue,
                                                  [](std::function<void()>) { FAIL() << "nothing runs after the overlays show"; },
                                                  [] {}, [](std::string_view, double) {}, 4242, true,
                                                  [&] { grabsWhenChromeHid = displays->grabs; }});
    session->capture([](const RegionAnnotationOutcome&) {});
    ASSERT_EQ(overlays.made.size(), 2u);
    EXPECT_TRUE(overlays.made[0]->isFrozen() && overlays.made[1]->isFrozen());
    EXPECT_EQ(grabsWhenChromeHid, 0);
}

TEST_F(SessionTest, WithoutPermissionTheGuidanceShowsAndTheSessionEndsCancelled) {
    permission.granted = false;
    auto session = make();
    int cancelled = 0;
    session->capture([&](const RegionAnnotationOutcome& outcome) { cancelled += outcome.result.finishedValue() == nullptr; });
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(permission.guidance, 1);
    EXPECT_TRUE(overlays.made.empty());
}

TEST_F(SessionTest, AnnotatingShrinksTheSessionToItsDisplay) {
    auto session = make();
    session->capture([](const RegionAnnotationOutcome&) {});
    settle();
    overlays.made[1]->callbacks.onBeganAnnotation();
    EXPECT_EQ(session->overlayCount(), 1u);
    EXPECT_TRUE(overlays.made[0]->orderedOut);
}

} // namespace
} // namespace tosvar
