#include "AnnotationElementClipboard.h"

#include "AnnotationSamples.h"
#include "FakePasteboard.h"

#include <set>

#include <gtest/gtest.h>

using namespace tosvar;
using Choice = AnnotationElementClipboard::Choice;

namespace {

AnnotationElement rectangleAt(double x, double y) {
    return {Uuid::random(), AnnotationKind(AnnotationKind::Case::rectangle), Geometry::rect(Rect(x, y, 40, 30)), {}};
}

PasteboardContent someText() {
    PasteboardContent content;
    content.add("text/plain", {'h', 'i'});
    return content;
}

} // namespace

TEST(AnnotationElementClipboard, EveryKindPastesAsAMovedCopyWithAFreshId) {
    const std::vector<AnnotationElement> originals = samples::oneOfEveryKind(samples::fullStyle());
    FakePasteboard pasteboard;
    AnnotationElementClipboard clipboard;
    clipboard.copy(originals, pasteboard);
    EXPECT_TRUE(pasteboard.writes.empty()); // the system clipboard is left alone

    const std::vector<AnnotationElement> pasted = clipboard.take({10, 20});
    ASSERT_EQ(pasted.size(), originals.size());
    std::set<Uuid> ids;
    for (std::size_t i = 0; i < pasted.size(); ++i) {
        SCOPED_TRACE(i);
        const AnnotationElement& original = originals[i];
        const AnnotationElement& copy = pasted[i];
        ids.insert(copy.id);
        EXPECT_NE(copy.id, original.id);
        EXPECT_EQ(copy.kind, original.kind);
        EXPECT_EQ(copy.geometry, original.geometry.translated({10, 20}));
        EXPECT_EQ(copy.style.leaderTip, (Point{110, 220.5}));
        EXPECT_EQ(copy.style.midPoints, (std::vector<Point>{{11, 22}, {13.5, 16}}));
        AnnotationStyle restOfStyle = copy.style;
        restOfStyle.leaderTip = original.style.leaderTip;
        restOfStyle.midPoints = original.style.midPoints;
        EXPECT_EQ(restOfStyle, original.style);
        if (const AnnotationImage* image = copy.kind.imagePayload()) {
            EXPECT_TRUE(image->data.sharesStorageWith(original.kind.imagePayload()->data));
        }
    }
    EXPECT_EQ(ids.size(), pasted.size());
}

TEST(AnnotationElementClipboard, EachPasteLandsOneOffsetFurtherWithNewIds) {
    FakePasteboard pasteboard;
    AnnotationElementClipboard clipboard;
    clipboard.copy({rectangleAt(5, 6)}, pasteboard);
    const std::vector<AnnotationElement> first = clipboard.take({10, 10});
    const std::vector<AnnotationElement> second = clipboard.take({10, 10});
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(second.size(), 1u);
    EXPECT_EQ(*first[0].geometry.asRect(), Rect(15, 16, 40, 30));
    EXPECT_EQ(*second[0].geometry.asRect(), Rect(25, 26, 40, 30));
    EXPECT_NE(first[0].id, second[0].id);
}

TEST(AnnotationElementClipboard, ACopyElsewhereMakesTheElementsStale) {
    FakePasteboard pasteboard;
    AnnotationElementClipboard clipboard;
    EXPECT_EQ(clipboard.choice(pasteboard, false), Choice::nothing);
    EXPECT_EQ(clipboard.choice(pasteboard, true), Choice::systemImage);
    clipboard.copy({}, pasteboard); // nothing selected: nothing kept
    EXPECT_EQ(clipboard.choice(pasteboard, false), Choice::nothing);

    pasteboard.write(someText());
    clipboard.copy({rectangleAt(0, 0)}, pasteboard);
    EXPECT_EQ(clipboard.choice(pasteboard, true), Choice::elements); // ours beat an older image

    pasteboard.write(someText()); // another program copies
    EXPECT_EQ(clipboard.choice(pasteboard, true), Choice::systemImage);
    EXPECT_EQ(clipboard.choice(pasteboard, false), Choice::elements);

    // An empty copy keeps the earlier one, stale as it was.
    clipboard.copy({}, pasteboard);
    EXPECT_EQ(clipboard.choice(pasteboard, true), Choice::systemImage);
    ASSERT_EQ(clipboard.take({0, 0}).size(), 1u);
}
