#include "ConformFixture.h"

#include "core/conform/SnippetAlgorithm.h"
#include "core/conform/SnippetContext.h"

#include <gtest/gtest.h>

using namespace montala::core;

namespace montala::test {
namespace {

// 25 fps, overhangFrames 5 (0.2 s), overhangPercent 50 with the rule on.
// Pieces take the old timeline from 100.0 on and put it at 200.0.
class SnippetAlgorithmTest : public ConformFixture {
protected:
    SnippetAlgorithmTest()
    {
        host.settings.setIncludeOverhanging(true);
        host.settings.setOverhangFrames(5);
        host.settings.setOverhangPercent(50.0);
        host.settings.setOverhangPercentRule(true);
    }

    std::shared_ptr<FakeCutEvent> addCut(FakeTrack& onTrack, double srcStart, double srcEnd, double dstStart)
    {
        auto piece = std::make_shared<FakeCutEvent>(onTrack, host.audioInfoQueries, srcStart, srcEnd, dstStart,
                                                    dstStart + (srcEnd - srcStart));
        const EventPtr made = event("10:00:00:00", "10:00:01:00", "10:00:00:00", "10:00:01:00");
        cuts.append(std::make_shared<Cut>(made, std::vector<CutEventPtr>{piece}));
        return piece;
    }

    // One piece 100.0 to 110.0 -> 200.0 over one audio event; answers the
    // piece after the algorithm.
    std::shared_ptr<FakeCutEvent> headOver(double eventStart, double eventEnd)
    {
        FakeTrack& scene = host.addTrack("Dia " + std::to_string(host.tracks.size() + 1));
        scene.clip("A", eventStart, eventEnd);
        auto piece = addCut(scene, 100.0, 110.0, 200.0);
        CutList single;
        single.append(cuts.getCut(cuts.size() - 1));
        run(single);
        return piece;
    }

    void run(CutList& list)
    {
        SnippetContext context = host.getSnippetContext();
        SnippetAlgorithm().process(list, context);
    }

