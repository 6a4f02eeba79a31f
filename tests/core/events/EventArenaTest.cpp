#include "support/ModelFixture.h"

#include "core/events/EventArena.h"

#include <gtest/gtest.h>

#include <vector>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::test::tc;

using EventArenaTest = ModelFixture;

// Events share blocks of memory, but each lives exactly as long as its own
// holders: across blocks, past the arena, in any order.
TEST_F(EventArenaTest, EachEventLivesAsLongAsItsHoldersWhateverTheBlock)
{
    std::vector<EventPtr> events;
    std::vector<std::weak_ptr<EventBase>> watched;
    {
        EventArena arena(4);
        for (int i = 0; i < 10; ++i) {
            events.push_back(arena.makeEvent());
            events.back()->setTimecodes(tc("01:00:00:00"), tc("01:00:01:00"), tc("10:00:00:00"),
                                        tc("10:00:01:00"));
            events.back()->setEventNumber(i + 1);
            watched.push_back(events.back());
        }
    }
    // Every other event goes; the rest keep their content.
    for (size_t i = 0; i < events.size(); i += 2)
        events[i].reset();
    for (size_t i = 0; i < watched.size(); ++i) {
        EXPECT_EQ(watched[i].expired(), i % 2 == 0) << i;
        if (events[i]) {
            EXPECT_EQ(events[i]->getEventNumber(), static_cast<int>(i) + 1);
            EXPECT_EQ(events[i]->getDstOut(), tc("10:00:01:00"));
            EXPECT_TRUE(events[i]->isFlawless());
        }
    }
    events.clear();
    for (const auto& event : watched)
        EXPECT_TRUE(event.expired());
}
