#pragma once

#include "support/ModelFixture.h"

#include "core/events/EventBase.h"
#include "core/events/EventList.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace montala::test {

// Builds events and prints them in the form a user reads in the table:
// "ROLL SRC in-out DST in-out", so a failing comparison shows the whole event.
class ChangeEdlFixture : public ModelFixture {
protected:
    static core::EventPtr event(const std::string& roll, const char* srcIn, const char* srcOut,
                                const char* dstIn, const char* dstOut, int number = 0)
    {
        auto e = std::make_shared<core::EventBase>();
        e->setTimecodes(tc(srcIn), tc(srcOut), tc(dstIn), tc(dstOut));
        e->setRollName(roll);
        e->setEventNumber(number);
        return e;
    }

    static core::EventPtr transition(const std::string& roll, int number, int type, int frames,
                                     const char* srcIn, const char* srcOut, const char* dstIn,
                                     const char* dstOut)
    {
        core::EventPtr e = event(roll, srcIn, srcOut, dstIn, dstOut, number);
        e->setTransitionType(type);
        e->setTransitionDuration(frames);
        return e;
    }

    static core::EventList list(int kind, const std::vector<core::EventPtr>& events)
    {
        core::EventList result(kind);
        for (const core::EventPtr& e : events)
            result.addEvent(e);
        return result;
    }

    static std::string describe(const core::EventBase& e)
    {
        std::ostringstream out;
        out << e.getRollName() << " SRC " << e.getSrcIn().toString() << "-" << e.getSrcOut().toString()
            << " DST " << e.getDstIn().toString() << "-" << e.getDstOut().toString();
        return out.str();
    }

    static std::vector<std::string> describe(const core::EventList& events)
    {
        std::vector<std::string> lines;
        for (const core::EventPtr& e : events.getEvents())
            lines.push_back(describe(*e));
        return lines;
    }

    static std::vector<int> numbers(const core::EventList& events)
    {
        std::vector<int> result;
        for (const core::EventPtr& e : events.getEvents())
            result.push_back(e->getEventNumber());
        return result;
    }
};

} // namespace montala::test
