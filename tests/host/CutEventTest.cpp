// A cut's piece on one track answers what the track holds around a place of
// the old timeline: the audio under it and beside it, and the automation on
// both sides. Run on a small simulated session at 25 fps starting at
// 01:00:00:00, so absolute seconds are 3600 plus the session's times.

#include "sim/SimFixture.h"
#include "support/ModelFixture.h"

#include "host/CutEvent.h"
#include "host/Project.h"

#include "kelmar/project/IProject.h"
#include "sim/project/SimProject.h"

#include <list>
#include <memory>
#include <string>

namespace montala::host::test {
namespace {

using namespace Kelmar;

class CutEventTest : public sim::test::SimFixture {
protected:
    void SetUp() override
    {
        simProject = open(smallSession());
        ASSERT_TRUE(simProject);
        project = std::make_unique<Project>(static_cast<IProject*>(simProject.get()), host.get());
    }
    void TearDown() override
    {
        held.clear();
        project.reset();
        simProject.reset();
        SimFixture::TearDown();
    }

    // A piece that moves [3600, 3630] of the old timeline to 3700.
    CutEvent pieceOn(const std::string& trackName)
    {
        for (const Track& track : project->getTracks())
            if (track.getName() == trackName)
                return CutEvent(held.emplace_back(track), 3600.0, 3630.0, 3700.0, 3730.0);
        ADD_FAILURE() << "no track " << trackName;
        return CutEvent(held.emplace_back(), 0, 0, 0, 0);
    }

    IPtr<sim::SimProject> simProject;
    std::unique_ptr<Project> project;
    // The tracks the pieces refer to.
    std::list<Track> held;
};

TEST_F(CutEventTest, AnswersTheAudioAroundAPlaceAndTheAutomationOnBothSides)
{
    CutEvent fx = pieceOn("FX");
    EXPECT_EQ(fx.getTrackName(), "FX");
    EXPECT_TRUE(fx.isAudioTrack());
    fx.getTrack().readAutomationValues(4000.0);

    // The door lies under 10 s; the volume rises from 0 at 0 s to 1 at 20 s.
    core::AudioInfo inside = fx.getAudioInfo(3610.0);
    EXPECT_DOUBLE_EQ(inside.at.start, 3604.0);
    EXPECT_DOUBLE_EQ(inside.at.end, 3616.0);
    EXPECT_TRUE(inside.before.isEmpty());
    EXPECT_TRUE(inside.after.isEmpty());
    ASSERT_EQ(inside.automation.count(0), 1u);
    EXPECT_DOUBLE_EQ(inside.automation[0].t1, 3600.0);
    EXPECT_DOUBLE_EQ(inside.automation[0].y1, 0.0);
    EXPECT_DOUBLE_EQ(inside.automation[0].t2, 3620.0);
    EXPECT_DOUBLE_EQ(inside.automation[0].y2, 1.0);

    // Before the door: it is what comes after; past the last point the
    // curve's last value holds up to the place asked.
    core::AudioInfo early = fx.getAudioInfo(3602.0);
    EXPECT_TRUE(early.at.isEmpty());
    EXPECT_DOUBLE_EQ(early.after.start, 3604.0);
    core::AudioInfo late = fx.getAudioInfo(3625.0);
    EXPECT_DOUBLE_EQ(late.before.end, 3616.0);
    EXPECT_DOUBLE_EQ(late.automation[0].t1, 3620.0);
    EXPECT_DOUBLE_EQ(late.automation[0].t2, 3625.0);
    EXPECT_DOUBLE_EQ(late.automation[0].y2, 1.0);

    EXPECT_FALSE(pieceOn("Notes").isAudioTrack());
    EXPECT_FALSE(pieceOn("Picture").isAudioTrack());
}

} // namespace
} // namespace montala::host::test
