#include "core/model/ChangeContext.h"

#include <algorithm>

namespace montala::core {

void ChangeContextNotificationBase::addListener(ChangeContextListenerInterface* listener)
{
    if (listener == first || std::find(more.begin(), more.end(), listener) != more.end())
        return;
    if (!first)
        first = listener;
    else
        more.push_back(listener);
}

void ChangeContextNotificationBase::removeListener(ChangeContextListenerInterface* listener)
{
    if (listener == first) {
        first = nullptr;
        if (!more.empty()) {
            first = more.back();
            more.pop_back();
        }
        return;
    }
    const auto found = std::find(more.begin(), more.end(), listener);
    if (found != more.end())
        more.erase(found);
}

void ChangeContextNotificationBase::notify(const ChangeContext& context)
{
    if (first)
        first->changed(context);
    for (ChangeContextListenerInterface* listener : more)
        listener->changed(context);
}

} // namespace montala::core
