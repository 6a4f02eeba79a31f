#pragma once

#include "core/Framerate.h"
#include "core/Timecode.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

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

} // namespace montala::test
