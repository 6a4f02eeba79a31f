#pragma once

#include "support/ModelFixture.h"
#include "support/FakeMontaler.h"

#include "core/conform/CutList.h"
#include "core/events/EventBase.h"
#include "core/events/EventList.h"

#include <memory>
#include <string>

namespace montala::test {

// 25 fps, a fake host with no tracks, and every marker setting at its
// default (all on). 10:00:00:00 is 36000.0 seconds.
class ConformFixture : public ModelFixture {
protected:
    static core::EventPtr event(const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut,
                                const std::string& roll = "A001")
    {
        auto made = std::make_shared<core::EventBase>();
        made->setTimecodes(tc(srcIn), tc(srcOut), tc(dstIn), tc(dstOut));
        made->setRollName(roll);
        return made;
    }

    // A Change event that moves [srcIn, srcOut] of the old timeline so that
    // it starts at dstIn.
    static core::EventPtr move(const char* srcIn, const char* srcOut, const char* dstIn)
    {
        const core::Timecode in = tc(srcIn);
        const core::Timecode out = tc(srcOut);
        const core::Timecode dst = tc(dstIn);
        core::Timecode dstOut;
        dstOut.fromSeconds(dst.toSeconds() + out.toSeconds() - in.toSeconds());
        auto made = std::make_shared<core::EventBase>();
        made->setTimecodes(in, out, dst, dstOut);
        made->setRollName("A001");
        return made;
    }

    void buildCuts(const core::EventList& events)
    {
        ASSERT_EQ(host.buildCuts(events, cuts), util::Result::Ok);
    }

    FakeMontaler host;
    core::EventList changes{core::EventList::ChangeKind};
    core::CutList cuts;
    RecordingProgress progress;
};

} // namespace montala::test
