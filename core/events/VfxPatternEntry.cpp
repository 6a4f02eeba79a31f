#include "core/events/VfxPatternEntry.h"

#include "core/serialize/SerializationTree.h"

namespace montala::core {

void VfxPatternEntry::readCurrent(serialize::SerializationTree& tree)
{
    prefix = tree.readText();
    postfix = tree.readText();
    active = tree.readBool();
}

void VfxPatternEntry::write(serialize::SerializationTree& tree) const
{
    tree.writeText(prefix);
    tree.writeText(postfix);
    tree.writeBool(active);
}

} // namespace montala::core
