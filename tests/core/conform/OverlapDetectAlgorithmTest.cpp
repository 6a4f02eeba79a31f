#include "ConformFixture.h"

#include "core/conform/OverlapDetectAlgorithm.h"

#include <gtest/gtest.h>

using namespace montala::core;

namespace montala::test {
namespace {

class OverlapDetectAlgorithmTest : public ConformFixture {
protected:
    std::vector<InformationEntry> detect()
    {
        buildCuts(changes);
        return OverlapDetectAlgorithm().detect(cuts, host.getInformationContext(), &progress);
    }

    FakeTrack& dia1 = host.addTrack("Dia 1");
    FakeTrack& dia2 = host.addTrack("Dia 2");
};

TEST_F(OverlapDetectAlgorithmTest, MarksAudioLaidOverAudioOnlyWhereBothSidesSound)
{
    // X ends at 10:00:30:00 (36030.0), Y starts 12 frames earlier.
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    changes.addEvent(move("10:01:00:00", "10:01:10:00", "10:00:29:12"));
    dia1.clip("under X's end", 36005.0, 36010.0).clip("under Y's start", 36060.0, 36065.0);
    // Dia 2 is silent where X ends.
    dia2.clip("under Y's start", 36060.0, 36065.0);

    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_NEAR(entries[0].start, 36029.48, 1e-6);
    EXPECT_NEAR(entries[0].end, 36030.0, 1e-6);
    EXPECT_EQ(entries[0].text, "Overlap in Dia 1 ");
    EXPECT_EQ(entries[0].kind, InformationKind::Overlap);
    EXPECT_EQ(progress.advanced, 2) << "one step per cut, the last one too";
}

TEST_F(OverlapDetectAlgorithmTest, CutsThatOnlyTouchDoNotOverlap)
{
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    changes.addEvent(move("10:01:00:00", "10:01:10:00", "10:00:30:00"));
    dia1.clip("everywhere", 35000.0, 37000.0);
    EXPECT_TRUE(detect().empty());
}

TEST_F(OverlapDetectAlgorithmTest, AHeadDrawnInByTheSnippetRuleShowsAsOverlapAfterAConform)
{
    // Y's edit cuts 0.1 s off the head of "B"; drawn in, B's head now lies
    // over the end of X, where "A" still sounds.
    host.settings.setIncludeOverhanging(true);
    host.settings.setCreateInsertMarkers(false);
    dia1.clip("A", 36005.0, 36010.0).clip("B", 36059.9, 36065.0);
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    changes.addEvent(move("10:01:00:00", "10:01:10:00", "10:00:30:00"));
    ASSERT_EQ(host.conform(changes), util::Result::Ok);

    ASSERT_EQ(host.markers.size(), 1u);
    EXPECT_EQ(host.markers[0].kind, InformationKind::Overlap);
    EXPECT_NEAR(host.markers[0].start, 36029.9, 1e-6);
    EXPECT_NEAR(host.markers[0].end, 36030.0, 1e-6);
    ASSERT_EQ(dia1.clips().size(), 2u);
    EXPECT_NEAR(dia1.clips()[0].end, 36030.0, 1e-6);
    EXPECT_NEAR(dia1.clips()[1].start, 36029.9, 1e-6) << "B whole, over A's end";
}

} // namespace
} // namespace montala::test
