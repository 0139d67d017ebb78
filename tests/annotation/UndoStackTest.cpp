#include "AnnotationDocument.h"
#include "AnnotationSamples.h"
#include "UndoStack.h"

#include <gtest/gtest.h>

#include <random>

using namespace tosvar;

namespace {

// A snapshot told apart by its crop's x.
AnnotationSnapshot numbered(int n) { return {{}, Rect(n, 0, 1, 1)}; }

int numberOf(const AnnotationSnapshot& s) { return static_cast<int>(s.cropRect->origin.x); }

std::vector<int> numbersOf(const std::vector<AnnotationSnapshot>& list) {
    std::vector<int> numbers;
    for (const AnnotationSnapshot& s : list) numbers.push_back(numberOf(s));
    return numbers;
}

} // namespace

TEST(UndoStack, TheHundredAndFirstRecordDropsTheOldest) {
    UndoStack stack;
    EXPECT_EQ(stack.limit(), 100u);
    for (int i = 1; i <= 101; ++i) stack.record(numbered(i));
    ASSERT_EQ(stack.past().size(), 100u);
    EXPECT_EQ(numberOf(stack.past().front()), 2);
    EXPECT_EQ(numberOf(stack.past().back()), 101);
}

TEST(UndoStack, UndoAndRedoWalkTheHistory) {
    UndoStack stack(10);
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.undo(numbered(0)));
    EXPECT_FALSE(stack.redo(numbered(0)));
    EXPECT_TRUE(stack.past().empty() && stack.future().empty());

    // States 1, 2, 3 were left for 2, 3 and now 4.
    for (int i = 1; i <= 3; ++i) stack.record(numbered(i));
    EXPECT_EQ(numberOf(*stack.undo(numbered(4))), 3);
    EXPECT_EQ(numberOf(*stack.undo(numbered(3))), 2);
    EXPECT_EQ(numbersOf(stack.past()), (std::vector<int>{1}));
    EXPECT_EQ(numbersOf(stack.future()), (std::vector<int>{4, 3}));
    EXPECT_TRUE(stack.canRedo());

    EXPECT_EQ(numberOf(*stack.redo(numbered(2))), 3);
    EXPECT_EQ(numbersOf(stack.past()), (std::vector<int>{1, 2}));
    EXPECT_EQ(numbersOf(stack.future()), (std::vector<int>{4}));
}

TEST(UndoStack, RecordAfterUndoClearsRedo) {
    UndoStack stack;
    stack.record(numbered(1));
    stack.record(numbered(2));
    ASSERT_TRUE(stack.undo(numbered(3)));
    ASSERT_TRUE(stack.canRedo());
    stack.record(numbered(7));
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(numbersOf(stack.past()), (std::vector<int>{1, 7}));
}

// Undo and redo move entries between the two lists and record trims past and
// empties future, so past and future together never hold more than the limit:
// a redo cannot take past beyond it.
TEST(UndoStack, PastAndFutureTogetherStayWithinTheLimit) {
    std::mt19937 random(7);
    UndoStack stack(5);
    for (int step = 0; step < 2000; ++step) {
        switch (random() % 3) {
        case 0: stack.record(numbered(step)); break;
        case 1: (void)stack.undo(numbered(step)); break;
        default: (void)stack.redo(numbered(step)); break;
        }
        ASSERT_LE(stack.past().size() + stack.future().size(), stack.limit()) << "step " << step;
    }
}

TEST(UndoStack, TransformAllChangesPastThenFuture) {
    UndoStack stack;
    for (int i = 1; i <= 4; ++i) stack.record(numbered(i));
    ASSERT_TRUE(stack.undo(numbered(5)));
    ASSERT_TRUE(stack.undo(numbered(4)));
    std::vector<int> visited;
    stack.transformAll([&](AnnotationSnapshot& s) {
        visited.push_back(numberOf(s));
        s.cropRect = s.cropRect->offsetBy(100, 0);
    });
    EXPECT_EQ(visited, (std::vector<int>{1, 2, 5, 4}));
    EXPECT_EQ(numbersOf(stack.past()), (std::vector<int>{101, 102}));
    EXPECT_EQ(numbersOf(stack.future()), (std::vector<int>{105, 104}));
}

TEST(UndoStack, AHundredSnapshotsShareOneImageBuffer) {
    const AnnotationImage picture = samples::picture(10 * 1024 * 1024);
    AnnotationDocument document(MutableImage(64, 64).freeze(), 1.0);
    document.elements.push_back({Uuid::random(), AnnotationKind::image(picture), Geometry::rect(Rect(0, 0, 10, 10)), {}});

    UndoStack stack;
    for (int i = 0; i < 100; ++i) {
        stack.record(document.snapshot());
        document.elements.front().geometry = document.elements.front().geometry.translated({1, 1});
    }
    ASSERT_EQ(stack.past().size(), 100u);
    for (const AnnotationSnapshot& snapshot : stack.past()) {
        const AnnotationImage* kept = snapshot.elements.front().kind.imagePayload();
        ASSERT_NE(kept, nullptr);
        EXPECT_TRUE(kept->data.sharesStorageWith(picture.data));
    }
    EXPECT_NE(stack.past().front(), stack.past().back());
}
