#include "core/time/FramerateNames.h"

#include <gtest/gtest.h>

using namespace montala::core;

TEST(FramerateNames, EveryNameReadsBackAndOthersAreRefused)
{
    ASSERT_EQ(rateNames().size(), 11u);
    for (const std::string& name : rateNames()) {
        const std::optional<Framerate> rate = parseRateName(name);
        ASSERT_TRUE(rate.has_value()) << name;
        EXPECT_EQ(rateName(*rate), name);
    }
    EXPECT_EQ(*parseRateName("29.97df"), Framerate(30, true, 1));
    EXPECT_EQ(*parseRateName("23.976"), Framerate(24, true, 0));
    EXPECT_FALSE(parseRateName("29.97DF").has_value());
    EXPECT_FALSE(parseRateName("").has_value());
    // A rate outside the table is described instead.
    EXPECT_EQ(rateName(Framerate(30, -1)), "30 fps, drop mode not given");
    EXPECT_EQ(describeSuggestedRate(Framerate()), "no frame rate (no timecode to judge by)");
}

TEST(FramerateNames, ProjectRateAndMismatchFollowTheSuggestion)
{
    EXPECT_EQ(*projectRateFor(Framerate(30, 1)), Framerate(30, true, 1));
    EXPECT_EQ(*projectRateFor(Framerate(25, -1)), Framerate(25, 0));
    EXPECT_FALSE(projectRateFor(Framerate(0, 0)).has_value());

    const Framerate project(25, 0);
    EXPECT_FALSE(rateMismatch(Framerate(0, 0), project)) << "no timecode, nothing to compare";
    EXPECT_FALSE(rateMismatch(Framerate(25, -1), project));
    EXPECT_TRUE(rateMismatch(Framerate(24, 0), project));
    EXPECT_TRUE(rateMismatch(Framerate(30, 1), Framerate(30, true, 0)));
}
