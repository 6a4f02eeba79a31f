// Automation through a whole run, against the simulated host: a curve comes
// to the new cut as it sounded on the old one, steps on the edges of a shot
// included, a gap of new picture holds the value the curve arrived with, and
// a seam where the level jumps is marked for the mixer. Each session has one
// track, FX, with one curve, and two shots of two seconds from 01:00:00:00.

#include "HostRunFixture.h"

#include "sim/edit/SimRangeEditor.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

class AutomationRunTest : public HostRunFixture {
protected:
    // `start` is the project start, absolute seconds; `points` the curve's
    // points as session text.
    static std::string session(int fps, double start, int curveType, const std::string& points)
    {
        return R"({"format": "montala-session", "version": 1, "frameRate": {"fps": )" + std::to_string(fps)
               + R"(}, "start": )" + std::to_string(start) + R"(, "end": 20.0, "tracks": [
                 {"kind": "audio", "name": "FX", "automation": [{"name": "Curve", "curveType": )"
               + std::to_string(curveType) + R"(, "points": [)" + points + R"(]}],
                  "events": [{"kind": "audio", "name": "door", "start": 0.0, "end": 10.0, "file": "door.wav"}]}]})";
    }

    // The curve's value in the middle of the frame at `seconds` after
    // 01:00:00:00 of the new cut.
    double valueAt(double seconds, int fps)
    {
        const sim::SimObject& curve = *simTrack("FX").automation()[0];
        return *sim::SimRangeEditor::valueAt(curve, 3600.0 + seconds + 0.5 / fps - hostProject->getProjectStart());
    }

    // The two shots change places; the old first shot goes to [secondIn,
    // secondOut] of the new cut.
    void swapShots(const char* secondIn = "01:00:02:00", const char* secondOut = "01:00:04:00")
    {
        addChange(1, "01:00:02:00", "01:00:04:00", "01:00:00:00", "01:00:02:00");
        addChange(2, "01:00:00:00", "01:00:02:00", secondIn, secondOut);
    }

    // The first shot held at one level, the second at another, 25 fps.
    static std::string levels(double first, double second)
    {
        const std::string a = std::to_string(first);
        const std::string b = std::to_string(second);
        return session(25, 3600.0, 1,
                       R"({"time": "01:00:00:00", "value": )" + a + R"(}, {"time": "01:00:02:00", "value": )" + a
                           + R"(}, {"time": "01:00:02:00", "value": )" + b
                           + R"(}, {"time": "01:00:04:00", "value": )" + b + "}");
    }

    // Where the automation warnings for FX lie, host times.
    std::vector<double> warnings() { return markerStarts("Automation Warning", "Automation warning in FX "); }
};

TEST_F(AutomationRunTest, AStepOnTheFirstFrameOfAShotComesAlong)
{
    // 50 fps, the project starting between two frames: the mute written at
    // 1.99 s is on 01:00:02:00, a hair after where the shot's first frame is
    // reckoned from its timecode.
    startOn(session(50, 3600.01, 0, R"({"time": 0.0, "value": 0.0}, {"time": 1.99, "value": 1.0})"));
    swapShots();
    ASSERT_EQ(conform(), Result::Ok);
    for (double seconds : {0.0, 1.0, 1.98}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(valueAt(seconds, 50), 1.0);
    }
    EXPECT_EQ(valueAt(2.0, 50), 0.0);
}

TEST_F(AutomationRunTest, AStepOnTheLastFrameOfAShotLeavesTheRampBeforeIt)
{
    // 25 fps: 0 -> 1 over the first shot, then back to 0 on the cut.
    startOn(session(25, 3600.0, 1,
                    R"({"time": "01:00:00:00", "value": 0.0}, {"time": "01:00:02:00", "value": 1.0},
                       {"time": "01:00:02:00", "value": 0.0})"));
    swapShots();
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_NEAR(valueAt(2.0, 25), 0.01, 1e-9);
    EXPECT_NEAR(valueAt(3.0, 25), 0.51, 1e-9);
    EXPECT_NEAR(valueAt(3.96, 25), 0.99, 1e-9);
    EXPECT_EQ(valueAt(0.0, 25), 0.0);
}

TEST_F(AutomationRunTest, AGapOfNewPictureHoldsTheValueTheCurveArrivedWith)
{
    // A level of 0.5 held by a segment end from 01:00:00:12, a step to 0.8
    // on the cut. The new cut puts a second of new picture between the shots.
    startOn(session(25, 3600.0, 1,
                    R"({"time": "01:00:00:00", "value": 0.0}, {"time": "01:00:00:12", "value": 0.5, "segmentEnd": true},
                       {"time": "01:00:02:00", "value": 0.5}, {"time": "01:00:02:00", "value": 0.8},
                       {"time": "01:00:04:00", "value": 0.8})"));
    addChange(1, "01:00:00:00", "01:00:02:00", "01:00:00:00", "01:00:02:00");
    addChange(2, "01:00:02:00", "01:00:04:00", "01:00:03:00", "01:00:05:00");
    model().getSettings().setCreateVirginTerritories(true);
    ASSERT_EQ(conform(), Result::Ok);
    for (double seconds : {1.0, 2.0, 2.96}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(valueAt(seconds, 25), 0.5);
    }
    for (double seconds : {3.0, 4.0, 4.96}) {
        SCOPED_TRACE(seconds);
        EXPECT_NEAR(valueAt(seconds, 25), 0.8, 1e-6);
    }
}

TEST_F(AutomationRunTest, ASeamWhereTheLevelJumpsIsMarkedOnTheNewCut)
{
    // The second shot's 0.8 now ends where the first shot's 0.2 begins.
    startOn(levels(0.2, 0.8));
    swapShots();
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_EQ(warnings(), std::vector<double>{2.0});
}

TEST_F(AutomationRunTest, APreviewShowsTheWarningAndVirginTerritoriesKeepIt)
{
    startOn(levels(0.2, 0.8));
    swapShots();
    montala->setPreviewActive(true);
    ASSERT_EQ(montala->preview(model().getChangeList(), 0, 0, true), Result::Ok);
    runIdle();
    ASSERT_EQ(montala->lastRun().result, Result::Ok);
    // In the work area, a day past the material.
    EXPECT_EQ(warnings(), std::vector<double>{86402.0});
    montala->setPreviewActive(false);
    EXPECT_TRUE(warnings().empty());

    model().getSettings().setCreateVirginTerritories(true);
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_EQ(warnings(), std::vector<double>{2.0});
}

TEST_F(AutomationRunTest, LevelsAHundredthApartMakeNoWarning)
{
    startOn(levels(0.5, 0.51));
    swapShots();
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_TRUE(warnings().empty());
}

TEST_F(AutomationRunTest, ShotsAFrameApartMakeNoWarningWhateverTheLevels)
{
    startOn(levels(0.2, 0.8));
    swapShots("01:00:02:01", "01:00:04:01");
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_TRUE(warnings().empty());
}

} // namespace
} // namespace montala::host::test
