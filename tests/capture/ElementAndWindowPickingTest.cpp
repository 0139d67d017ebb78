// What the overlay offers without drawing: windows from the window list,
// element chains from the accessibility tree, and snapping to their edges.
#include "ElementChain.h"
#include "WindowPicking.h"

#include <gtest/gtest.h>

#include <map>

using namespace tosvar;

namespace {

// Overlay of one 1000x800 display; the list is in global top-left points.
WindowPicking::ListingContext oneDisplay() {
    WindowPicking::ListingContext context;
    context.overlayFrame = Rect(0, 0, 1000, 800);
    context.mainDisplayHeight = 800;
    context.displays = {Rect(0, 0, 1000, 800)};
    context.ownPID = 42;
    return context;
}

std::vector<std::uint32_t> ids(const std::vector<PickableWindow>& windows) {
    std::vector<std::uint32_t> result;
    for (const auto& window : windows) result.push_back(window.id);
    return result;
}

// An accessibility tree of nested rectangles: element n's parent is n + 1.
struct NestedElements final : AccessibleElements {
    struct Node final : Element {
        int index;
        explicit Node(int i) : index(i) {}
    };
    std::vector<std::optional<Rect>> frames; // deepest first
    std::map<int, std::string> roles;
    std::vector<std::int64_t> woken;

