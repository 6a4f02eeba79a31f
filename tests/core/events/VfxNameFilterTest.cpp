#include "../ChangeRecorder.h"
#include "../ChangeEdlFixture.h"

#include "core/events/EventList.h"
#include "core/model/Settings.h"
#include "core/events/VfxNameFilter.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace montala::core {
namespace {

using util::Result;

VfxNameFilter filterOf(std::vector<std::pair<std::string, std::string>> patterns)
{
    VfxNameFilter filter;
    filter.setPatterns(patterns);
    return filter;
}

TEST(VfxNameFilterTest, VersionsOfAShotShareOneName)
{
    const VfxNameFilter filter = filterOf({{"SH_", "_comp"}});
    EXPECT_EQ(filter.normalize("SH_0012_comp"), "SH__comp");
    EXPECT_EQ(filter.normalize("SH_7_comp"), "SH__comp");
    EXPECT_TRUE(filter.isVfxName("SH_7_comp"));
    // No digits between prefix and postfix: a match, but nothing changes.
    EXPECT_EQ(filter.normalize("SH__comp"), "SH__comp");
    EXPECT_FALSE(filter.isVfxName("SH__comp"));
    // The whole name must match, case sensitive.
    EXPECT_FALSE(filter.isVfxName("XSH_12_comp"));
    EXPECT_FALSE(filter.isVfxName("SH_12_compX"));
    EXPECT_FALSE(filter.isVfxName("sh_12_comp"));
    EXPECT_FALSE(filter.isVfxName("SH_1a_comp"));
}

TEST(VfxNameFilterTest, DotInThePrefixKeepsTheFirstDigit)
{
    // Required as it stands: the erase starts at the length of the
    // translated prefix "VFX\.", one past the digits, so the first
    // version digit survives and versions 0012 and 0013 share a key
    // while 1012 does not.
    const VfxNameFilter filter = filterOf({{"VFX.", ""}});
    EXPECT_EQ(filter.normalize("VFX.0012"), "VFX.0");
    EXPECT_EQ(filter.normalize("VFX.0013"), "VFX.0");
    EXPECT_EQ(filter.normalize("VFX.1012"), "VFX.1");
    // The dot stands for itself only.
    EXPECT_FALSE(filter.isVfxName("VFXx0012"));
}

TEST(VfxNameFilterTest, StarsEmptyPrefixesAndSeveralPatterns)
{
    struct Case {
        std::vector<std::pair<std::string, std::string>> patterns;
        const char* name;
        const char* normalized;
    };
    const Case cases[] = {
        // "*" stands for exactly one character.
        {{{"SH*_", ""}}, "SHX_12", "SHX_"},
        {{{"SH*_", ""}}, "SH._12", "SH._"},
        {{{"SH*_", ""}}, "SH_12", "SH_12"},
        {{{"SH*_", ""}}, "SHXY_12", "SHXY_12"},
        // An empty prefix erases only leading digits.
        {{{"", "_v"}}, "0012_v", "_v"},
        // Every pattern is tried on the unchanged name: the second still
        // matches A_1_B_9 and erases from position 6 of the shortened
        // result, where no digit stands any more.
        {{{"A_", "_B_9"}, {"A_1_B_", ""}}, "A_1_B_9", "A__B_9"},
        {{{"A_", "_B"}, {"C", ""}}, "A_12_B", "A__B"},
        {{{"A_", "_B"}, {"C", ""}}, "C99", "C"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const VfxNameFilter filter = filterOf(c.patterns);
        EXPECT_EQ(filter.normalize(c.name), c.normalized);
        EXPECT_EQ(filter.isVfxName(c.name), std::string(c.name) != c.normalized);
    }
    EXPECT_FALSE(filterOf({{"", "_v"}}).isVfxName("_v"));
}

TEST(VfxNameFilterTest, PrefixWithADotLongerThanTheNameFailsTheErase)
{
    // Prefix "A." translates to three characters but matches the
    // two-character name "A.": the erase starts past the end. This is a
    // standard library failure, not a Result code, and it is left to the
    // caller as it always was.
    const VfxNameFilter filter = filterOf({{"A.", ""}});
    EXPECT_THROW(filter.normalize("A."), std::out_of_range);
    EXPECT_EQ(filter.normalize("A.1"), "A.1");
}

TEST(VfxNameFilterTest, RefusesEmptyRowsAndCharactersOutsideTheSet)
{
    VfxNameFilter filter;
    for (const auto& bad : std::vector<std::pair<std::string, std::string>>{
             {"", ""}, {"SH/", ""}, {"", "_v?"}, {"SH ", ""}, {"SH(", ""}, {"\xc3\xa9", ""}}) {
        EXPECT_EQ(test::thrownCode([&] { filter.setPatterns({bad}); }), Result::InvalidArgument)
            << "accepted \"" << bad.first << "\" \"" << bad.second << "\"";
    }
    EXPECT_NO_THROW(filter.setPatterns({{".*-_azAZ09", "x"}}));

    // The rows before the bad one stay set, and a new set replaces the old.
    EXPECT_THROW(filter.setPatterns({{"SH_", ""}, {"B/", ""}}), Result::Type);
    EXPECT_EQ(filter.normalize("SH_1"), "SH_");
    filter.setPatterns({});
    EXPECT_TRUE(filter.isEmpty());
    EXPECT_EQ(filter.normalize("SH_1"), "SH_1");
}

class ApplyVfxPatternsTest : public test::ChangeEdlFixture {};

TEST_F(ApplyVfxPatternsTest, MarksByRollOrClipNameWithOneNotification)
{
    EventPtr shot = event("SH_12", "01:00:00:00", "01:00:01:00", "10:00:00:00", "10:00:01:00");
    shot->setClipName("plate");
    EventPtr plate = event("A001", "01:00:00:00", "01:00:01:00", "10:00:01:00", "10:00:02:00");
    plate->setClipName("SH_3");
    plate->setVfx(true);
    EventList events = list(EventList::OldKind, {shot, plate});
    test::ChangeRecorder listener;
    events.addListener(&listener);

    const VfxNameFilter filter = filterOf({{"SH_", ""}});
    events.applyVfxPatterns(filter, MatchName::RollName);
    EXPECT_TRUE(shot->isVfx());
    EXPECT_FALSE(plate->isVfx());
    EXPECT_EQ(listener.count(), 1);

    events.applyVfxPatterns(filter, MatchName::ClipName);
    EXPECT_FALSE(shot->isVfx());
    EXPECT_TRUE(plate->isVfx());
    EXPECT_EQ(listener.count(), 2);

    // The list still hears its events afterwards.
    shot->setRollName("X");
    EXPECT_EQ(listener.count(), 3);
    events.removeListener(&listener);
}

} // namespace
} // namespace montala::core
