#include "DisplayFullScreenCapture.h"

#include "PngDecoder.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

struct TwoScreens final : ScreenLayout {
    Point mouse;
    std::vector<ScreenInfo> screens() const override {
        return {{Rect(0, 0, 800, 600), Rect(0, 0, 800, 570), 1}, {Rect(800, 0, 400, 300), Rect(800, 0, 400, 300), 2}};
    }
    Point mouseLocation() const override { return mouse; }
};

// Paints each display in a shade of its own, at its backing scale.
struct PaintedDisplays final : DisplayCapturing {
    int grabs = 0;
    std::optional<CapturedDisplay> capture(const ScreenInfo& screen) override {
        ++grabs;
        MutableImage image(static_cast<int>(screen.frame.width() * screen.backingScale),
                           static_cast<int>(screen.frame.height() * screen.backingScale), PixelOrder::bgra);
        image.fill({static_cast<std::uint8_t>(screen.frame.minX() > 0 ? 200 : 50), 0, 0, 255});
        return CapturedDisplay{std::move(image).freeze(), screen, screen.backingScale};
    }
};

} // namespace

TEST(DisplayFullScreenCapture, GrabsOnlyTheDisplayUnderThePointer) {
    TwoScreens layout;
    PaintedDisplays displays;
    DisplayFullScreenCapture capture(displays, layout);

    layout.mouse = {900, 100};
    std::optional<FullScreenGrab> grab;
    capture.captureScreenUnderCursor([&](const std::optional<FullScreenGrab>& g) { grab = g; });
    ASSERT_TRUE(grab.has_value());
    EXPECT_EQ(grab->screenFrame, Rect(800, 0, 400, 300));
    EXPECT_EQ(grab->scale, 2);
    const auto image = PngDecoder::decode(grab->png);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 800);
    EXPECT_EQ(image->pixel(0, 0), (Rgba8{200, 0, 0, 255}));

    layout.mouse = {-10, -10}; // between displays: nothing to grab
    bool called = false;
    capture.captureScreenUnderCursor([&](const std::optional<FullScreenGrab>& g) {
        called = true;
        EXPECT_FALSE(g.has_value());
    });
    EXPECT_TRUE(called);
    EXPECT_EQ(displays.grabs, 1);
}
