// The checks before a run, as the window meets them: when the cuts and the
// session do not belong together, the run asks the user through the message
// box. "Abort" leaves the project as it was; "Continue" runs all the same.
// The session runs at 25 fps from 01:00:00:00; its picture jumps at 10 s and
// at 20 s.

#include "HostRunFixture.h"

#include <gtest/gtest.h>

#include <regex>

namespace montala::host::test {
namespace {

using util::Result;

class InputChecksTest : public HostRunFixture {
protected:
    static std::string sessionWithCutPicture()
    {
        return std::regex_replace(
            smallSession(), std::regex(R"(\{"kind": "video", "start": "01:00:00:00", "end": "01:00:30:00", "clip": 1, "offset": 0\})"),
            R"({"kind": "video", "start": "01:00:00:00", "end": "01:00:10:00", "clip": 1, "offset": 0},
               {"kind": "video", "start": "01:00:10:00", "end": "01:00:20:00", "clip": 1, "offset": 50},
               {"kind": "video", "start": "01:00:20:00", "end": "01:00:30:00", "clip": 1, "offset": 20})");
    }

    // A cut by its record edges, one event between each two.
    static void fill(core::EventList& list, const std::vector<const char*>& edges)
    {
        for (size_t index = 0; index + 1 < edges.size(); ++index)
            list.addEvent(montala::test::makeEvent("A", "10:00:00:00", "10:00:10:00", edges[index], edges[index + 1]));
    }

    // The picture's cut (jumps at 10 s and 20 s) and another (at 15 s).
    void loadCuts(bool swapped)
    {
        core::ScopedFramerateProvider provider(&active());
        const std::vector<const char*> followed = {"01:00:00:00", "01:00:10:00", "01:00:20:00", "01:00:30:00"};
        const std::vector<const char*> other = {"01:00:00:00", "01:00:15:00", "01:00:30:00"};
        fill(model().getOldList(), swapped ? other : followed);
        fill(model().getNewList(), swapped ? followed : other);
    }

    // Apply is asked about `why`: on "Abort" the project stays as it was;
    // asked again, "Continue" runs the Change EDL.
    void expectAbortThenContinue(const std::string& why)
    {
        const std::string before = saved(*hostProject);
        host->alerts().queueAnswer(Kelmar::IAlertService::kFirstButton);
        EXPECT_EQ(conform(), Result::Cancelled);
        ASSERT_EQ(host->alerts().shown().size(), 1u);
        const sim::SimAlertService::Alert& alert = host->alerts().shown().front();
        EXPECT_NE(alerts().front().find(why), std::string::npos) << alerts().front();
        EXPECT_EQ(alert.firstButton, u"Abort");
        EXPECT_EQ(alert.secondButton, u"Continue");
        EXPECT_EQ(saved(*hostProject), before) << "Abort changed the project";
        EXPECT_EQ(montala->lastRun().eventsApplied, 0u);

        host->alerts().queueAnswer(Kelmar::IAlertService::kSecondButton);
        EXPECT_EQ(conform(), Result::Ok);
        EXPECT_EQ(host->alerts().shown().size(), 2u);
        EXPECT_EQ(montala->lastRun().eventsApplied, model().getChangeList().getSize());
        EXPECT_NE(saved(*hostProject), before);
    }
};

TEST_F(InputChecksTest, SwappedCutsAreAskedAboutBeforeApplyAndPreview)
{
    startOn(sessionWithCutPicture());
    loadCuts(true);
    swapHalves();
    // The Change EDL keeps all the sound: the picture alone is asked about.
    expectAbortThenContinue("were the Old and New EDLs added the wrong way round?");

    // A preview asks too, and an abort of it adds nothing to the project.
    const std::string before = saved(*hostProject);
    ASSERT_EQ(montala->preview(model().getChangeList(), 0, 0, true), Result::Ok);
    runIdle();
    EXPECT_EQ(montala->lastRun().result, Result::Cancelled);
    EXPECT_EQ(host->alerts().shown().size(), 3u);
    EXPECT_EQ(saved(*hostProject), before);
}

TEST_F(InputChecksTest, ChangeEdlThatDropsTheSoundIsAskedAboutAndCutsInOrderAreNot)
{
    startOn(sessionWithCutPicture());
    loadCuts(false);
    // All of it from 40 s on, where the session holds no sound.
    addChange(1, "01:00:40:00", "01:00:50:00", "01:00:00:00", "01:00:10:00");
    expectAbortThenContinue("the Change EDL would drop 100% of the session's sound (more than 80%)");
}

} // namespace
} // namespace montala::host::test
