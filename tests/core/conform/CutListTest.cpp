#include "ConformFixture.h"

#include "util/Result.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::util::Result;

namespace montala::test {
namespace {

class CutListTest : public ConformFixture {
protected:
    CutPtr cutAt(const EventPtr& made, std::initializer_list<double> starts)
    {
        std::vector<CutEventPtr> pieces;
        for (double start : starts)
            pieces.push_back(std::make_shared<FakeCutEvent>(track, host.audioInfoQueries, 0.0, 1.0, start, start + 1.0));
        return std::make_shared<Cut>(made, std::move(pieces));
    }

    FakeTrack& track = host.addTrack("Dia 1");
};

TEST_F(CutListTest, EarliestStartIsTheSmallestDestinationAndNeedsPieces)
{
    const EventPtr made = event("10:00:00:00", "10:00:01:00", "10:00:00:00", "10:00:01:00");
    EXPECT_DOUBLE_EQ(cutAt(made, {40.0, 12.5, 30.0})->getEarliestStart(), 12.5);
    EXPECT_EQ(test::thrownCode([&] { cutAt(made, {})->getEarliestStart(); }), Result::OutOfRange)
        << "a cut without pieces has no start";
}

TEST_F(CutListTest, KeepsOrderOfCreationAndSortsByStartKeepingTheFirstOfEqualStarts)
{
    const EventPtr a = event("10:00:00:00", "10:00:01:00", "10:00:00:00", "10:00:01:00");
    const EventPtr b = event("10:00:01:00", "10:00:02:00", "10:00:01:00", "10:00:02:00");
    const EventPtr c = event("10:00:02:00", "10:00:03:00", "10:00:02:00", "10:00:03:00");
    const CutPtr late = cutAt(a, {20.0});
    const CutPtr early = cutAt(b, {10.0});
    const CutPtr sameAsEarly = cutAt(c, {10.0});
    cuts.append(late);
    cuts.append(nullptr);
    cuts.append(early);
    cuts.append(sameAsEarly);

    ASSERT_EQ(cuts.size(), 4u);
    EXPECT_EQ(cuts.getCut(0), late);
    EXPECT_EQ(cuts.getCut(1), nullptr) << "a null cut keeps its place";
    EXPECT_EQ(cuts.getEvents().getEvents(), (std::vector<EventPtr>{a, b, c})) << "and adds no event";

    const auto byStart = cuts.getCutsByStart();
    ASSERT_EQ(byStart.size(), 2u);
    EXPECT_EQ(byStart.begin()->second, early) << "the first cut made wins an equal start";
    EXPECT_EQ(std::next(byStart.begin())->second, late);
}

TEST_F(CutListTest, OrdersByStartWithoutTheCutsThatHaveNoPlace)
{
    const EventPtr made = event("10:00:00:00", "10:00:01:00", "10:00:00:00", "10:00:01:00");
    // Cuts of every track locked have no pieces; the others begin at one
    // of a few places, so that many share a start.
    std::vector<CutPtr> madeCuts;
    for (int i = 0; i < 200; ++i) {
        const CutPtr cut = i % 7 == 3 ? cutAt(made, {}) : cutAt(made, {static_cast<double>((i * 37) % 23), 99.0});
        madeCuts.push_back(cut);
        cuts.append(cut);
    }

    const auto byStart = cuts.getCutsByStart();
    const std::vector<const Cut*> ordered = cuts.getCutsInStartOrder();
    ASSERT_EQ(ordered.size(), 23u);
    ASSERT_EQ(byStart.size(), ordered.size());
    auto entry = byStart.begin();
    for (const Cut* cut : ordered) {
        ASSERT_EQ(cut, entry->second.get()) << "at " << entry->first;
        EXPECT_FALSE(cut->getPieces().empty());
        ++entry;
    }
    // The first made of those at 0.0 is the very first cut.
    EXPECT_EQ(ordered.front(), madeCuts.front().get());
}

} // namespace
} // namespace montala::test
