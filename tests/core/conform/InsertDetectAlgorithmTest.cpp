#include "ConformFixture.h"

#include "core/conform/InsertDetectAlgorithm.h"
#include "util/Result.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::util::Result;

namespace montala::test {
namespace {

class InsertDetectAlgorithmTest : public ConformFixture {
protected:
    std::vector<InformationEntry> detect()
    {
        buildCuts(changes);
        return InsertDetectAlgorithm().detect(cuts, host.getInformationContext(), &progress);
    }
};

TEST_F(InsertDetectAlgorithmTest, GivesOneInsertPerHoleNamedAfterTheNewEvent)
{
    host.newList.addEvent(event("01:00:00:00", "01:00:06:00", "10:00:00:00", "10:00:06:00", "A001"));
    host.newList.addEvent(event("02:00:00:00", "02:00:10:00", "10:00:10:00", "10:00:20:00", "B002"));
    changes.addEvent(event("05:00:00:00", "05:00:02:00", "10:00:00:00", "10:00:02:00"));
    changes.addEvent(event("05:00:04:00", "05:00:06:00", "10:00:04:00", "10:00:06:00"));
    changes.addEvent(event("05:00:12:00", "05:00:14:00", "10:00:12:00", "10:00:14:00"));
    changes.addEvent(event("05:00:16:00", "05:00:18:00", "10:00:16:00", "10:00:18:00"));

    const auto entries = detect();
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_DOUBLE_EQ(entries[0].start, 36002.0);
    EXPECT_DOUBLE_EQ(entries[0].end, 36004.0);
    EXPECT_EQ(entries[0].text, "Insert: A001");
    EXPECT_EQ(entries[0].kind, InformationKind::Insert);
    // B002 has three holes: its head, its middle and its tail.
    EXPECT_DOUBLE_EQ(entries[1].start, 36010.0);
    EXPECT_DOUBLE_EQ(entries[1].end, 36012.0);
    EXPECT_DOUBLE_EQ(entries[2].start, 36014.0);
    EXPECT_DOUBLE_EQ(entries[3].end, 36020.0);
    EXPECT_EQ(entries[3].text, "Insert: B002");
    EXPECT_EQ(progress.advanced, 3);
}

TEST_F(InsertDetectAlgorithmTest, NewEdlWhollyCoveredGivesNothing)
{
    host.newList.addEvent(event("01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00"));
    changes.addEvent(event("05:00:00:00", "05:00:05:00", "10:00:00:00", "10:00:05:00"));
    changes.addEvent(event("06:00:00:00", "06:00:05:00", "10:00:05:00", "10:00:10:00"));
    EXPECT_TRUE(detect().empty());
}

TEST_F(InsertDetectAlgorithmTest, NamesTheInsertByClipNameWhenEventsAreMatchedSo)
{
    auto shot = event("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:02:00", "A001");
    shot->setClipName("SH010");
    host.newList.addEvent(shot);
    host.settings.setMatchName(MatchName::ClipName);
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].text, "Insert: SH010");
}

TEST_F(InsertDetectAlgorithmTest, ANewEventEndingBeforeItStartsIsRefusedAndOneWithoutPlaceIsSkipped)
{
    host.newList.addEvent(event("01:00:00:00", "01:00:02:00", "10:00:00:30", "10:00:02:00"));
    EXPECT_TRUE(detect().empty()) << "frames above the rate: no position, no marker";

    host.newList.addEvent(event("01:00:00:00", "01:00:02:00", "10:00:04:00", "10:00:02:00"));
    EXPECT_EQ(test::thrownCode([&] { detect(); }), Result::InvalidArgument);
}

} // namespace
} // namespace montala::test
