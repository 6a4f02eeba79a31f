#include "host/TrackEvent.h"

#include "kelmar/base/FVariant.h"

namespace montala::host {

TrackEvent::TrackEvent(const Track* owner, Kelmar::IProjectObject* event, bool isOwned)
    : track(owner), object(isOwned ? Kelmar::owned(event) : Kelmar::shared(event)), owned(isOwned)
{
}

double TrackEvent::getStart() const { return object->getStart(nullptr); }

double TrackEvent::getEnd() const { return object->getEnd(nullptr); }

std::string TrackEvent::getName() const
{
    Kelmar::String name;
    if (object->getName(name) != Kelmar::kResultOk)
        return {};
    return name.toUtf8();
}

bool TrackEvent::getUserId(int64_t& id) const
{
    Kelmar::FVariant value;
    if (object->getAttribute("MontEventUserId", value) != Kelmar::kResultOk || !value.isInt())
        return false;
    id = value.getInt();
    return true;
}

} // namespace montala::host
