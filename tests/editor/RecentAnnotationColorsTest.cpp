#include "RecentAnnotationColors.h"

#include "ColorApproximation.h"
#include "InMemoryDefaultsStore.h"
#include "VirtualMainQueue.h"

#include <ostream>

#include <gtest/gtest.h>

namespace tosvar {
inline void PrintTo(const RGBAColor& c, std::ostream* out) {
    *out << "(" << c.red << ", " << c.green << ", " << c.blue << ", " << c.alpha << ")";
}
} // namespace tosvar

using namespace tosvar;
using Colors = std::vector<RGBAColor>;

namespace {

const std::string key = "annotationRecentColors";

RGBAColor gray(double level) { return {level, level, level, 1}; }

} // namespace

TEST(RecentAnnotationColors, UsesInQuickSuccessionCommitOnlyTheLastOnce) {
    InMemoryDefaultsStore store;
    VirtualMainQueue queue;
    RecentAnnotationColors recents(store, queue);
    int changes = 0;
    recents.onChange = [&] { ++changes; };

    recents.noteUse(gray(0.1));
    queue.advance(0.3);
    recents.noteUse(gray(0.2));
    queue.advance(0.3);
    recents.noteUse(gray(0.3));
    queue.advance(0.79);
    EXPECT_TRUE(recents.colors().empty());
    EXPECT_EQ(store.writeCount(), 0);

    queue.advance(0.02);
    EXPECT_EQ(recents.colors(), Colors{gray(0.3)});
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(store.writeCount(), 1);
    EXPECT_EQ(RecentAnnotationColors(store, queue).colors(), Colors{gray(0.3)});
    EXPECT_EQ(queue.pendingCount(), 0u);
}

TEST(RecentAnnotationColors, KeepsTheFiveNewestAndReloadsThemInOrder) {
    InMemoryDefaultsStore store;
    VirtualMainQueue queue;
    RecentAnnotationColors recents(store, queue);
    for (int i = 1; i <= 6; ++i) {
        recents.noteUse(gray(i / 10.0));
        queue.advance(1);
    }
    const Colors newestFirst{gray(0.6), gray(0.5), gray(0.4), gray(0.3), gray(0.2)};
    EXPECT_EQ(recents.colors(), newestFirst);
    EXPECT_EQ(RecentAnnotationColors(store, queue).colors(), newestFirst);
}

TEST(RecentAnnotationColors, AColourThatLooksTheSameReplacesTheOldEntryAtTheFront) {
    InMemoryDefaultsStore store;
    VirtualMainQueue queue;
    RecentAnnotationColors recents(store, queue);
    const RGBAColor red = RGBAColor::Palette::red;
    const RGBAColor nearRed{red.red - 0.015, red.green + 0.019, red.blue, 0.3}; // alpha does not count
    const RGBAColor notQuiteRed{red.red, red.green - 0.025, red.blue, 1};
    for (const RGBAColor& color : {red, gray(0.5), gray(0.9), nearRed, notQuiteRed}) {
        recents.noteUse(color);
        queue.advance(1);
    }
    EXPECT_EQ(recents.colors(), (Colors{notQuiteRed, nearRed, gray(0.9), gray(0.5)}));
    EXPECT_TRUE(isApproximately(red, nearRed));
    EXPECT_FALSE(isApproximately(red, notQuiteRed));
    EXPECT_FALSE(isApproximately(RGBAColor{0, 0, 0, 1}, RGBAColor{0, 0, 0.021, 1}));
}

TEST(RecentAnnotationColors, AnUnreadableStoredListStartsEmpty) {
    const std::vector<DefaultsValue> unreadable{
        std::string("[{\"red\": 1, \"green\": 0, "),
        std::string("{\"red\": 1, \"green\": 0, \"blue\": 0, \"alpha\": 1}"),
        std::string("[{\"red\": 1, \"green\": 0, \"blue\": 0, \"alpha\": 1}, {\"red\": 1}]"),
        std::string("[\"#FF0000\"]"),
        3.5,
    };
    VirtualMainQueue queue;
    for (const DefaultsValue& value : unreadable) {
        InMemoryDefaultsStore store;
        store.set(key, value);
        EXPECT_TRUE(RecentAnnotationColors(store, queue).colors().empty());
    }
    InMemoryDefaultsStore tooMany;
    tooMany.set(key, std::string(R"([{"red":0,"green":0,"blue":0,"alpha":1},{"red":0.1,"green":0,"blue":0,"alpha":1},
        {"red":0.2,"green":0,"blue":0,"alpha":1},{"red":0.3,"green":0,"blue":0,"alpha":1},
        {"red":0.4,"green":0,"blue":0,"alpha":1},{"red":0.5,"green":0,"blue":0,"alpha":1}])"));
    const RecentAnnotationColors trimmed(tooMany, queue);
    ASSERT_EQ(trimmed.colors().size(), 5u);
    EXPECT_EQ(trimmed.colors().back(), (RGBAColor{0.4, 0, 0, 1}));
}

TEST(RecentAnnotationColors, AUseStillPendingWhenTheListGoesIsDropped) {
    InMemoryDefaultsStore store;
    VirtualMainQueue queue;
    {
        RecentAnnotationColors recents(store, queue);
        recents.noteUse(gray(0.5));
    }
    queue.advance(1);
    EXPECT_EQ(store.writeCount(), 0);
}
