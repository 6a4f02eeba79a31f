#include "core/conform/CutList.h"

namespace montala::core {

void CutList::append(const CutPtr& cut)
{
    cuts.push_back(cut);
    if (cut && cut->getEvent())
        events.addEvent(cut->getEvent());
}

std::map<double, CutPtr> CutList::getCutsByStart() const
{
    std::map<double, CutPtr> byStart;
    for (const CutPtr& cut : cuts) {
        if (cut)
            byStart.emplace(cut->getEarliestStart(), cut);
    }
    return byStart;
}

} // namespace montala::core