    bool isAvailable() const override { return true; }
    Handle elementAt(const Point&, std::int64_t) override { return frames.empty() ? nullptr : std::make_shared<Node>(0); }
    Handle parent(const Handle& element) override {
        const int next = static_cast<const Node&>(*element).index + 1;
        return next < static_cast<int>(frames.size()) ? std::make_shared<Node>(next) : nullptr;
    }
    std::optional<Rect> frame(const Handle& element) override { return frames[static_cast<const Node&>(*element).index]; }
    std::optional<std::string> role(const Handle& element) override {
        auto found = roles.find(static_cast<const Node&>(*element).index);
        return found == roles.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<std::string> text(const Handle&) override { return std::nullopt; }
    void enableAccessibility(std::int64_t pid) override { woken.push_back(pid); }
};

} // namespace

TEST(WindowPicking, OffersTheWindowsAUserCanMeanInListOrder) {
    const std::vector<WindowInfo> list{
        {1, 7, 0, 1, Rect(100, 100, 11, 200)},          // narrower than 12 points
        {2, 7, 0, 0.05, Rect(100, 100, 300, 200)},      // too transparent
        {3, 7, 0, 0.06, Rect(100, 100, 300, 200)},      // kept
        {4, 8, 5, 1, Rect(0, 0, 950, 760)},             // an overlay of another program above layer 0
        {5, 8, 0, 1, Rect(0, 0, 950, 760)},             // a big normal window stays
        {6, 42, 0, 1, Rect(10, 10, 100, 100)},          // our own window
        {7, 9, 1000, 1, Rect(10, 10, 100, 100)},        // screen saver level
        {8, 9, 0, 1, Rect(-50, 700, 100, 200)},         // partly off screen
    };
    const auto windows = WindowPicking::onScreenWindowRects(list, oneDisplay());
    EXPECT_EQ(ids(windows), (std::vector<std::uint32_t>{3, 5, 8}));
    // y flips through the main display's height.
    EXPECT_EQ(windows[0].rect, Rect(100, 500, 300, 200));
    EXPECT_EQ(windows[2].fullRect, Rect(-50, -100, 100, 200));
    EXPECT_EQ(windows[2].rect, Rect(0, 0, 50, 100));

    auto withOwn = oneDisplay();
    withOwn.pickableOwnWindows = {6};
    EXPECT_EQ(ids(WindowPicking::onScreenWindowRects(list, withOwn)), (std::vector<std::uint32_t>{3, 5, 6, 8}));
    auto noHeight = oneDisplay();
    noHeight.mainDisplayHeight = 0;
    EXPECT_TRUE(WindowPicking::onScreenWindowRects(list, noHeight).empty());

    EXPECT_EQ(WindowPicking::pick(5, windows, Rect()).z, 1);
    EXPECT_EQ(WindowPicking::pick(std::nullopt, windows, Rect(1, 2, 3, 4)).fullRect, Rect(1, 2, 3, 4));
    EXPECT_EQ(WindowPicking::windowAt({120, 520}, windows)->id, 3u) << "the frontmost holding the point";
}

TEST(ElementDetection, ChainsDeepestFirstWithRepeatedWrappersAsOneLevel) {
    NestedElements tree;
    tree.frames = {Rect(10, 10, 20, 20), Rect(11, 9, 21, 22), Rect(0, 0, 100, 100), std::nullopt, Rect(0, 0, 500, 500)};
    const auto chain = ElementDetection::elementChain(tree, {15, 15}, 7);
    ASSERT_EQ(chain.size(), 2u) << "the wrapper within 2 points folds; the frameless level ends the walk";
    EXPECT_EQ(chain[0].frame, Rect(10, 10, 20, 20));
    EXPECT_EQ(chain[1].frame, Rect(0, 0, 100, 100));

    NestedElements deep;
    for (int i = 0; i < 30; ++i) deep.frames.push_back(Rect(0, 0, 10 + 10 * i, 10 + 10 * i));
    EXPECT_EQ(ElementDetection::elementChain(deep, {1, 1}, 7, 16).size(), 17u) << "the element and 16 ancestors";
    NestedElements empty;
    EXPECT_TRUE(ElementDetection::elementChain(empty, {0, 0}, 7).empty()) << "nothing at the point";
}

TEST(ElementDetection, CoarseChainsSmallElementsAndRetries) {
    const Rect window(0, 0, 1000, 800);
    EXPECT_TRUE(ElementDetection::isCoarse({Rect(0, 0, 10, 10)}, "AXWebArea", window));
    EXPECT_TRUE(ElementDetection::isCoarse({Rect(0, 0, 601, 481)}, std::nullopt, window));
    EXPECT_FALSE(ElementDetection::isCoarse({Rect(0, 0, 601, 480)}, std::nullopt, window));
    EXPECT_FALSE(ElementDetection::isCoarse({}, std::nullopt, window));

    const auto identity = [](const Rect& r) { return r; };
    const auto rects = ElementDetection::viewRects({Rect(0, 0, 7, 30), Rect(0, 0, 8, 8), Rect(-5, -5, 12, 12)}, identity,
                                                   Rect(0, 0, 100, 100));
    EXPECT_EQ(rects, (std::vector<Rect>{Rect(0, 0, 8, 8)})) << "7 points, or 7 left after clipping, do not count";

    std::vector<double> delays;
    for (int attempt = 0; auto delay = ElementDetection::redetectDelay(attempt); ++attempt) delays.push_back(*delay);
    ASSERT_EQ(delays.size(), 5u);
    EXPECT_DOUBLE_EQ(delays.front(), 0.2);
    EXPECT_DOUBLE_EQ(delays.back(), 1.0);
}

TEST(ElementDetection, SnapsEachAxisToTheNearestEdgeStrictlyWithinEightPoints) {
    const std::vector<Rect> candidates{Rect(100, 100, 200, 100), Rect(105, 300, 50, 50)};
    EXPECT_EQ(ElementDetection::snappedDragPoint({92, 50}, candidates), (Point{92, 50})) << "8 points away";
    EXPECT_EQ(ElementDetection::snappedDragPoint({92.1, 50}, candidates), (Point{100, 50}));
    EXPECT_EQ(ElementDetection::snappedDragPoint({103, 195}, candidates), (Point{105, 200})) << "nearest, each axis";
    EXPECT_EQ(ElementDetection::snappedDragPoint({500, 500}, candidates), (Point{500, 500}));
}
