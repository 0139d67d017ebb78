#include "CorpusEvaluation.h"
#include "IsolatedEnvironment.h"
#include "ScrollCorpus.h"
#include "SequenceEvaluation.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

using namespace tosvar;
using namespace tosvar::ScrollCorpus;

namespace {

struct Rates {
    int exact = 0, alike = 0, wrong = 0, none = 0;
    int pairs() const { return exact + alike + wrong + none; }
    void add(Outcome outcome) {
        (outcome == Outcome::exact ? exact : outcome == Outcome::alike ? alike : outcome == Outcome::wrong ? wrong : none) += 1;
    }
};

// Writes a sequence into `root` and runs the search over it.
FolderResult writtenAndSearched(const SequenceRequest& request, const std::filesystem::path& root) {
    const std::filesystem::path folder = root / (request.className + "-" + std::to_string(request.seed));
    Expected<Sequence> sequence = Sequence::generate(request);
    EXPECT_TRUE(sequence) << request.className;
    EXPECT_FALSE(write(*sequence, folder));
    Expected<FolderResult> result = evaluateFolder(folder);
    EXPECT_TRUE(result) << (result ? "" : result.error().message);
    return std::move(*result);
}

} // namespace

TEST(ScrollCorpus, SequencesAreReproducibleFromTheirSeed) {
    const Expected<Sequence> a = Sequence::generate({"chat", {800, 600}, 6, 3});
    const Expected<Sequence> b = Sequence::generate({"chat", {800, 600}, 6, 3});
    const Expected<Sequence> c = Sequence::generate({"chat", {800, 600}, 6, 4});
    ASSERT_TRUE(a && b && c);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(a->offset(i), b->offset(i));
        EXPECT_TRUE(a->frame(i).samePixels(b->frame(i))) << i;
    }
    EXPECT_FALSE(a->frame(5).samePixels(c->frame(5)));
    EXPECT_EQ(a->frame(0).width(), 800);
    EXPECT_EQ(a->frame(0).height(), 600);
    EXPECT_EQ(Sequence::generate({"horizontal", {800, 600}, 3, 1})->axis(), ScrollAxis::horizontal);
}

TEST(ScrollCorpus, BadRecipesAreRefusedWithAReason) {
    EXPECT_EQ(Sequence::generate({"poetry", {800, 600}, 6, 1}).error().message, "unknown sequence class \"poetry\"");
    EXPECT_FALSE(Sequence::generate({"text", {100, 600}, 6, 1}));
    EXPECT_FALSE(Sequence::generate({"text", {800, 600}, 1, 1}));
}

TEST(ScrollCorpus, TruthRoundTripsThroughTheFolder) {
    IsolatedEnvironment environment;
    const Expected<Sequence> sequence = Sequence::generate({"table", {800, 600}, 5, 2});
    ASSERT_TRUE(sequence);
    const std::filesystem::path folder = environment.root() / "table";
    ASSERT_FALSE(write(*sequence, folder));
    EXPECT_TRUE(std::filesystem::exists(folder / "frame-000004.png"));
    const Expected<Truth> truth = readTruth(folder);
    ASSERT_TRUE(truth) << truth.error().message;
    EXPECT_EQ(truth->className, "table");
    EXPECT_EQ(truth->size.width, 800);
    EXPECT_EQ(truth->files.front(), "frame-000000.png");
    ASSERT_EQ(truth->offsets.size(), 5u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(truth->offsets[i], sequence->offset(i));
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(truth->views[i], sequence->view(i));
        ASSERT_EQ(truth->alike[i].size(), sequence->alikeShifts(i).size());
        for (std::size_t r = 0; r < truth->alike[i].size(); ++r) {
            EXPECT_EQ(truth->alike[i][r].first, sequence->alikeShifts(i)[r].first);
            EXPECT_EQ(truth->alike[i][r].last, sequence->alikeShifts(i)[r].last);
        }
    }

    std::ofstream(folder / "truth.json") << R"({"class": "text", "width": 10, "height": 10, "frames": [{"file": "a.png", "offset": 0, "view": "sideways"}]})";
    EXPECT_NE(readTruth(folder).error().message.find("unknown view \"sideways\""), std::string::npos);
    std::ofstream(folder / "truth.json") << "[1, 2]";
    EXPECT_FALSE(readTruth(folder));
    EXPECT_FALSE(readTruth(environment.root() / "missing"));
}

