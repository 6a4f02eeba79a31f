// The generator finds candidates through an index and decides rivals in
// groups; here its output is held against the plain algorithm it replaced:
// every Old event of a key tried against every New event of that key, and
// the rivals pruned by the two-cursor walk. Random re-cuts on few rolls with
// sources used many times, rivals of equal and different length, equal
// distances, speeds, freezes, dissolves and wipes must give the same events
// in the same order with the same numbers, or fail with the same code.

#include "support/ModelFixture.h"

#include "core/generation/ChangeEdlGenerator.h"
#include "core/events/EventList.h"
#include "core/events/EventListAlgorithm.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <cmath>
#include <list>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace montala::core {
namespace {

using util::Result;

// The plain all-pairs generation, kept as the reference.
class ReferenceGenerator {
public:
    explicit ReferenceGenerator(const ChangeEdlGenerator& rules) : rules(rules) {}

    void generate(const EventList& oldList, const EventList& newList, EventList& changeList) const
    {
        changeList.clear();
        EventList oldCopy(EventList::ChangeKind);
        EventList newCopy(EventList::ChangeKind);
        oldCopy.copyEventsFrom(oldList);
        newCopy.copyEventsFrom(newList);
        rules.splitTransitions(oldCopy);
        rules.splitTransitions(newCopy);

        std::multimap<std::string, EventPtr> byKey;
        for (const EventPtr& event : oldCopy.getEvents()) {
            if (!event->isFlawless())
                continue;
            bool changedByVfx = false;
            byKey.emplace(rules.matchKey(*event, changedByVfx), event);
            event->setVfx(changedByVfx);
        }
        double lastShift = 0.0;
        int nextNumber = 1;
        for (const EventPtr& newEvent : EventListAlgorithm::orderByDstIn(newCopy)) {
            if (!newEvent->isFlawless())
                continue;
            bool changedByVfx = false;
            const std::string key = rules.matchKey(*newEvent, changedByVfx);
            newEvent->setVfx(changedByVfx);
            std::list<MatchCandidate> candidates;
            const auto [first, last] = byKey.equal_range(key);
            for (auto it = first; it != last; ++it) {
                MatchCandidate candidate;
                if (rules.tryMatch(*it->second, *newEvent, candidate))
                    candidates.push_back(candidate);
            }
            prune(candidates, lastShift);
            for (const MatchCandidate& candidate : candidates) {
                candidate.event->setEventNumber(nextNumber++);
                changeList.addEvent(candidate.event);
                lastShift = candidate.timeShift;
            }
        }
        rules.mergeTransitions(changeList);
    }

private:
    static void prune(std::list<MatchCandidate>& candidates, double lastShift)
    {
        auto length = [](const MatchCandidate& c) { return Timecode::difference(c.newSrcEnd, c.newSrcStart); };
        auto distance = [lastShift](const MatchCandidate& c) { return std::fabs(c.timeShift - lastShift); };
        auto x = candidates.begin();
        while (x != candidates.end()) {
            bool xDeleted = false;
            for (auto y = candidates.begin(); y != candidates.end();) {
                Timecode a, b, l;
                if (y == x || !ChangeEdlGenerator::computeOverlap(x->newSrcStart, x->newSrcEnd, y->newSrcStart,
                                                                  y->newSrcEnd, a, b, l)) {
                    ++y;
                    continue;
                }
                const Timecode lengthX = length(*x);
                const Timecode lengthY = length(*y);
                if (lengthY == lengthX ? distance(*y) > distance(*x) : lengthY < lengthX) {
                    y = candidates.erase(y);
                } else {
                    x = candidates.erase(x);
                    xDeleted = true;
                    break;
                }
            }
            if (!xDeleted)
                ++x;
        }
    }

