#include "ConformFixture.h"

#include "core/conform/TransitionDetectAlgorithm.h"

#include <gtest/gtest.h>

using namespace montala::core;

namespace montala::test {
namespace {

class TransitionDetectAlgorithmTest : public ConformFixture {
protected:
    static EventPtr transition(int number, int type, int frames, const char* dstIn, const char* dstOut,
                               const std::string& roll = "A001")
    {
        auto made = event("01:00:00:00", "01:00:01:00", dstIn, dstOut, roll);
        made->setEventNumber(number);
        made->setTransitionType(type);
        made->setTransitionDuration(frames);
        return made;
    }

    std::vector<InformationEntry> detect()
    {
        buildCuts(changes);
        return TransitionDetectAlgorithm().detect(cuts, host.getInformationContext(), &progress);
    }
};

TEST_F(TransitionDetectAlgorithmTest, MarksATransitionOnTheSeamOfTwoChangeEvents)
{
    changes.addEvent(event("05:00:00:00", "05:00:11:00", "10:00:00:00", "10:00:11:00"));
    changes.addEvent(event("06:00:00:00", "06:00:09:00", "10:00:11:00", "10:00:20:00"));
    host.newList.addEvent(transition(12, EventBase::Dissolve, 25, "10:00:10:12", "10:00:12:00"));
    host.newList.addEvent(transition(7, EventBase::Wipe, 10, "10:00:10:12", "10:00:12:00", "B"));

    const auto entries = detect();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].text, "D 12 A001");
    EXPECT_DOUBLE_EQ(entries[0].start, 36010.48);
    EXPECT_DOUBLE_EQ(entries[0].end, 36011.48) << "25 frames from the EDL";
    EXPECT_EQ(entries[0].kind, InformationKind::Transition);
    EXPECT_EQ(entries[1].text, "W 7 B");
    EXPECT_DOUBLE_EQ(entries[1].end, 36010.88);
    EXPECT_EQ(progress.advanced, 3);
}

TEST_F(TransitionDetectAlgorithmTest, LeavesOutTransitionsThatStayOrCameAlongInsideOneStretch)
{
    changes.addEvent(event("05:00:00:00", "05:00:15:00", "10:00:05:00", "10:00:20:00"));
    // Exactly where it stood, though no Change event holds it whole.
    host.oldList.addEvent(transition(3, EventBase::Dissolve, 25, "10:00:30:00", "10:00:32:00"));
    host.newList.addEvent(transition(3, EventBase::Dissolve, 25, "10:00:30:00", "10:00:32:00"));
    // Moved by one frame, inside the moved stretch.
    host.oldList.addEvent(transition(4, EventBase::Dissolve, 25, "10:00:10:00", "10:00:12:00"));
    host.newList.addEvent(transition(4, EventBase::Dissolve, 25, "10:00:10:01", "10:00:12:01"));
    // A plain cut is never a transition.
    host.newList.addEvent(event("01:00:00:00", "01:00:01:00", "10:00:40:00", "10:00:41:00"));
    EXPECT_TRUE(detect().empty());
}

TEST_F(TransitionDetectAlgorithmTest, NamesByClipNameWhenEventsAreMatchedSo)
{
    auto dissolve = transition(9, EventBase::Dissolve, 0, "10:00:00:00", "10:00:01:00");
    dissolve->setClipName("SH020");
    host.newList.addEvent(dissolve);
    host.settings.setMatchName(MatchName::ClipName);
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].text, "D 9 SH020");
    EXPECT_DOUBLE_EQ(entries[0].start, entries[0].end) << "a dissolve of no frames is a point";
}

} // namespace
} // namespace montala::test
