#include "core/events/VfxRowCheck.h"

#include <gtest/gtest.h>

using namespace montala::core;

TEST(VfxRowCheck, NamesTheTableRowTheFilterRefuses)
{
    // Rows not in use are passed over, bad characters and all, but still
    // count for the place.
    const std::vector<VfxPatternEntry> rows = {
        {"SH#", "", false},
        {"", "", true},
        {"SH_", "_comp", true},
        {"VFX", "v#", true},
    };
    EXPECT_EQ(findRefusedVfxRow(rows), std::optional<size_t>(3));
    EXPECT_EQ(findRefusedVfxRow({rows[0], rows[1], rows[2]}), std::nullopt);
    EXPECT_EQ(findRefusedVfxRow({{"A*.-_9", "", true}, {"", "\xC3\xA9", true}}), std::optional<size_t>(1));
}
