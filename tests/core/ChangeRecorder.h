#pragma once

#include "core/model/ChangeContext.h"

#include <vector>

namespace montala::test {

// A listener that keeps the kind of every change it hears, and for event
// lists which list it was.
class ChangeRecorder : public core::ChangeContextListenerInterface {
public:
    void changed(const core::ChangeContext& context) override
    {
        kinds.push_back(context.kind);
        if (context.kind == core::ChangeContext::EventListKind)
            listKinds.push_back(static_cast<const core::EventListChangeContext&>(context).listKind);
    }
    int count() const { return static_cast<int>(kinds.size()); }

    std::vector<int> kinds;
    std::vector<int> listKinds;
};

} // namespace montala::test
