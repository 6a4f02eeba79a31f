#pragma once

#include "core/serialize/Serializable.h"

#include <string>
#include <vector>

namespace montala::core {

// One row of the VFX name rule: a name is a VFX shot name when it reads
// prefix, a version number, postfix. The texts are not checked here; the
// check comes when the patterns are compiled for a generation.
class VfxPatternEntry : public serialize::Serializable {
public:
    static constexpr uint32_t currentVersion = 0;

    VfxPatternEntry() : Serializable(currentVersion) {}
    VfxPatternEntry(std::string prefix, std::string postfix, bool active)
        : Serializable(currentVersion), prefix(std::move(prefix)), postfix(std::move(postfix)),
          active(active)
    {
    }

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;

    bool operator==(const VfxPatternEntry& other) const
    {
        return prefix == other.prefix && postfix == other.postfix && active == other.active;
    }

    // A row takes part in matching when it is switched on and says
    // something; an empty row that is switched on is passed over.
    bool isInUse() const { return active && (!prefix.empty() || !postfix.empty()); }

    std::string prefix;
    std::string postfix;
    bool active = false;
};

// The rows of a pattern table that take part in matching, in their order.
inline std::vector<VfxPatternEntry> rowsInUse(const std::vector<VfxPatternEntry>& rows)
{
    std::vector<VfxPatternEntry> inUse;
    for (const VfxPatternEntry& row : rows) {
        if (row.isInUse())
            inUse.push_back(row);
    }
    return inUse;
}

} // namespace montala::core
