#include "ConformFixture.h"

#include "core/conform/AutomationWarningDetectAlgorithm.h"

#include <gtest/gtest.h>

using namespace montala::core;

namespace montala::test {
namespace {

// Old timeline: X takes 36000-36004, Y 36010-36014, Z 36030-36034. On the
// new timeline they follow each other from 10:00:20:00 (36020.0) on, with
// seams at 36024.0 and 36028.0.
class AutomationWarningDetectAlgorithmTest : public ConformFixture {
protected:
    AutomationWarningDetectAlgorithmTest()
    {
        changes.addEvent(move("10:00:00:00", "10:00:04:00", "10:00:20:00"));
        changes.addEvent(move("10:00:10:00", "10:00:14:00", "10:00:24:00"));
        changes.addEvent(move("10:00:30:00", "10:00:34:00", "10:00:28:00"));
    }

    std::vector<InformationEntry> detect()
    {
        buildCuts(changes);
        return AutomationWarningDetectAlgorithm().detect(cuts, host.getInformationContext(), &progress);
    }

    FakeTrack& dia1 = host.addTrack("Dia 1");
    FakeTrack& dia2 = host.addTrack("Dia 2");
    FakeTrack& dia3 = host.addTrack("Dia 3");
};

TEST_F(AutomationWarningDetectAlgorithmTest, WarnsOnceAtASeamNamingEveryTrackWhoseValueJumps)
{
    // Dia 1 ramps 0.0 -> 0.8 over 36000-36008: 0.4 at X's end, held at 0.8
    // behind the last point at Y's start.
    dia1.point(0, 36000.0, 0.0).point(0, 36008.0, 0.8);
    // Dia 2 is flat at 0.3 over the first seam and steps to 0.9 over the
    // second: 0.3 at Y's end (36014), 0.9 at Z's start (36030).
    dia2.point(0, 36014.0, 0.3).point(0, 36030.0, 0.9);
    // Dia 3 falls 1.0 -> 0.0 over 36003-36011: 0.875 at X's end, 0.125 at
    // Y's start; flat from there on.
    dia3.point(1, 36003.0, 1.0).point(1, 36011.0, 0.0).point(1, 36040.0, 0.0);
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_DOUBLE_EQ(entries[0].start, 36024.0);
    EXPECT_DOUBLE_EQ(entries[0].end, 36024.0);
    EXPECT_EQ(entries[0].text, "Automation warning in Dia 1 Dia 3 ") << "ends with a blank";
    EXPECT_EQ(entries[0].kind, InformationKind::AutomationWarning);
    EXPECT_DOUBLE_EQ(entries[1].start, 36028.0);
    EXPECT_EQ(entries[1].text, "Automation warning in Dia 2 ");
    EXPECT_EQ(progress.advanced, 9) << "the track count per cut, the last one too";
}

TEST_F(AutomationWarningDetectAlgorithmTest, ValuesDifferingByExactlyOneHundredthDoNotJump)
{
    dia1.point(0, 36000.0, 0.5).point(0, 36005.0, 0.5).point(0, 36009.0, 0.51).point(0, 36020.0, 0.51)
        .point(0, 36025.0, 0.52);
    EXPECT_TRUE(detect().empty());

    dia1.editCurve(0).back().value = 0.53;
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_DOUBLE_EQ(entries[0].start, 36028.0);
}

TEST_F(AutomationWarningDetectAlgorithmTest, AJumpOnAnyOfATracksManyCurvesWarns)
{
    // Six flat curves on Dia 1, and the last of them ramps 0.0 -> 0.8 over
    // 36000-36008 like Dia 1's single curve above: a jump at the first seam
    // only.
    for (int curve = 0; curve < 5; ++curve)
        dia1.point(curve, 36000.0, 0.5).point(curve, 36040.0, 0.5);
    dia1.point(5, 36000.0, 0.0).point(5, 36008.0, 0.8);
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_DOUBLE_EQ(entries[0].start, 36024.0);
    EXPECT_EQ(entries[0].text, "Automation warning in Dia 1 ");
}

TEST_F(AutomationWarningDetectAlgorithmTest, CutsAFrameApartAreNoSeam)
{
    changes.clear();
    changes.addEvent(move("10:00:00:00", "10:00:04:00", "10:00:20:00"));
    changes.addEvent(move("10:00:10:00", "10:00:14:00", "10:00:24:01"));
    dia1.point(0, 36000.0, 0.0).point(0, 36008.0, 1.0);
    EXPECT_TRUE(detect().empty());
}

} // namespace
} // namespace montala::test
