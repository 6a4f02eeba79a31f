#pragma once

#include "core/events/EventBase.h"
#include "core/time/Framerate.h"
#include "core/time/Timecode.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace montala::test {

// Sets the process-wide rate provider (25 fps non-drop unless changed) and
// string converter for each test, and restores what was there afterwards.
class ModelFixture : public ::testing::Test {
protected:
    ModelFixture() : providerScope(&provider), converterScope(converter) {}

    void setRate(int fps, int dropMode, bool pulled = false)
    {
        provider.setFramerate(core::Framerate(fps, pulled, dropMode));
    }

    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    core::ScopedFramerateProvider providerScope;
    util::StringConverter converter;
    util::ScopedStringConverter converterScope;
};

inline core::Timecode tc(const char* text)
{
    return core::Timecode(std::string(text));
}

// A plain event with its four timecodes (at the provider's rate) and roll.
inline core::EventPtr makeEvent(const std::string& roll, const char* srcIn, const char* srcOut, const char* dstIn,
                                const char* dstOut)
{
    core::EventPtr event = core::EventBase::create(core::EventBase::Plain);
    event->setTimecodes(tc(srcIn), tc(srcOut), tc(dstIn), tc(dstOut));
    event->setRollName(roll);
    return event;
}

// The code a call throws, Ok if it throws none.
template <typename Call>
util::Result::Type thrownCode(Call&& call)
{
    try {
        call();
    } catch (util::Result::Type code) {
        return code;
    }
    return util::Result::Ok;
}

} // namespace montala::test
