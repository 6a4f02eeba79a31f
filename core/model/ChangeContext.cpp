#include "core/model/ChangeContext.h"

#include <algorithm>

namespace montala::core {

void ChangeContextNotificationBase::addListener(ChangeContextListenerInterface* listener)
{
    if (listener == first || (more && std::find(more->begin(), more->end(), listener) != more->end()))
        return;
    if (!first) {
        first = listener;
        return;
    }
    if (!more)
        more = std::make_unique<std::vector<ChangeContextListenerInterface*>>();
    more->push_back(listener);
}

void ChangeContextNotificationBase::removeListener(ChangeContextListenerInterface* listener)
{
    if (listener == first) {
        first = nullptr;
        if (more && !more->empty()) {
            first = more->back();
            more->pop_back();
        }
        return;
    }
    if (!more)
        return;
    const auto found = std::find(more->begin(), more->end(), listener);
    if (found != more->end())
        more->erase(found);
}

void ChangeContextNotificationBase::notify(const ChangeContext& context)
{
    if (first)
        first->changed(context);
    if (more) {
        for (ChangeContextListenerInterface* listener : *more)
            listener->changed(context);
    }
}

} // namespace montala::core