    const ChangeEdlGenerator& rules;
};

// Everything a user or a later stage can see of a generated list.
std::vector<std::string> snapshot(const EventList& events)
{
    std::vector<std::string> lines;
    for (const EventPtr& e : events.getEvents()) {
        std::ostringstream line;
        line << e->getEventNumber() << " " << e->getRollName() << " / " << e->getClipName() << " SRC "
             << e->getSrcIn().toString() << "-" << e->getSrcOut().toString() << " DST " << e->getDstIn().toString()
             << "-" << e->getDstOut().toString() << " type " << e->getTransitionType() << " vfx " << e->isVfx()
             << " states " << e->getStates().size();
        lines.push_back(line.str());
    }
    return lines;
}

// Random cuts built to make the generator's shortcuts matter: a handful of
// rolls, sources picked from a small pool (so ranges repeat exactly or
// overlap), record places on a coarse grid (so distances to the last shift
// tie), and now and then a speed change, a freeze or a transition.
class RecutMaker {
public:
    explicit RecutMaker(unsigned seed) : random(seed) {}

    EventList makeOld()
    {
        EventList events(EventList::OldKind);
        const int count = pick(5, 70);
        int rec = 3600 * 25 * 10;
        for (int number = 1; number <= count; ++number) {
            addShot(events, number, rec);
            rec += pick(0, 2) * 25;
        }
        return events;
    }

    // A new cut: shots of the old pool again, some trimmed, some at another
    // speed, some reused many times in a row.
    EventList makeNew()
    {
        EventList events(EventList::NewKind);
        const int count = pick(3, 40);
        int rec = 3600 * 25 * 10 + pick(0, 4) * 25 * 60;
        for (int number = 1; number <= count; ++number)
            addShot(events, number, rec);
        return events;
    }

    bool chance(int percent) { return pick(1, 100) <= percent; }
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

private:
    void addShot(EventList& events, int number, int& rec)
    {
        static const char* const rolls[] = {"A", "B", "SH_001", "SH_002"};
        static const int starts[] = {0, 0, 0, 25, 50, 50, 99, 100, 112};
        static const int lengths[] = {25, 50, 50, 75, 100, 13};
        const std::string roll = rolls[pick(0, chance(70) ? 0 : 3)];
        const int srcIn = 3600 * 25 + starts[pick(0, 8)];
        int srcLength = lengths[pick(0, 5)];
        int recLength = srcLength;
        const int style = pick(1, 100);
        if (style <= 8)
            recLength = srcLength / 2; // double speed
        else if (style <= 14)
            recLength = srcLength * 2; // half speed
        else if (style <= 16)
            recLength = 200; // a freeze of the source's first frame, below
        else if (style <= 22)
            recLength = srcLength / 4; // a frame or two of shared source comes to no record length
        // Ending on the last frame of the day at a speed that counts as
        // normal (200 source frames over 199): a Change event conformed at
        // the source length passes the day, so generation must fail, and
        // fail the same way.
        const int lastFrame = 3600 * 25 * 24 - 1;
        if (chance(2)) {
            srcLength = 200;
            recLength = 199;
            rec = lastFrame - recLength;
        }

        const int transition = chance(12) ? pick(1, 2) : 0;
        if (transition != 0) {
            // The outgoing line of the pair, of no length.
            auto outgoing = std::make_shared<EventBase>();
            outgoing->setTimecodes(Timecode(srcIn), Timecode(srcIn), Timecode(rec), Timecode(rec));
            outgoing->setRollName(rolls[pick(0, 3)]);
            outgoing->setClipName("out");
            outgoing->setEventNumber(number);
            events.addEvent(outgoing);
        }
        auto event = std::make_shared<EventBase>();
        const int srcOut = style > 14 && style <= 16 ? srcIn + 1 : srcIn + srcLength;
        const int recOut = std::min(rec + recLength, lastFrame);
        event->setTimecodes(Timecode(srcIn), Timecode(srcOut), Timecode(rec), Timecode(recOut));
        event->setRollName(roll);
        event->setClipName(chance(50) ? "clip" : "");
        event->setEventNumber(number);
        if (transition != 0) {
            event->setTransitionType(transition);
            event->setTransitionDuration(chance(50) ? 10 : 25);
        }
        if (chance(3))
            event->addState(EventState::BadRollName);
        events.addEvent(event);
        rec = std::min(recOut, 3600 * 25 * 20);
    }