TEST(ScrollCorpus, ViewsTellWhatAPairShows) {
    std::map<PairView, int> blank, text;
    const Expected<Sequence> blankPage = Sequence::generate({"blank", {800, 600}, 24, 1});
    const Expected<Sequence> textPage = Sequence::generate({"text", {800, 600}, 24, 1});
    for (int i = 1; i < 24; ++i) {
        ++blank[blankPage->view(i)];
        ++text[textPage->view(i)];
        // A repeated pair has other shifts that line it up, a flat one none to
        // tell apart; the true shift is never among them.
        const std::vector<ShiftRange>& alike = blankPage->alikeShifts(i);
        if (blankPage->view(i) == PairView::repeated) {
            EXPECT_FALSE(alike.empty()) << i;
        }
        if (blankPage->view(i) == PairView::flat) {
            EXPECT_TRUE(alike.empty()) << i;
        }
        EXPECT_TRUE(textPage->alikeShifts(i).empty()) << i;
        const int trueDelta = blankPage->offset(i) - blankPage->offset(i - 1);
        for (const ShiftRange& range : alike) EXPECT_FALSE(range.contains(trueDelta)) << i;
    }
    EXPECT_GT(blank[PairView::flat], 0);
    EXPECT_GT(blank[PairView::repeated], 0);
    EXPECT_EQ(text[PairView::unique], 23);
}

// The search on written and reread corpus folders, as the evaluation runs it:
// on pages of unique content it finds nearly every movement and proves no
// wrong one; where a pair shows nothing at all it never claims a movement.
// Pages with large moving areas and with long blank stretches are measured by
// the evaluation; the search alone, without placing frames in a document,
// misses some of their movements.
TEST(ScrollCorpus, SearchFindsTheTrueMovementOnPagesOfUniqueContent) {
    IsolatedEnvironment environment;
    Rates unique;
    for (const char* className : {"text", "code", "chat", "dark", "lowcontrast", "sticky", "sidebar", "noise", "horizontal"})
        for (const PairResult& pair : writtenAndSearched({className, {800, 600}, 24, 7}, environment.root()).pairs)
            if (pair.view == PairView::unique) unique.add(pair.outcome);
    ASSERT_GT(unique.pairs(), 180);
    EXPECT_GE(unique.exact, unique.pairs() * 0.995) << unique.exact << " of " << unique.pairs();
    EXPECT_LE(unique.wrong, unique.pairs() * 0.001) << unique.wrong << " of " << unique.pairs();
}

// Where a pair shows nothing it never claims a movement; where its content
// repeats it proves no movement that the frames tell apart from the true one.
TEST(ScrollCorpus, SearchProvesNoWrongMovementOnFlatOrRepeatedContent) {
    IsolatedEnvironment environment;
    Rates flat, repeated;
    for (std::uint32_t seed : {7u, 8u})
        for (const char* className : {"blank", "media", "table"})
            for (const PairResult& pair : writtenAndSearched({className, {800, 600}, 24, seed}, environment.root()).pairs) {
                if (pair.view == PairView::flat) flat.add(pair.outcome);
                if (pair.view == PairView::repeated) repeated.add(pair.outcome);
            }
    ASSERT_GT(flat.pairs(), 10);
    EXPECT_EQ(flat.wrong + flat.alike, 0);
    ASSERT_GT(repeated.pairs(), 5);
    EXPECT_EQ(repeated.wrong, 0);
}