    FakeTrack& track = host.addTrack("Dia 1");
};

TEST_F(SnippetAlgorithmTest, MovesTheHeadOfAPieceByTheTableOfCases)
{
    struct Row {
        const char* name;
        double eventStart;
        double eventEnd;
        double srcStart;
        double dstStart;
    };
    const Row rows[] = {
        {"2.5 frames and 3.2 % before the cut: drawn in", 99.9, 103.0, 99.9, 199.9},
        {"2.5 frames and exactly 50 % before: still drawn in", 99.9, 100.1, 99.9, 199.9},
        {"before is above 50 %, the short rest after stays behind", 99.9, 100.001, 100.001, 200.001},
        {"before is long, 2.5 frames after stay behind", 98.0, 100.1, 100.1, 200.1},
        {"both sides long: the cut goes through", 98.0, 103.0, 100.0, 200.0},
        {"exactly 5 frames before counts as short", 99.8, 103.0, 99.8, 199.8},
        {"6 frames before is too long", 99.76, 103.0, 100.0, 200.0},
        {"the cut on the event's start moves nothing", 100.0, 100.04, 100.0, 200.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto piece = headOver(row.eventStart, row.eventEnd);
        EXPECT_NEAR(piece->getSrcStart(), row.srcStart, 1e-9);
        EXPECT_NEAR(piece->getDstStart(), row.dstStart, 1e-9);
        EXPECT_DOUBLE_EQ(piece->getSrcEnd(), 110.0) << "no audio at the tail";
        EXPECT_DOUBLE_EQ(piece->getDstEnd(), 210.0);
    }
}

TEST_F(SnippetAlgorithmTest, PercentRuleDecidesOnlyWhileItIsOn)
{
    // 2 frames before the cut are 90 % of a short event.
    auto ruleOn = headOver(99.92, 100.0 + 0.08 / 9.0);
    EXPECT_NEAR(ruleOn->getSrcStart(), 100.0 + 0.08 / 9.0, 1e-9) << "the rule refuses 90 %; the rest stays behind";

    host.settings.setOverhangPercentRule(false);
    auto ruleOff = headOver(99.92, 100.0 + 0.08 / 9.0);
    EXPECT_NEAR(ruleOff->getSrcStart(), 99.92, 1e-9);
    EXPECT_NEAR(ruleOff->getDstStart(), 199.92, 1e-9);
}

TEST_F(SnippetAlgorithmTest, MovesTheTailOfAPiece)
{
    track.clip("grows", 109.0, 110.1).clip("shrinks", 209.9, 215.0);
    auto grows = addCut(track, 100.0, 110.0, 300.0);
    auto shrinks = addCut(track, 200.0, 210.0, 400.0);
    run(cuts);
    EXPECT_NEAR(grows->getSrcEnd(), 110.1, 1e-9) << "a short tail of the event comes along";
    EXPECT_NEAR(grows->getDstEnd(), 310.1, 1e-9);
    EXPECT_NEAR(shrinks->getSrcEnd(), 209.9, 1e-9) << "a short beginning inside the piece is left out";
    EXPECT_NEAR(shrinks->getDstEnd(), 409.9, 1e-9);
}

TEST_F(SnippetAlgorithmTest, AShortBeginningLeftOutAtATrimmedCutIsNotTakenUpByTheNextPiece)
{
    // The re-cut trimmed 8 frames at the cut: the first piece ends 4 frames
    // into "B", the next starts 12 frames into it. With an overhang of 10 the
    // 4 frames are a snippet to leave out, and the next piece is too far in
    // to draw them: they are heard nowhere, rather than as a 4-frame stutter
    // before the jump.
    host.settings.setOverhangFrames(10);
    track.clip("B", 104.84, 108.36);
    auto first = addCut(track, 100.0, 105.0, 200.0);
    auto next = addCut(track, 105.32, 110.0, 205.0);
    run(cuts);
    EXPECT_NEAR(first->getSrcEnd(), 104.84, 1e-9);
    EXPECT_NEAR(first->getDstEnd(), 204.84, 1e-9);
    EXPECT_DOUBLE_EQ(next->getSrcStart(), 105.32);
    EXPECT_DOUBLE_EQ(next->getDstStart(), 205.0);

    // Trimmed by only 2 frames, a next piece starts 6 frames into "B": near
    // enough to take the 4 frames, and the 2 trimmed ones, along with it.
    auto closer = addCut(track, 105.08, 110.0, 210.0);
    CutList single;
    single.append(cuts.getCut(cuts.size() - 1));
    run(single);
    EXPECT_NEAR(closer->getSrcStart(), 104.84, 1e-9);
    EXPECT_NEAR(closer->getDstStart(), 209.76, 1e-9);
}

TEST_F(SnippetAlgorithmTest, ATailDrawnInPushesTheFollowingPiecesOfItsTrackAside)
{
    // The first piece's tail grows by 4 frames to 210.16 on the new timeline;
    // the next cut's piece (0.1 s) is covered wholly and emptied, the one
    // after it starts later by what is left. The other track keeps its place.
    FakeTrack& other = host.addTrack("Dia 2");
    track.clip("A", 105.0, 110.16);
    const EventPtr made = event("10:00:00:00", "10:00:01:00", "10:00:00:00", "10:00:01:00");
    auto piece = [&](FakeTrack& on, double src, double srcEnd, double dst) {
        return std::make_shared<FakeCutEvent>(on, host.audioInfoQueries, src, srcEnd, dst, dst + srcEnd - src);
    };
    auto p = piece(track, 100.0, 110.0, 200.0);
    auto n = piece(track, 300.0, 300.1, 210.0);
    auto m = piece(track, 400.0, 409.9, 210.1);
    auto q = piece(other, 300.0, 300.1, 210.0);
    cuts.append(std::make_shared<Cut>(made, std::vector<CutEventPtr>{p, piece(other, 100.0, 110.0, 200.0)}));
    cuts.append(std::make_shared<Cut>(made, std::vector<CutEventPtr>{n, q}));
    cuts.append(std::make_shared<Cut>(made, std::vector<CutEventPtr>{m, piece(other, 400.0, 409.9, 210.1)}));
    run(cuts);

    EXPECT_NEAR(p->getDstEnd(), 210.16, 1e-9);
    EXPECT_NEAR(n->getDstStart(), 210.1, 1e-9) << "emptied";
    EXPECT_NEAR(n->getDstEnd(), 210.1, 1e-9);
    EXPECT_NEAR(n->getSrcStart(), 300.1, 1e-9);
    EXPECT_NEAR(m->getDstStart(), 210.16, 1e-9);
    EXPECT_NEAR(m->getSrcStart(), 400.06, 1e-9);
    EXPECT_NEAR(m->getDstEnd(), 220.0, 1e-9);
    EXPECT_DOUBLE_EQ(q->getDstStart(), 210.0);
}

TEST_F(SnippetAlgorithmTest, AHeadDrawnInMayOverlapThePieceBeforeIt)
{
    track.clip("B", 299.9, 305.0);
    auto before = addCut(track, 100.0, 110.0, 200.0);
    auto after = addCut(track, 300.0, 310.0, 210.0);
    run(cuts);
    EXPECT_NEAR(after->getDstStart(), 209.9, 1e-9);
    EXPECT_DOUBLE_EQ(before->getDstEnd(), 210.0) << "nothing gives way for a head";
}

TEST_F(SnippetAlgorithmTest, DoesNothingWithoutAudioOrWhenSwitchedOff)
{
    auto silent = addCut(track, 100.0, 110.0, 200.0);
    run(cuts);
    EXPECT_DOUBLE_EQ(silent->getSrcStart(), 100.0);
    EXPECT_DOUBLE_EQ(silent->getSrcEnd(), 110.0);
    EXPECT_EQ(host.audioInfoQueries, 2) << "one question per end";

    track.clip("A", 99.9, 103.0);
    host.settings.setIncludeOverhanging(false);
    host.audioInfoQueries = 0;
    run(cuts);
    EXPECT_DOUBLE_EQ(silent->getSrcStart(), 100.0);
    EXPECT_EQ(host.audioInfoQueries, 0) << "nothing is read from the host";
}

TEST_F(SnippetAlgorithmTest, AConformWithOverhangingAudioTakesTheWholeEvent)
{
    // The edit at 10:00:00:00 (36000.0) cuts 0.1 s off the head of "A".
    host.settings.setCreateInsertMarkers(false);
    track.clip("A", 35999.9, 36003.0);
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    ASSERT_EQ(host.conform(changes), util::Result::Ok);
    ASSERT_EQ(track.clips().size(), 1u);
    EXPECT_EQ(track.clips()[0].name, "A");
    EXPECT_NEAR(track.clips()[0].start, 36019.9, 1e-6);
    EXPECT_NEAR(track.clips()[0].end, 36023.0, 1e-6);
    EXPECT_NEAR(track.clips()[0].sourceIn, 0.0, 1e-6);

    host.settings.setIncludeOverhanging(false);
    track.editClips() = {{"A", 35999.9, 36003.0, 0.0}};
    ASSERT_EQ(host.conform(changes), util::Result::Ok);
    ASSERT_EQ(track.clips().size(), 1u);
    EXPECT_NEAR(track.clips()[0].start, 36020.0, 1e-6) << "without the rule the head stays behind";
    EXPECT_NEAR(track.clips()[0].sourceIn, 0.1, 1e-6);
}

} // namespace
} // namespace montala::test
