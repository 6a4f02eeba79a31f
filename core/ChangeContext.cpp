#include "core/ChangeContext.h"

namespace montala::core {

void ChangeContextNotificationBase::addListener(ChangeContextListenerInterface* listener)
{
    listeners.insert(listener);
}

void ChangeContextNotificationBase::removeListener(ChangeContextListenerInterface* listener)
{
    listeners.erase(listener);
}

void ChangeContextNotificationBase::notify(const ChangeContext& context)
{
    for (ChangeContextListenerInterface* listener : listeners)
        listener->changed(context);
}

} // namespace montala::core
