#pragma once

// A reel re-cut in shuffled order, on the in-memory host: the scene of the
// conform benchmark, and of the test that a large conform keeps its results.
//
// The old timeline is a row of 4-second stretches from 10:00:00:00 on; the
// Change EDL puts each one into a shuffled slot of the new timeline. Behind
// every tenth slot the New EDL holds one second more than the Change EDL
// fills (an insert), and every 25th New event is a dissolve. Every track
// holds a 2.5-second clip every 3 seconds, shifted by 0.04 s per track so
// that the edits fall in different places of the clips, and one automation
// curve with a point every 5 seconds: a pattern that the double looks up by
// arithmetic.

#include "support/FakeMontaler.h"

#include "core/events/EventBase.h"
#include "core/events/EventList.h"
#include "core/time/Timecode.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace montala::test {

class ShuffledReel {
public:
    static constexpr double firstSecond = 36000.0; // 10:00:00:00
    static constexpr double stretch = 4.0;

    // Timecodes go through the rate provider in scope.
    ShuffledReel(int eventCount, int trackCount)
    {
        host.settings.setIncludeOverhanging(true);
        const double length = eventCount * stretch;
        for (int t = 0; t < trackCount; ++t) {
            FakeTrack::Pattern pattern;
            pattern.first = firstSecond + 0.04 * t;
            pattern.period = 3.0;
            pattern.length = 2.5;
            while (pattern.clipStart(pattern.count) + 2.5 < firstSecond + length)
                ++pattern.count;
            pattern.pointFirst = firstSecond;
            pattern.pointPeriod = 5.0;
            pattern.pointCount = static_cast<size_t>(std::ceil(length / 5.0));
            // A point's value is its whole second modulo 7, over 7: the
            // values repeat every 7 points.
            for (size_t i = 0; i < 7; ++i)
                pattern.values.push_back((static_cast<int>(pattern.pointTime(i)) % 7) / 7.0);
            host.addTrack("Track " + std::to_string(t + 1)).lay("clip", pattern);
        }

        // Fisher-Yates over the engine's raw numbers, which the standard
        // fixes, so that every library shuffles alike.
        std::vector<int> slots(static_cast<size_t>(eventCount));
        for (int i = 0; i < eventCount; ++i)
            slots[static_cast<size_t>(i)] = i;
        std::mt19937 random(42);
        for (size_t i = slots.size(); i > 1; --i)
            std::swap(slots[i - 1], slots[random() % i]);

        for (int i = 0; i < eventCount; ++i) {
            const int slot = slots[static_cast<size_t>(i)];
            const double src = firstSecond + i * stretch;
            const double dst = firstSecond + slot * stretch + (slot / 10) * 1.0;
            auto event = std::make_shared<core::EventBase>();
            event->setTimecodes(at(src), at(src + stretch), at(dst), at(dst + stretch));
            event->setRollName("A" + std::to_string(i));
            changes.addEvent(event);

            auto shot = std::make_shared<core::EventBase>();
            const double insert = slot % 10 == 9 ? 1.0 : 0.0;
            shot->setTimecodes(at(src), at(src + stretch + insert), at(dst), at(dst + stretch + insert));
            shot->setRollName("A" + std::to_string(i));
            if (i % 25 == 0) {
                shot->setTransitionType(core::EventBase::Dissolve);
                shot->setTransitionDuration(12);
            }
            host.newList.addEvent(shot);
        }
    }

    FakeMontaler host;
    core::EventList changes{core::EventList::ChangeKind};

private:
    static core::Timecode at(double seconds)
    {
        core::Timecode timecode;
        timecode.fromSeconds(seconds);
        return timecode;
    }
};

} // namespace montala::test