namespace {

// Writes a sequence into `root` and replays it through a stitcher.
SequenceResult writtenAndStitched(const SequenceRequest& request, const std::filesystem::path& root,
                                  bool detectAxis = false) {
    const std::filesystem::path folder =
        root / (request.className + "-" + motionName(request.motion) + "-" + std::to_string(request.seed));
    Expected<Sequence> sequence = Sequence::generate(request);
    EXPECT_TRUE(sequence) << request.className;
    EXPECT_FALSE(write(*sequence, folder));
    Expected<SequenceResult> result = evaluateSequence(folder, detectAxis);
    EXPECT_TRUE(result) << (result ? "" : result.error().message);
    return std::move(*result);
}

// A document that holds every page row once, in order, and the fixed bars once.
void expectExactDocument(const SequenceResult& r, const std::string& name) {
    EXPECT_EQ(r.outputHeight, r.expectedHeight) << name;
    EXPECT_GE(r.seams, 4) << name;
    EXPECT_EQ(r.badSeams, 0) << name;
    EXPECT_EQ(r.duplicatedRows, 0) << name;
    EXPECT_EQ(r.missingRows, 0) << name;
    EXPECT_TRUE(r.leadOnce && r.trailOnce) << name;
    EXPECT_EQ(r.mismatchedPixels, 0) << name;
    EXPECT_GT(r.comparedPixels, 0) << name;
    EXPECT_EQ(r.misplacedFrames, 0) << name;
}

} // namespace

TEST(ScrollCorpus, StitchedPagesOfUniqueContentHoldEveryRowOnce) {
    IsolatedEnvironment environment;
    for (const char* className : {"text", "code", "chat", "noise", "sticky"}) {
        const SequenceResult r = writtenAndStitched({className, {800, 600}, 16, 7}, environment.root());
        expectExactDocument(r, className);
    }
}

TEST(ScrollCorpus, ScrollingBackAddsNothingAndAJumpBackIsFoundAgain) {
    IsolatedEnvironment environment;
    const SequenceResult back = writtenAndStitched({"sticky", {800, 600}, 12, 7, Motion::backAndForth}, environment.root());
    expectExactDocument(back, "back and forth");
    int nothingAdded = 0;
    for (std::size_t i = 1; i < back.results.size(); ++i)
        if (back.truth.offsets[i] < back.truth.offsets[i - 1]) {
            EXPECT_EQ(back.results[i].kind.tag, ScrollResultKind::Tag::noChange) << i;
            ++nothingAdded;
        }
    EXPECT_GE(nothingAdded, 3);

    const SequenceResult jump = writtenAndStitched({"text", {800, 600}, 12, 7, Motion::jumpBack}, environment.root());
    expectExactDocument(jump, "jump back");
    EXPECT_EQ(jump.lostEpisodes, 1);
    EXPECT_EQ(jump.recoveredRight, 1);
}

// Dark sections repeat the edges of their backgrounds and hold faint text,
// which once let a wrong shift pass on the edges alone.
TEST(ScrollCorpus, DarkPagesScrolledBackAndJumpedBackStayExact) {
    IsolatedEnvironment environment;
    expectExactDocument(writtenAndStitched({"dark", {1600, 1000}, 24, 3, Motion::backAndForth}, environment.root()),
                        "dark back and forth");
    const SequenceResult jump = writtenAndStitched({"dark", {1600, 1000}, 24, 3, Motion::jumpBack}, environment.root());
    expectExactDocument(jump, "dark jump back");
    EXPECT_EQ(jump.recoveredRight, jump.lostEpisodes);
}

TEST(ScrollCorpus, ASidewaysSequenceIsDetectedAndStitchedSideways) {
    IsolatedEnvironment environment;
    const SequenceResult r =
        writtenAndStitched({"horizontal", {800, 600}, 12, 7, Motion::backAndForth}, environment.root(), true);
    EXPECT_EQ(r.axis, ScrollAxis::horizontal);
    expectExactDocument(r, "sideways");
    // Newspaper columns moved sideways once lined up by a wrong vertical shift.
    const SequenceResult mixed = writtenAndStitched({"horizontal", {800, 600}, 24, 3}, environment.root(), true);
    EXPECT_EQ(mixed.axis, ScrollAxis::horizontal);
    expectExactDocument(mixed, "sideways, mixed steps");
}
