#include "sim/services/SimDependencyRegistry.h"

#include "kelmar/base/IPtr.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimDependencyRegistry::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IDependencyRegistry>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

FUnknown* SimDependencyRegistry::identity(FUnknown* object)
{
    // The pointer is only compared, so the reference the query took is given back.
    IPtr<FUnknown> unknown = Kelmar::queryInterface<FUnknown>(object);
    return unknown ? unknown.get() : object;
}

tresult SimDependencyRegistry::addDependent(FUnknown* subject, FObject* dependent)
{
    if (!subject || !dependent)
        return kInvalidArgument;
    const auto entry = std::make_pair(identity(subject), dependent);
    if (std::find(entries.begin(), entries.end(), entry) == entries.end())
        entries.push_back(entry);
    return kResultOk;
}

tresult SimDependencyRegistry::removeDependent(FUnknown* subject, FObject* dependent)
{
    const auto entry = std::make_pair(identity(subject), dependent);
    const auto found = std::find(entries.begin(), entries.end(), entry);
    if (found == entries.end())
        return kResultFalse;
    entries.erase(found);
    return kResultOk;
}

void SimDependencyRegistry::notify(FUnknown* subject, FUnknown* changed)
{
    FUnknown* key = identity(subject);
    // A copy: a dependent may remove itself while it is told.
    const auto current = entries;
    for (const auto& [entrySubject, dependent] : current) {
        if (entrySubject != key)
            continue;
        if (std::find(entries.begin(), entries.end(), std::make_pair(entrySubject, dependent)) != entries.end())
            dependent->update(changed, IDependent::kChanged);
    }
}

std::size_t SimDependencyRegistry::dependentCount(FUnknown* subject) const
{
    FUnknown* key = identity(subject);
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [key](const auto& entry) { return entry.first == key; }));
}

} // namespace montala::sim
