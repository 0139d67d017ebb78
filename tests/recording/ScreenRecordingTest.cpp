// Records a short movie of a private Xvfb screen through the capture engine
// with the real X11 frame source and FFmpeg encoder, and reads it back.
#include "CaptureEngine.h"
#include "FfmpegMovieEncoder.h"
#include "FfmpegMovieFiles.h"
#include "IsolatedEnvironment.h"
#include "RecordingAudioMixer.h"
#include "RecordingFakes.h"
#include "VirtualMainQueue.h"
#include "WorkerPool.h"
#include "X11ScreenStreaming.h"
#include "XvfbServer.h"

#include <gtest/gtest.h>

#include <xcb/xcb.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <thread>

namespace tosvar {
namespace {

using namespace std::chrono_literals;

// A plain X window whose colour the test changes, painting the screen.
class ColourWindow {
public:
    ColourWindow(const std::string& display, int x, int y, int width, int height) {
        xcb_ = xcb_connect(display.c_str(), nullptr);
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb_)).data;
        window_ = xcb_generate_id(xcb_);
        const std::uint32_t values[] = {0x000000ff, 1}; // blue, override-redirect
        xcb_create_window(xcb_, XCB_COPY_FROM_PARENT, window_, screen->root, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(xcb_, window_);
        xcb_flush(xcb_);
    }
    ~ColourWindow() { xcb_disconnect(xcb_); }

    // Moves the pointer on the root, as a user would.
    void pointAt(int x, int y) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb_)).data;
        xcb_warp_pointer(xcb_, XCB_NONE, screen->root, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                         static_cast<std::int16_t>(y));
        std::free(xcb_get_input_focus_reply(xcb_, xcb_get_input_focus(xcb_), nullptr));
    }

    void paint(std::uint32_t rgb) {
        xcb_change_window_attributes(xcb_, window_, XCB_CW_BACK_PIXEL, &rgb);
        xcb_clear_area(xcb_, 0, window_, 0, 0, 0, 0);
        std::free(xcb_get_input_focus_reply(xcb_, xcb_get_input_focus(xcb_), nullptr)); // a round trip: painted
    }

private:
    xcb_connection_t* xcb_;
    xcb_window_t window_;
};

struct VideoFacts {
    int width = 0, height = 0, packets = 0;
    double first = 0, last = 0;
};

VideoFacts videoOf(const std::filesystem::path& file) {
    VideoFacts facts;
    AVFormatContext* input = nullptr;
    if (avformat_open_input(&input, file.c_str(), nullptr, nullptr) < 0) return facts;
    avformat_find_stream_info(input, nullptr);
    const int index = av_find_best_stream(input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index >= 0) {
        facts.width = input->streams[index]->codecpar->width;
        facts.height = input->streams[index]->codecpar->height;
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(input, packet) >= 0) {
            if (packet->stream_index == index) {
                const double t = static_cast<double>(packet->pts) * av_q2d(input->streams[index]->time_base);
                if (facts.packets++ == 0) facts.first = t;
                facts.last = t;
            }
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
    }
    avformat_close_input(&input);
    return facts;
}

class ScreenRecordingTest : public ::testing::Test {
protected:
    ScreenRecordingTest() : screen(Rect{0, 0, 320, 240}, 1, nullptr, xvfb.display()) {}

    std::shared_ptr<CaptureEngine> makeEngine(int fps, bool showsCursor) {
        return CaptureEngine::make({main, [this](std::function<void()> work) { pool.detach(std::move(work)); }, screen,
                                    sound, openFfmpegMovieEncoder, environment.root(), ::getpid()},
                                   fps, showsCursor, false, false);
    }
    // Runs main-thread work until `done`, for at most five seconds.
    void runUntil(const std::function<bool()>& done) {
        for (int i = 0; i < 1000 && !done(); ++i) {
            main.runUntilIdle();
            std::this_thread::sleep_for(5ms);
        }
    }
    void start(CaptureEngine& engine, const RecordingTarget& target) {
        std::optional<std::optional<Error>> started;
        engine.start(target, [&](std::optional<Error> e) { started = e; });
        runUntil([&] { return started.has_value(); });
        ASSERT_TRUE(started);
        ASSERT_EQ(*started, std::nullopt) << (*started)->message;
    }
    Expected<CaptureEngine::Result> stop(CaptureEngine& engine) {
        std::optional<Expected<CaptureEngine::Result>> result;
        engine.stop([&](Expected<CaptureEngine::Result> r) { result = std::move(r); });
        runUntil([&] { return result.has_value(); });
        if (!result) return Error{"no answer"};
        return *result;
    }

    XvfbServer xvfb{320, 240};
    IsolatedEnvironment environment;
    VirtualMainQueue main;
    WorkerPool pool{2, "recording-test"};
    X11ScreenStreaming screen;
    fakes::Sound sound;
};

