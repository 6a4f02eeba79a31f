#pragma once

#include "core/events/VfxPatternEntry.h"

#include <optional>
#include <vector>

namespace montala::core {

// The place in rows of the first row in use that the VFX name filter
// refuses (a character outside letters, digits and ". * - _"), or nothing
// when it takes them all. Generation refuses such a table with
// Result::InvalidArgument; this tells the user which row to mend.
std::optional<size_t> findRefusedVfxRow(const std::vector<VfxPatternEntry>& rows);

} // namespace montala::core
