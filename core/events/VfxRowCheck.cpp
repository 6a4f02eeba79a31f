#include "core/events/VfxRowCheck.h"

#include "core/events/VfxNameFilter.h"
#include "util/Result.h"

namespace montala::core {

std::optional<size_t> findRefusedVfxRow(const std::vector<VfxPatternEntry>& rows)
{
    // The filter refuses a pair for itself alone, so trying the rows one at
    // a time finds the one it refused, with the filter's own rule.
    for (size_t index = 0; index < rows.size(); ++index) {
        const VfxPatternEntry& row = rows[index];
        if (!row.isInUse())
            continue;
        try {
            VfxNameFilter().setPatterns({{row.prefix, row.postfix}});
        } catch (util::Result::Type) {
            return index;
        }
    }
    return std::nullopt;
}

} // namespace montala::core