    std::mt19937 random;
};

class ChangeEdlGeneratorReferenceTest : public test::ModelFixture {
protected:
    // Runs both; the failure code (Ok when none) and the list each gave.
    static void runBoth(ChangeEdlGenerator& generator, const EventList& oldList, const EventList& newList,
                        Result::Type& code, std::vector<std::string>& got, Result::Type& referenceCode,
                        std::vector<std::string>& expected)
    {
        EventList changes(EventList::ChangeKind);
        code = test::thrownCode([&] { generator.generate(oldList, newList, changes); });
        got = snapshot(changes);
        EventList reference(EventList::ChangeKind);
        referenceCode = test::thrownCode([&] { ReferenceGenerator(generator).generate(oldList, newList, reference); });
        expected = snapshot(reference);
    }
};

TEST_F(ChangeEdlGeneratorReferenceTest, RandomRecutsGiveTheEventsOfTheAllPairsAlgorithmInItsOrder)
{
    int failures = 0;
    size_t events = 0;
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RecutMaker maker(seed);
        ChangeEdlGenerator generator;
        generator.configure(maker.chance(20) ? MatchName::ClipName : MatchName::RollName,
                            maker.chance(30) ? std::vector<VfxPatternEntry>{VfxPatternEntry("SH_", "", true)}
                                             : std::vector<VfxPatternEntry>{});
        const EventList oldList = maker.makeOld();
        const EventList newList = maker.makeNew();
        Result::Type code, referenceCode;
        std::vector<std::string> got, expected;
        runBoth(generator, oldList, newList, code, got, referenceCode, expected);
        ASSERT_EQ(code, referenceCode);
        if (code != Result::Ok) {
            ++failures;
            continue;
        }
        ASSERT_EQ(got, expected);
        events += got.size();
    }
    // The cuts above reach both the failing and the ordinary path, and
    // give enough events for the comparison to mean something.
    EXPECT_GT(failures, 2);
    EXPECT_GT(events, 4000u);
}

TEST_F(ChangeEdlGeneratorReferenceTest, ManyOldEventsOfOneSourceRangeKeepTheWinnerOfTheWalk)
{
    // The same take used at many places of the Old cut, with rivals that
    // partly cover it and others that do not touch it: the case where the
    // generator decides a whole group of equal candidates at once.
    for (unsigned seed = 1; seed <= 120; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
        EventList oldList(EventList::OldKind);
        EventList newList(EventList::NewKind);
        const int start = 3600 * 25;
        // Every other seed holds only the one take, so that each New event
        // meets a single class of equal candidates.
        const bool oneTake = seed % 2 == 0;
        for (int i = 0; i < 120; ++i) {
            auto event = std::make_shared<EventBase>();
            const int kind = oneTake ? 0 : pick(0, 9);
            const int srcIn = kind < 6 ? start : kind < 8 ? start + pick(-20, 20) * 5 : start + 400 + pick(0, 9) * 10;
            const int length = kind < 6 ? 100 : pick(1, 30) * 5;
            const int rec = start * 10 + pick(0, 400) * 25;
            event->setTimecodes(Timecode(srcIn), Timecode(srcIn + length), Timecode(rec), Timecode(rec + length));
            event->setRollName("A");
            oldList.addEvent(event);
        }
        for (int i = 0; i < 40; ++i) {
            auto event = std::make_shared<EventBase>();
            const int srcIn = oneTake ? start : start + pick(-4, 4) * 25;
            const int length = oneTake ? 100 : pick(1, 12) * 25;
            const int rec = start * 10 + pick(0, 400) * 25;
            event->setTimecodes(Timecode(srcIn), Timecode(srcIn + length), Timecode(rec), Timecode(rec + length));
            event->setRollName("A");
            newList.addEvent(event);
        }
        ChangeEdlGenerator generator;
        Result::Type code, referenceCode;
        std::vector<std::string> got, expected;
        runBoth(generator, oldList, newList, code, got, referenceCode, expected);
        ASSERT_EQ(code, Result::Ok);
        ASSERT_EQ(referenceCode, Result::Ok);
        ASSERT_EQ(got, expected);
        ASSERT_FALSE(got.empty());
    }
}

} // namespace
} // namespace montala::core