TEST_F(ScreenRecordingTest, RecordsARegionThatChangesIntoAMovieOfItsSize) {
    ColourWindow window(xvfb.display(), 40, 40, 120, 80);
    Expected<ShareableContent> content = screen.shareableContent();
    ASSERT_TRUE(content) << content.error().message;
    ASSERT_EQ(content->displays.size(), 1u);
    EXPECT_EQ(content->displays[0].frame, Rect(0, 0, 320, 240));

    auto engine = makeEngine(10, false);
    start(*engine, {Rect{0, 0, 320, 240}, Rect{20, 20, 200, 160}, 1, std::nullopt});
    // Ten changes a second for a second and a half: about fifteen frames.
    for (int i = 0; i < 15; ++i) {
        window.paint(i % 2 ? 0x00ff0000 : 0x0000ff00);
        std::this_thread::sleep_for(100ms);
    }
    Expected<CaptureEngine::Result> result = stop(*engine);
    ASSERT_TRUE(result) << result.error().message;
    // A frame per change at most; a busy machine may merge or drop a few.
    EXPECT_GE(result->appendedFrames, 8);
    EXPECT_LE(result->appendedFrames, 17);
    EXPECT_NEAR(result->duration, 1.4, 0.4);

    FfmpegMovieFiles files;
    const Expected<std::filesystem::path> mixed = RecordingAudioMixer::mixIfNeeded(files, result->url);
    ASSERT_TRUE(mixed);
    EXPECT_EQ(*mixed, result->url); // no sound: nothing to mix
    const std::filesystem::path mp4 = environment.root() / "movie.mp4";
    ASSERT_EQ(MovieRemuxer::remuxToMP4(files, *mixed, mp4), std::nullopt);
    const VideoFacts video = videoOf(mp4);
    EXPECT_EQ(video.width, 200);
    EXPECT_EQ(video.height, 160);
    EXPECT_EQ(video.packets, result->appendedFrames);
    EXPECT_NEAR(video.last - video.first, result->duration, 0.02);
}

TEST_F(ScreenRecordingTest, AStillScreenGivesNoNewFrames) {
    ColourWindow window(xvfb.display(), 10, 10, 50, 50);
    auto engine = makeEngine(30, false);
    start(*engine, {Rect{0, 0, 320, 240}, std::nullopt, 1, std::nullopt});
    std::this_thread::sleep_for(600ms);
    window.paint(0x00ffffff);
    std::this_thread::sleep_for(100ms);
    Expected<CaptureEngine::Result> result = stop(*engine);
    ASSERT_TRUE(result) << result.error().message;
    // The first frame, the change and perhaps its echo; not twenty.
    EXPECT_GE(result->appendedFrames, 2);
    EXPECT_LE(result->appendedFrames, 4);
    EXPECT_EQ(videoOf(result->url).width, 320);
}

TEST_F(ScreenRecordingTest, APointerThatMovesGivesFramesWhenItIsShown) {
    ColourWindow window(xvfb.display(), 0, 0, 10, 10);
    for (bool showsCursor : {true, false}) {
        auto engine = makeEngine(20, showsCursor);
        start(*engine, {Rect{0, 0, 320, 240}, std::nullopt, 1, std::nullopt});
        std::this_thread::sleep_for(100ms);
        for (int i = 1; i <= 5; ++i) {
            window.pointAt(30 * i, 40 + 10 * i);
            std::this_thread::sleep_for(100ms);
        }
        Expected<CaptureEngine::Result> result = stop(*engine);
        ASSERT_TRUE(result) << result.error().message;
        if (showsCursor) {
            EXPECT_GE(result->appendedFrames, 6) << "the first frame and one per move";
        } else {
            EXPECT_LE(result->appendedFrames, 2) << "moves of a hidden pointer change nothing";
        }
    }
}

TEST_F(ScreenRecordingTest, MovingTheRegionKeepsTheMovieSize) {
    ColourWindow window(xvfb.display(), 0, 0, 320, 240);
    auto engine = makeEngine(10, true);
    start(*engine, {Rect{0, 0, 320, 240}, Rect{0, 0, 100, 60}, 2, std::nullopt});
    for (int i = 0; i < 6; ++i) {
        engine->updateSourceRect({static_cast<double>(20 * i), 10, 100, 60});
        window.paint(0x00101010u * static_cast<std::uint32_t>(i + 1));
        std::this_thread::sleep_for(100ms);
        main.runUntilIdle();
    }
    Expected<CaptureEngine::Result> result = stop(*engine);
    ASSERT_TRUE(result) << result.error().message;
    const VideoFacts video = videoOf(result->url);
    EXPECT_EQ(video.width, 200); // scale 2: the region's points doubled
    EXPECT_EQ(video.height, 120);
    EXPECT_GE(video.packets, 5);
}

} // namespace
} // namespace tosvar
