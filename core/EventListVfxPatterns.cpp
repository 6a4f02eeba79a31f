// EventList's VFX marking, kept beside the name filter it applies.

#include "core/EventList.h"
#include "core/VfxNameFilter.h"

namespace montala::core {

void EventList::applyVfxPatterns(const VfxNameFilter& patterns, int kind)
{
    {
        BulkChange bulk(*this);
        for (const EventPtr& event : events) {
            const std::string& name = kind == 1 ? event->getClipName() : event->getRollName();
            event->setVfx(patterns.isVfxName(name));
        }
    }
    notifyListChanged();
}

} // namespace montala::core
